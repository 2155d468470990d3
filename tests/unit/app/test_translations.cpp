#include "app/translations.h"

#include "platform/linux/desktop_report.h"
#include "service/network_url_session.h"
#include "service/redirect.h"

#include <QGuiApplication>
#include <QTcpServer>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestTranslations : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFirstLanguageThatIsThereIsUsed_data()
    {
        QTest::addColumn<QStringList>("languages");
        QTest::addColumn<QString>("translation");
        QTest::newRow("none") << QStringList() << QString();
        QTest::newRow("C") << QStringList { u"C"_s } << QString();
        QTest::newRow("English") << QStringList { u"en-GB"_s, u"en"_s } << QString();
        QTest::newRow("Austria") << QStringList { u"de-AT"_s, u"de"_s } << u"de"_s;
        QTest::newRow("Mexico") << QStringList { u"es-MX"_s, u"es"_s } << u"es"_s;
        QTest::newRow("Canada, in French") << QStringList { u"fr-CA"_s, u"fr"_s } << u"fr"_s;
        QTest::newRow("Egypt") << QStringList { u"ar-EG"_s, u"ar"_s } << u"ar"_s;
        QTest::newRow("China") << QStringList { u"zh-CN"_s, u"zh-Hans-CN"_s, u"zh"_s } << u"zh_CN"_s;
        QTest::newRow("Singapore") << QStringList { u"zh-Hans-SG"_s, u"zh"_s } << u"zh_CN"_s;
        QTest::newRow("Taiwan reads another script") << QStringList { u"zh-TW"_s, u"zh-Hant-TW"_s, u"zh"_s } << QString();
        QTest::newRow("a language that is not there, then one that is") << QStringList { u"da-DK"_s, u"da"_s, u"de"_s } << u"de"_s;
        QTest::newRow("English before one that is there") << QStringList { u"da"_s, u"en"_s, u"de"_s } << QString();
    }

    void theFirstLanguageThatIsThereIsUsed()
    {
        QFETCH(QStringList, languages);
        QFETCH(QString, translation);
        QCOMPARE(translationFor(languages).value_or(QString()), translation);
    }

    void eachLanguageSpeaks_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("inactive");
        QTest::addColumn<QString>("connected");
        QTest::newRow("German") << u"de"_s << u"Fokus inaktiv"_s << u"Mit Orvanta verbunden"_s;
        QTest::newRow("Spanish") << u"es"_s << u"Concentración inactiva"_s << u"Orvanta conectado"_s;
        QTest::newRow("French") << u"fr"_s << u"Concentration inactive"_s << u"Connecté à Orvanta"_s;
        QTest::newRow("Chinese") << u"zh-CN"_s << u"专注未开启"_s << u"Orvanta 已连接"_s;
        QTest::newRow("Arabic") << u"ar"_s << u"التركيز غير نشط"_s << u"متصل بخدمة Orvanta"_s;
    }

    void eachLanguageSpeaks()
    {
        QFETCH(QString, language);
        QFETCH(QString, inactive);
        QFETCH(QString, connected);
        {
            const Translations translations({ language });
            QCOMPARE(QCoreApplication::translate("FocusStatus", "Focus inactive"), inactive);
            QCOMPARE(QCoreApplication::translate("orvanta::AppModel", "Orvanta connected"), connected);
            QCOMPARE(QGuiApplication::layoutDirection(), language == u"ar"_s ? Qt::RightToLeft : Qt::LeftToRight);
        }
        QCOMPARE(QCoreApplication::translate("FocusStatus", "Focus inactive"), u"Focus inactive"_s);
    }

    void noticesOfTheDesktopAreTranslated()
    {
        DesktopFindings found { .session = { .isWayland = true, .xServerProblem = {} }, .cover = CoverManner::layerSurface };
        found.idle = IdleProtocol::extIdleNotify;
        QCOMPARE(whatIsMissing(found), QStringList { u"Application blocking is not available here; website blocking works."_s });
        const Translations translations({ u"de"_s });
        QCOMPARE(whatIsMissing(found), QStringList { u"Apps können hier nicht blockiert werden; Websites schon."_s });
    }

    void failuresOfTheConnectionAreTranslated()
    {
        const HttpRequest request { .url = QUrl(u"https://service.example/a"_s) };
        QCOMPARE(redirected(request, 302, "http://service.example/a").error().description,
            u"The service redirected to an address that is not encrypted"_s);
        const Translations translations({ u"de"_s });
        QCOMPARE(redirected(request, 302, "http://service.example/a").error().description,
            u"Der Dienst hat auf eine unverschlüsselte Adresse umgeleitet"_s);
    }

    /// What Qt says of a service that does not answer, in each of the languages.
    void qtsOwnWordsAreTranslated_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("refused");
        QTest::newRow("English") << u"en"_s << u"Connection refused"_s;
        QTest::newRow("German") << u"de"_s << u"Verbindung verweigert"_s;
        QTest::newRow("Spanish") << u"es"_s << u"Conexión rechazada"_s;
        QTest::newRow("French") << u"fr"_s << u"Connexion refusée"_s;
        QTest::newRow("Chinese") << u"zh-CN"_s << u"连接被拒绝"_s;
        QTest::newRow("Arabic") << u"ar"_s << u"رُفض الاتّصال"_s;
    }

    void qtsOwnWordsAreTranslated()
    {
        QFETCH(QString, language);
        QFETCH(QString, refused);
        QUrl nobody(u"http://127.0.0.1/"_s);
        {
            QTcpServer server;
            QVERIFY(server.listen(QHostAddress::LocalHost));
            nobody.setPort(server.serverPort());
        }
        const Translations translations({ language });
        NetworkUrlSession session;
        const UrlResult result = session.sendAndWait({ .url = nobody }, {});
        QVERIFY(!result);
        QCOMPARE(result.error().description, refused);
    }
};

QTEST_MAIN(TestTranslations)
#include "test_translations.moc"
