#include "app/policy/blocked_applications.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

QStringList names(const std::vector<BlockedApplication>& list)
{
    QStringList result;
    for (const auto& application : list)
        result << application.displayName;
    return result;
}

/// As the environment asks for it.
QByteArray usersLanguage()
{
    for (const char* variable : { "LC_ALL", "LC_COLLATE", "LANG" })
        if (const QByteArray language = qgetenv(variable); !language.isEmpty())
            return language;
    return {};
}

} // namespace

class TestBlockedApplications : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void acceptsAnIdentifierWithADotAndAName()
    {
        QVERIFY(!acceptedApplication(u"com.example.App"_s, u"   "_s));
        QVERIFY(!acceptedApplication(u"example"_s, u"Example"_s));
        QVERIFY(!acceptedApplication(u" \n "_s, u"Example"_s));
        QCOMPARE(acceptedApplication(u"\t com.example.App\n"_s, u"\u00A0Example \r\n"_s), BlockedApplication({ u"com.example.App"_s, u"Example"_s }));
        QCOMPARE(acceptedApplication(u"."_s, u"x"_s), BlockedApplication({ u"."_s, u"x"_s }));
    }

    void addingAgainReplacesTheName()
    {
        std::vector<BlockedApplication> list;
        addApplication(list, { u"com.example.App"_s, u"Example"_s });
        addApplication(list, { u"com.example.App"_s, u"Example Two"_s });
        QCOMPARE(list, std::vector<BlockedApplication>({ { u"com.example.App"_s, u"Example Two"_s } }));
    }

    void identifiersThatDifferInCaseAreTwoApplications()
    {
        std::vector<BlockedApplication> list;
        addApplication(list, { u"com.example.App"_s, u"Example"_s });
        addApplication(list, { u"com.example.app"_s, u"Example"_s });
        QCOMPARE(list.size(), 2U);
    }

    void namesSortWithoutCaseAndEqualOnesKeepTheirOrder()
    {
        std::vector<BlockedApplication> list;
        addApplication(list, { u"x.b"_s, u"b"_s });
        addApplication(list, { u"x.B"_s, u"B"_s });
        addApplication(list, { u"x.a"_s, u"a"_s });
        QCOMPARE(names(list), QStringList({ u"a"_s, u"b"_s, u"B"_s }));

        list.clear();
        addApplication(list, { u"x.B"_s, u"B"_s });
        addApplication(list, { u"x.b"_s, u"b"_s });
        addApplication(list, { u"x.a"_s, u"a"_s });
        QCOMPARE(names(list), QStringList({ u"a"_s, u"B"_s, u"b"_s }));
    }

    void namesSortAsReadersExpectAlsoWithoutALanguage()
    {
        std::vector<BlockedApplication> list;
        for (const QString& name : { u"zebra"_s, u"\u00C9cole"_s, u"Fax"_s, u"editor"_s, u"Dolphin"_s })
            addApplication(list, { u"x."_s + name, name });
        QCOMPARE(names(list), QStringList({ u"Dolphin"_s, u"\u00C9cole"_s, u"editor"_s, u"Fax"_s, u"zebra"_s }));
    }

    void namesSortAsTheUsersLanguageHasIt()
    {
        std::vector<BlockedApplication> list;
        for (const QString& name : { u"\u00D6ppna"_s, u"Zoom"_s, u"Opera"_s })
            addApplication(list, { u"x."_s + name, name });
        // A letter of its own at the end of the Swedish alphabet; a kind of O for everybody else here.
        QCOMPARE(names(list),
            usersLanguage().startsWith("sv") ? QStringList({ u"Opera"_s, u"Zoom"_s, u"\u00D6ppna"_s })
                                             : QStringList({ u"Opera"_s, u"\u00D6ppna"_s, u"Zoom"_s }));
    }

    void removingTakesEveryEntryOfTheIdentifier()
    {
        std::vector<BlockedApplication> list { { u"a.b"_s, u"One"_s }, { u"c.d"_s, u"Two"_s }, { u"a.b"_s, u"Three"_s } };
        removeApplication(list, u"a.b"_s);
        QCOMPARE(list, std::vector<BlockedApplication>({ { u"c.d"_s, u"Two"_s } }));
    }

    void identifiersFormASet()
    {
        QCOMPARE(blockedBundleIdentifiers({ { u"a.b"_s, u"One"_s }, { u"c.d"_s, u"Two"_s }, { u"a.b"_s, u"Three"_s } }),
            QSet<QString>({ u"a.b"_s, u"c.d"_s }));
    }

    void jsonHasExactlyTheTwoKeysInOrder()
    {
        QCOMPARE(encodeBlockedApplications({ { u"a.b"_s, u"Caf\u00E9"_s } }), QByteArray(R"([{"bundleIdentifier":"a.b","displayName":"Café"}])"));
        QCOMPARE(encodeBlockedApplications({}), QByteArray("[]"));
    }

    void encodingFailsOnAnUnpairedSurrogate() { QVERIFY(!encodeBlockedApplications({ { u"a.b"_s, QString(QChar(0xD800)) } })); }

    void decodesWhatItEncodes()
    {
        const std::vector<BlockedApplication> list { { u"a.b"_s, u"One\n\"quoted\""_s }, { u"c.d"_s, u"\U0001F600"_s } };
        QCOMPARE(decodeBlockedApplications(*encodeBlockedApplications(list)), list);
    }

    void decodingIsAllOrNothing_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("a name is missing") << QByteArray(R"([{"bundleIdentifier":"a.b","displayName":"A"},{"bundleIdentifier":"c.d"}])");
        QTest::newRow("a name is a number") << QByteArray(R"([{"bundleIdentifier":"a.b","displayName":1}])");
        QTest::newRow("a name is null") << QByteArray(R"([{"bundleIdentifier":"a.b","displayName":null}])");
        QTest::newRow("not an array") << QByteArray(R"({"bundleIdentifier":"a.b","displayName":"A"})");
        QTest::newRow("an element is a text") << QByteArray(R"(["a.b"])");
        QTest::newRow("cut off") << QByteArray(R"([{"bundleIdentifier":"a.b","displayName":"A"})");
        QTest::newRow("trailing text") << QByteArray(R"([] x)");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("invalid UTF-8") << QByteArray("[{\"bundleIdentifier\":\"a.b\",\"displayName\":\"\xff\"}]");
    }

    void decodingIsAllOrNothing()
    {
        QFETCH(QByteArray, json);
        QVERIFY(!decodeBlockedApplications(json));
    }

    void decodingIgnoresOtherKeys()
    {
        QCOMPARE(decodeBlockedApplications(R"([{"x":[1],"displayName":"A","bundleIdentifier":"a.b"}])"),
            std::vector<BlockedApplication>({ { u"a.b"_s, u"A"_s } }));
    }
};

QTEST_GUILESS_MAIN(TestBlockedApplications)
#include "test_blocked_applications.moc"
