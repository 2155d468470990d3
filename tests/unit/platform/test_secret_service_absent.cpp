#include "platform/linux/secret_service.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// A call that nobody bounds is given up by the bus after 25 seconds, a prompt never.
constexpr qint64 longestLookUp = 15000;

std::optional<QByteArray> lookUp(qint64& took)
{
    QElapsedTimer timer;
    timer.start();
    auto secret = SecretService().read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s);
    took = timer.elapsed();
    return secret;
}

} // namespace

/// On the desktop that CTest sets up for it: with a locked keyring that holds the item, without a keyring, or without a bus.
class TestSecretServiceAbsent : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void thereIsNoSecretAndNoWaiting()
    {
        for (int time = 0; time < 2; ++time) {
            qint64 took = 0;
            QCOMPARE(lookUp(took), std::nullopt);
            QVERIFY2(took < longestLookUp, qPrintable(QString::number(took)));
        }
    }
};

QTEST_GUILESS_MAIN(TestSecretServiceAbsent)
#include "test_secret_service_absent.moc"
