#include "harness/json_document.h"

#include "generated_json.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestJsonDocument : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everythingIsKeptAsItIsSpelt()
    {
        const std::string text = "{\n  \"n\": [\n    1e400,\n    12345678901234567890,\n    1.0,\n    -0\n  ],\n"
                                 "  \"t\": \"\\u00e4\xC3\xA4\\/\",\n  \"e\": {},\n  \"f\": []\n}\n";
        const auto node = parseJsonObject(text);
        QVERIFY(node.has_value());
        QCOMPARE(prettyJson(*node, JsonOrder::asItStands), text);
    }

    void sortedMembersStandInTheOrderOfTheirKeysAtEveryDepth()
    {
        const auto node = parseJsonObject("{\"b\":{\"z\":1,\"\\u0061\":2},\"a\":[{\"y\":1,\"x\":2}],\"B\":0}");
        QVERIFY(node.has_value());
        QCOMPARE(prettyJson(*node, JsonOrder::sorted),
            std::string("{\n  \"B\": 0,\n  \"a\": [\n    {\n      \"x\": 2,\n      \"y\": 1\n    }\n  ],\n  \"b\": {\n    \"\\u0061\": 2,\n    "
                        "\"z\": 1\n  }\n}\n"));
    }

    void whatPeopleLeaveInSuchFilesIsAClearError_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("error");
        QTest::newRow("empty") << QByteArray("") << u"is empty"_s;
        QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF{}") << u"begins with a byte order mark, which JSON does not allow"_s;
        QTest::newRow("array") << QByteArray("[]") << u"is not a JSON object"_s;
        QTest::newRow("number") << QByteArray("1e400") << u"is not a JSON object"_s;
        QTest::newRow("comment") << QByteArray("{\n  // mine\n  \"a\": 1\n}") << u"is not valid JSON (line 2)"_s;
        QTest::newRow("trailing comma") << QByteArray("{\n\"a\": 1,\n}") << u"is not valid JSON (line 3)"_s;
        QTest::newRow("two values") << QByteArray("{}\n{}") << u"is not valid JSON (line 2)"_s;
        QTest::newRow("not UTF-8") << QByteArray("{\"a\": \"\xE4\"}") << u"is not valid JSON (line 1)"_s;
        QTest::newRow("key twice") << QByteArray("{\"a\": {\"b\": 1, \"\\u0062\": 2}}") << u"holds the key \"b\" twice in one object"_s;
        QTest::newRow("too deep") << ("{\"a\":" + QByteArray(600, '[') + QByteArray(600, ']') + "}") << u"is nested more than 512 deep"_s;
    }

    void whatPeopleLeaveInSuchFilesIsAClearError()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const QString, error);
        const auto node = parseJsonObject({ content.constData(), static_cast<std::size_t>(content.size()) });
        QVERIFY(!node);
        QCOMPARE(node.error(), error);
    }

    void printingAndReadingAgainGivesTheSame()
    {
        for (unsigned seed = 0; seed < 2000; ++seed) {
            const std::string text = GeneratedJson(seed).object(5);
            const auto node = parseJsonObject(text);
            QVERIFY2(node.has_value(), text.c_str());
            QCOMPARE(parseJsonObject(prettyJson(*node, JsonOrder::asItStands)).value(), *node);
            const std::string sorted = prettyJson(*node, JsonOrder::sorted);
            QCOMPARE(prettyJson(parseJsonObject(sorted).value(), JsonOrder::sorted), sorted);
        }
    }

    void membersAreFoundSetAndRemoved()
    {
        auto node = parseJsonObject("{\"\\u0061\": 1, \"b\": 2}").value();
        QVERIFY(node.find("a"));
        QVERIFY(!node.find("c"));
        node.set("a", JsonNode::text("x\"y"));
        node.set("c", JsonNode::literal(JsonKind::boolean, "true"));
        node.remove("b");
        QCOMPARE(prettyJson(node, JsonOrder::asItStands), std::string("{\n  \"\\u0061\": \"x\\\"y\",\n  \"c\": true\n}\n"));
    }
};

QTEST_APPLESS_MAIN(TestJsonDocument)
#include "test_json_document.moc"
