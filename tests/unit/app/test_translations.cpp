#include "app/translations.h"

#include <QGuiApplication>
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
};

QTEST_MAIN(TestTranslations)
#include "test_translations.moc"
