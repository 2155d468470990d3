#include "platform/linux/secret_service.h"

#include "support/contracts/secret_store_contract.h"

#include <QProcess>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

/// With an open keyring, into which the desktop's own command line program puts the secrets.
class TestSecretService : public SecretStoreContract {
    Q_OBJECT

    std::unique_ptr<SecretStore> makeStore() override { return std::make_unique<SecretService>(); }
    void put(SecretStore&, const QString& service, const QString& account, const QByteArray& secret) override
    {
        QProcess tool;
        tool.start(u"secret-tool"_s, { u"store"_s, u"--label=a test's"_s, u"service"_s, service, u"account"_s, account });
        QVERIFY2(tool.waitForStarted(10000), qPrintable(tool.errorString()));
        tool.write(secret);
        tool.closeWriteChannel();
        QVERIFY(tool.waitForFinished(10000));
        QVERIFY2(tool.exitCode() == 0, tool.readAllStandardError().constData());
    }

private Q_SLOTS:
    void nothingIsLeftOverBetweenLookUps()
    {
        SecretService store;
        for (const QByteArray& secret : { "first"_ba, "second"_ba }) {
            put(store, u"com.orvanta.focus"_s, u"orvanta-api-key"_s, secret);
            QCOMPARE(store.read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s), std::optional(secret));
        }
    }
};

QTEST_GUILESS_MAIN(TestSecretService)
#include "test_secret_service.moc"
