#include "platform/portable/stored_object.h"

#include <QRandomGenerator>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

StoredObject parsed(const QByteArray& text)
{
    auto object = parseStoredObject(text);
    if (!object)
        qFatal("not understood: %s", qPrintable(object.error().description));
    return *object;
}

} // namespace

class TestStoredObject : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refusesWhatIsNotOneObject_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("why");

        QTest::newRow("empty") << ""_ba << u"is empty"_s;
        QTest::newRow("blanks") << " \n"_ba << u"is JSON that breaks off after 2 bytes"_s;
        QTest::newRow("cut off") << "{\"a\": [\"b"_ba << u"is JSON that breaks off after 9 bytes"_s;
        QTest::newRow("cut off between members") << "{\"a\": 1,"_ba << u"is JSON that breaks off after 8 bytes"_s;
        QTest::newRow("an array") << "[]"_ba << u"is not one JSON object"_s;
        QTest::newRow("a text") << "\"{}\""_ba << u"is not one JSON object"_s;
        QTest::newRow("null") << "null"_ba << u"is not one JSON object"_s;
        QTest::newRow("two objects") << "{} {}"_ba << u"is not JSON (at byte 4 of 5)"_s;
        QTest::newRow("zeros behind it") << "{}\0\0"_ba << u"is not one JSON object"_s;
        QTest::newRow("text behind a zero") << QByteArray("{}\0{}", 5) << u"is not one JSON object"_s;
        QTest::newRow("nothing but zeros") << QByteArray(100, '\0') << u"is not JSON (at byte 1 of 100)"_s;
        QTest::newRow("a comma at the end") << "{\"a\": 1,}"_ba << u"is not JSON (at byte 9 of 9)"_s;
        QTest::newRow("a comment") << "{} // mine"_ba << u"is not JSON (at byte 4 of 10)"_s;
        QTest::newRow("invalid UTF-8") << "{\"a\": \"\xC3\x28\"}"_ba << u"is not JSON (at byte 9 of 11)"_s;
        QTest::newRow("not UTF-8 at all") << QByteArray("\xFF\xFE{\0}\0", 6) << u"is not JSON (at byte 1 of 6)"_s;
        QTest::newRow("half a surrogate pair") << "{\"a\": \"\\ud800\"}"_ba << u"is not JSON (at byte 14 of 15)"_s;
        QTest::newRow("a conflict in a version control system") << "<<<<<<< HEAD\n{}\n"_ba << u"is not JSON (at byte 1 of 16)"_s;
        QTest::newRow("too large") << QByteArray(storedObjectLimit + 1, ' ') << u"is larger than 64 MiB"_s;
    }

    void refusesWhatIsNotOneObject()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, why);
        const auto object = parseStoredObject(bytes);
        QVERIFY(!object);
        QCOMPARE(object.error().description, why);
    }

    void readsValuesByTheirType_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<StoredValue>("value");

        QTest::newRow("texts") << "[\"b\",\"a\",\"b\"]"_ba << StoredValue(QStringList { u"b"_s, u"a"_s, u"b"_s });
        QTest::newRow("texts with blanks around and escapes in them")
            << "[\n \"\\u0061\\\"\" ,\t\"\xEF\xBB\xBF]\" , \"\"\n]"_ba << StoredValue(QStringList { u"a\""_s, u"\uFEFF]"_s, u""_s });
        QTest::newRow("no texts") << "[ ]"_ba << StoredValue(QStringList());
        QTest::newRow("a number among texts") << "[\"a\",1]"_ba << StoredValue(ForeignValue());
        QTest::newRow("null among texts") << "[null,\"a\"]"_ba << StoredValue(ForeignValue());
        QTest::newRow("an array among texts") << "[\"a\",[\"b\"]]"_ba << StoredValue(ForeignValue());
        QTest::newRow("an object among texts") << "[\"a\",{\"base64\":\"YQ==\"}]"_ba << StoredValue(ForeignValue());
        QTest::newRow("data") << "\"[{\\\"a\\\": 1}]\""_ba << StoredValue("[{\"a\": 1}]"_ba);
        QTest::newRow("no data") << "\"\""_ba << StoredValue(""_ba);
        QTest::newRow("data in base64") << "{ \"base64\" : \"w/8=\" }"_ba << StoredValue("\xC3\xFF"_ba);
        QTest::newRow("base64 that is none") << "{\"base64\": \"w/8*\"}"_ba << StoredValue(ForeignValue());
        QTest::newRow("base64 that is no text") << "{\"base64\": 1}"_ba << StoredValue(ForeignValue());
        QTest::newRow("base64 and more") << "{\"base64\": \"w/8=\", \"more\": \"\"}"_ba << StoredValue(ForeignValue());
        QTest::newRow("base64 twice") << "{\"base64\": \"w/8=\", \"base64\": \"w/8=\"}"_ba << StoredValue(ForeignValue());
        QTest::newRow("another object") << "{\"a\": \"b\"}"_ba << StoredValue(ForeignValue());
        QTest::newRow("an empty object") << "{}"_ba << StoredValue(ForeignValue());
        QTest::newRow("a number") << "12e-3"_ba << StoredValue(ForeignValue());
        QTest::newRow("true") << "true"_ba << StoredValue(ForeignValue());
        QTest::newRow("null") << "null"_ba << StoredValue(ForeignValue());
    }

    void readsValuesByTheirType()
    {
        QFETCH(QByteArray, json);
        QFETCH(StoredValue, value);
        for (const QByteArray& text :
            { "{\"key\":" + json + "}", "\n{ \"before\" : [{\"key\":\"}\"}], \"key\" :\t" + json + "\r\n, \"after\": 0 }\n" })
            QCOMPARE(parsed(text).value(u"key"_s), std::optional(value));
    }

    void findsKeysHoweverTheyAreSpelt()
    {
        const StoredObject object = parsed("{\"\\u006bey\": \"escaped\", \"a\\\"b\\\\\": \"quoted\", \"äé\": \"letters\", \"\": \"none\"}"_ba);
        QCOMPARE(object.value(u"key"_s), std::optional<StoredValue>("escaped"_ba));
        QCOMPARE(object.value(u"a\"b\\"_s), std::optional<StoredValue>("quoted"_ba));
        QCOMPARE(object.value(u"äé"_s), std::optional<StoredValue>("letters"_ba));
        QCOMPARE(object.value(QString()), std::optional<StoredValue>("none"_ba));
        QCOMPARE(object.value(u"Key"_s), std::nullopt);
    }

    void theLastOfEqualKeysCounts()
    {
        StoredObject object = parsed("{\"a\": \"1\", \"b\": \"2\", \"\\u0061\": \"3\"}"_ba);
        QCOMPARE(object.value(u"a"_s), std::optional<StoredValue>("3"_ba));
        QVERIFY(object.set(u"a"_s, "4"_ba));
        QCOMPARE(object.value(u"a"_s), std::optional<StoredValue>("4"_ba));
        object.remove(u"a"_s);
        QCOMPARE(object.value(u"a"_s), std::nullopt);
        QCOMPARE(object.text(), "{ \"b\": \"2\"}"_ba);
    }

    void aChangeLeavesEverythingElseAsItWasWritten_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");

        QTest::newRow("a new key at the end") << "{\n  \"mine\" : 1.0\n}\n"_ba << "{\n  \"mine\" : 1.0,\n    \"key\": \"v\"\n}\n"_ba;
        QTest::newRow("into an empty object") << "{}"_ba << "{\n    \"key\": \"v\"\n}\n"_ba;
        QTest::newRow("into an object with nothing but blanks") << " {\n\n} "_ba << " {\n    \"key\": \"v\"\n} \n"_ba;
        QTest::newRow("in place") << "{ \"x\":{\"key\":\"}\"},\"key\" : [ 1, {} ] , \"y\": 1e3 }"_ba
                                  << "{ \"x\":{\"key\":\"}\"},\"key\" : \"v\" , \"y\": 1e3 }"_ba;
        QTest::newRow("behind a byte order mark") << "\xEF\xBB\xBF{\"key\": null}"_ba << "\xEF\xBB\xBF{\"key\": \"v\"}"_ba;
        QTest::newRow("the same value") << "{\"key\":\t\"v\"}"_ba << "{\"key\":\t\"v\"}"_ba;
    }

    void aChangeLeavesEverythingElseAsItWasWritten()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        StoredObject object = parsed(before);
        QVERIFY(object.set(u"key"_s, "v"_ba));
        QCOMPARE(object.text(), after);
        QCOMPARE(object.value(u"key"_s), std::optional<StoredValue>("v"_ba));
        QCOMPARE(parsed(after).text(), after);
    }

    void aListThatIsTheSameKeepsItsLayout()
    {
        const QByteArray text = "{\"key\": [ \"a b\",\n\n\"c\" ] }"_ba;
        StoredObject object = parsed(text);
        QVERIFY(object.set(u"key"_s, QStringList { u"a b"_s, u"c"_s }));
        QCOMPARE(object.text(), text);
        QVERIFY(object.set(u"key"_s, QStringList { u"ab"_s, u"c"_s }));
        QCOMPARE(object.value(u"key"_s), std::optional<StoredValue>(QStringList { u"ab"_s, u"c"_s }));
    }

    void removingLeavesEverythingElseAsItWasWritten_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");

        QTest::newRow("the only one") << "{\n  \"key\": 1\n}\n"_ba << "{}\n"_ba;
        QTest::newRow("the first") << "{\n  \"key\": 1,\n  \"b\": 2\n}\n"_ba << "{\n  \"b\": 2\n}\n"_ba;
        QTest::newRow("one in the middle") << "{ \"a\": 1, \"key\": [2], \"c\" : 3 }"_ba << "{ \"a\": 1, \"c\" : 3 }"_ba;
        QTest::newRow("the last") << "{\n  \"a\": 1,\n  \"key\": 2\n}\n"_ba << "{\n  \"a\": 1\n}\n"_ba;
        QTest::newRow("all of it") << "{\"key\": 1, \"key\": 2}"_ba << "{}"_ba;
        QTest::newRow("nothing") << "{\"a\": {\"key\": 1}}"_ba << "{\"a\": {\"key\": 1}}"_ba;
    }

    void removingLeavesEverythingElseAsItWasWritten()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        StoredObject object = parsed(before);
        object.remove(u"key"_s);
        QCOMPARE(object.text(), after);
        QCOMPARE(object.value(u"key"_s), std::nullopt);
    }

    void isLegible()
    {
        StoredObject object;
        QVERIFY(object.set(u"blockedDomains"_s, QStringList { u"a.example"_s, u"bücher.example"_s }));
        QVERIFY(object.set(u"blockedApplications"_s, "[{\"bundleIdentifier\":\"org.example.Game\",\"displayName\":\"Spiel\"}]"_ba));
        QVERIFY(object.set(u"none"_s, QStringList()));
        QVERIFY(object.set(u"raw"_s, "\xFF"_ba));
        QCOMPARE(object.text(),
            "{\n"
            "    \"blockedDomains\": [\n"
            "        \"a.example\",\n"
            "        \"bücher.example\"\n"
            "    ],\n"
            "    \"blockedApplications\": \"[{\\\"bundleIdentifier\\\":\\\"org.example.Game\\\",\\\"displayName\\\":\\\"Spiel\\\"}]\",\n"
            "    \"none\": [],\n"
            "    \"raw\": {\"base64\": \"/w==\"}\n"
            "}\n"_ba);
    }

    void whatIsNotUnicodeIsReplaced()
    {
        StoredObject object;
        const QString half = u"a"_s + QChar(0xD83D) + u"b"_s + QChar(0xDC51);
        QVERIFY(object.set(u"key"_s, QStringList { half, u"\U0001F451"_s }));
        QCOMPARE(object.value(u"key"_s), std::optional<StoredValue>(QStringList { u"a\uFFFDb\uFFFD"_s, u"\U0001F451"_s }));
    }

    void aForeignValueIsNotWritten()
    {
        StoredObject object = parsed("{\"a\": 1}"_ba);
        QVERIFY(!object.set(u"a"_s, ForeignValue()));
        QCOMPARE(object.text(), "{\"a\": 1}"_ba);
    }

    void layoutOrderAndSpellingMakeNoDifference()
    {
        const StoredObject one = parsed("{\"a\":[\"x\",\"y\"],\"b\":\"ä\",\"c\":{\"base64\":\"/w==\"},\"d\":1}"_ba);
        QVERIFY(one.holdsTheSameAs(
            parsed("{\n \"d\": 1, \"c\": { \"base64\": \"/w==\" }, \"\\u0061\": [ \"x\", \"\\u0079\" ],\n \"b\": \"\\u00e4\" }"_ba)));
        QVERIFY(!one.holdsTheSameAs(parsed("{\"a\":[\"x\",\"y\"],\"b\":\"ä\",\"c\":{\"base64\":\"/w==\"},\"d\":2}"_ba)));
        QVERIFY(!one.holdsTheSameAs(parsed("{\"a\":[\"y\",\"x\"],\"b\":\"ä\",\"c\":{\"base64\":\"/w==\"},\"d\":1}"_ba)));
        QVERIFY(!one.holdsTheSameAs(parsed("{\"a\":[\"x\",\"y\"],\"b\":\"ä\",\"c\":{\"base64\":\"/w==\"}}"_ba)));
        QVERIFY(!one.holdsTheSameAs(parsed("{\"a\":[\"x\",\"y\"],\"b\":\"ä\",\"c\":{\"base64\":\"/w==\"},\"d\":1,\"e\":1}"_ba)));
        QVERIFY(!one.holdsTheSameAs(parsed("{\"a\":[\"x\",\"y\"],\"b\":[\"ä\"],\"c\":{\"base64\":\"/w==\"},\"d\":1}"_ba)));
        QVERIFY(StoredObject().holdsTheSameAs(parsed(" { } \n"_ba)));
    }

    // What would not end in the test's time if any step looked at everything anew for each piece.
    void largeAndHostileTextsAreReadInOneGo_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<StoredValue>("value");

        QStringList million;
        million.reserve(1'000'000);
        for (int i = 0; i < 1'000'000; ++i)
            million.append(u"site-%1.example"_s.arg(i, 7, 10, QChar(u'0')));
        StoredObject lists;
        QVERIFY(lists.set(u"key"_s, million));
        QTest::newRow("a million domains") << lists.text() << StoredValue(million);
        QTest::newRow("a deep nest") << "{\"key\":" + QByteArray(5'000'000, '[') + QByteArray(5'000'000, ']') + "}" << StoredValue(ForeignValue());
        QTest::newRow("a million keys") << "{" + QByteArray("\"x\":0,").repeated(1'000'000) + "\"key\":\"v\"}" << StoredValue("v"_ba);
        QTest::newRow("a million times the same key") << "{" + QByteArray("\"key\":0,").repeated(1'000'000) + "\"key\":\"v\"}" << StoredValue("v"_ba);
        QTest::newRow("one long text") << "{\"key\":\"" + QByteArray("\\n").repeated(5'000'000) + "\"}" << StoredValue(QByteArray(5'000'000, '\n'));
    }

    void largeAndHostileTextsAreReadInOneGo()
    {
        QFETCH(QByteArray, text);
        QFETCH(StoredValue, value);
        StoredObject object = parsed(text);
        QVERIFY(object.value(u"key"_s) == std::optional(value));
        QVERIFY(object.holdsTheSameAs(parsed(text + '\n')));
        QVERIFY(object.set(u"other"_s, "v"_ba));
        object.remove(u"key"_s);
        QCOMPARE(object.value(u"key"_s), std::nullopt);
        QVERIFY(parseStoredObject(object.text()));
    }

    // Random edits of random texts: each result is again a text that reads back as the same values.
    void everyEditLeavesAnObjectThatReadsBack()
    {
        QRandomGenerator random(20260101);
        const QStringList keys { u"a"_s, u"b"_s, u"c"_s, u"\"\\"_s, u"ä"_s };
        for (int round = 0; round < 300; ++round) {
            StoredObject object = parsed("{ \"a\" :{\"b\":[\"}\"]}, \"\\u0061\":1 , \"b\": \"x\",\"f\": [ ] }"_ba);
            std::map<QString, StoredValue> expected;
            for (int edit = 0; edit < 12; ++edit) {
                const QString& key = keys.at(random.bounded(keys.size()));
                switch (random.bounded(3)) {
                case 0:
                    object.remove(key);
                    expected.erase(key);
                    QCOMPARE(object.value(key), std::nullopt);
                    continue;
                case 1:
                    expected[key] = QStringList(random.bounded(3), QString::number(edit));
                    break;
                default:
                    expected[key] = QByteArray(random.bounded(3), static_cast<char>(random.bounded(256)));
                }
                QVERIFY(object.set(key, expected[key]));
            }
            const StoredObject again = parsed(object.text());
            for (const auto& [key, value] : expected)
                QCOMPARE(again.value(key), std::optional(value));
            QCOMPARE(again.value(u"f"_s), std::optional<StoredValue>(QStringList()));
        }
    }
};

QTEST_GUILESS_MAIN(TestStoredObject)
#include "test_stored_object.moc"
