#include "platform/linux/secret_service.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

/// On the desktop that CTest sets up for it: with a locked keyring that holds the item, without a keyring, or without a bus.
class TestSecretServiceAbsent : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void thereIsNoSecretHoweverOftenOneAsks()
    {
        for (int time = 0; time < 2; ++time)
            QCOMPARE(SecretService().read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestSecretServiceAbsent)
#include "test_secret_service_absent.moc"
