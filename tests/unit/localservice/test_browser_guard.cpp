#include "localservice/browser_guard.h"

#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

class TestBrowserGuard : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void knowsItsOwnHosts_data()
    {
        QTest::addColumn<QByteArray>("host");
        QTest::addColumn<bool>("expected");

        QTest::newRow("localhost") << "localhost"_ba << true;
        QTest::newRow("with a port") << "localhost:47700"_ba << true;
        QTest::newRow("upper case") << "LocalHost:47700"_ba << true;
        QTest::newRow("loopback") << "127.0.0.1:47700"_ba << true;
        QTest::newRow("another loopback") << "127.8.9.1"_ba << true;
        QTest::newRow("loopback of version 6") << "[::1]:47700"_ba << true;
        QTest::newRow("where the connection arrived") << "192.168.1.5:47700"_ba << true;
        QTest::newRow("a name of the certificate") << "Orvanta.Home:47700"_ba << true;
        QTest::newRow("another address") << "192.168.1.6:47700"_ba << false;
        QTest::newRow("a site that points here") << "evil.example:47700"_ba << false;
        QTest::newRow("a site that begins like it") << "localhost.evil.example"_ba << false;
        QTest::newRow("a site that ends like it") << "evil-localhost"_ba << false;
        QTest::newRow("a name with an address in it") << "127.0.0.1.evil.example"_ba << false;
        QTest::newRow("user information") << "localhost@evil.example"_ba << false;
        QTest::newRow("user information before it") << "evil.example@localhost"_ba << false;
        QTest::newRow("a path") << "evil.example/localhost"_ba << false;
        QTest::newRow("a path after it") << "localhost/evil"_ba << false;
        QTest::newRow("a query") << "localhost?evil.example"_ba << false;
        QTest::newRow("empty") << ""_ba << false;
        QTest::newRow("a port alone") << ":47700"_ba << false;
    }

    void knowsItsOwnHosts()
    {
        QFETCH(QByteArray, host);
        QFETCH(bool, expected);
        QCOMPARE(isOwnHost(host.toStdString(), QHostAddress(u"192.168.1.5"_s), { u"orvanta.home"_s }), expected);
    }

    void anAddressMappedToVersion6IsTheSame() { QVERIFY(isOwnHost("192.168.1.5", QHostAddress(u"::ffff:192.168.1.5"_s), {})); }

    void theOriginIsThatOfTheHost()
    {
        using enum Endpoints::Scheme;
        QVERIFY(isOwnOrigin("http://localhost:1", "localhost:1", http));
        QVERIFY(isOwnOrigin("https://localhost:1", "localhost:1", https));
        QVERIFY(!isOwnOrigin("http://localhost:1", "localhost:1", https));
        QVERIFY(!isOwnOrigin("http://localhost:2", "localhost:1", http));
        QVERIFY(!isOwnOrigin("http://evil.example", "localhost:1", http));
        QVERIFY(!isOwnOrigin("null", "localhost:1", http));
        QVERIFY(!isOwnOrigin("", "localhost:1", http));
    }

    void theKeyIsThePasswordWhateverTheUser()
    {
        const auto basic = [](const QByteArray& text) { return ("Basic " + text.toBase64()).toStdString(); };
        QVERIFY(hasBasicPassword(basic("me:the-key"), "the-key"));
        QVERIFY(hasBasicPassword(basic(":the-key"), "the-key"));
        QVERIFY(!hasBasicPassword(basic("the-key"), "the-key"));
        QVERIFY(!hasBasicPassword(basic("me:the-key2"), "the-key"));
        QVERIFY(!hasBasicPassword("Basic", "the-key"));
        QVERIFY(!hasBasicPassword("Bearer the-key", "the-key"));
        QVERIFY(!hasBasicPassword("", "the-key"));
    }

    void formFieldsAreDecoded()
    {
        const FormFields fields("title=Write+the%20report%21&empty=&id=7&id=8&noValue&%74oken=a%2Bb&bad=%zz%e4");
        QCOMPARE(fields.value("title"), u"Write the report!"_s);
        QCOMPARE(fields.value("empty"), QString());
        QCOMPARE(fields.value("id"), u"7"_s);
        QCOMPARE(fields.value("token"), u"a+b"_s);
        QCOMPARE(fields.value("noValue"), QString());
        QCOMPARE(fields.value("absent"), QString());
    }
};

QTEST_GUILESS_MAIN(TestBrowserGuard)
#include "test_browser_guard.moc"
