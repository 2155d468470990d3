#include "harness/hook_configuration.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

const QString command = u"/bin/sh '/h/orvanta-session-hook.sh' claude"_s;

JsonNode parsed(const std::string& text)
{
    return parseJsonObject(text).value();
}

std::string compact(const JsonNode& node)
{
    std::string text = prettyJson(node, JsonOrder::sorted);
    std::string all;
    for (const char character : text) {
        if (character != '\n' && character != ' ')
            all += character;
    }
    return all;
}

std::string installed(const std::string& text, AIHarness harness = AIHarness::claude)
{
    JsonNode root = parsed(text);
    const auto added = addRegistrations(root, harness, u"ORVANTA"_s + u"orvanta-session-hook.sh"_s);
    return added ? compact(root) : added.error().toStdString();
}

const std::string ours = "{\"hooks\":[{\"async\":true,\"command\":\"ORVANTAorvanta-session-hook.sh\",\"type\":\"command\"}]}";

} // namespace

class TestHookConfiguration : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachAgentGetsItsOwnEntryForEachEvent()
    {
        QCOMPARE(installed("{}"), "{\"hooks\":{\"SessionStart\":[" + ours + "],\"Stop\":[" + ours + "],\"UserPromptSubmit\":[" + ours + "]}}");
        const std::string codex = "{\"hooks\":[{\"command\":\"ORVANTAorvanta-session-hook.sh\",\"timeout\":1,\"type\":\"command\"}]}";
        QCOMPARE(installed("{}", AIHarness::codex),
            "{\"hooks\":{\"SessionStart\":[" + codex + "],\"Stop\":[" + codex + "],\"UserPromptSubmit\":[" + codex + "]}}");
    }

    void otherHooksOfTheSameEventsStayBeforeOurs()
    {
        const std::string other = "{\"hooks\":[{\"command\":\"mine\",\"type\":\"command\"}],\"matcher\":\"*\"}";
        QCOMPARE(installed("{\"hooks\":{\"Stop\":[" + other + "],\"PreToolUse\":[" + other + "]}}"),
            "{\"hooks\":{\"PreToolUse\":[" + other + "],\"SessionStart\":[" + ours + "],\"Stop\":[" + other + "," + ours + "],\"UserPromptSubmit\":["
                + ours + "]}}");
    }

    void otherEntriesOfAGroupThatHoldsOursStay()
    {
        const std::string edited = "{\"hooks\":[{\"command\":\"/old/orvanta-session-hook.sh claude\"},{\"command\":\"mine\"},7],\"matcher\":\"x\"}";
        const std::string left = "{\"hooks\":[{\"command\":\"mine\"},7],\"matcher\":\"x\"}";
        QVERIFY(installed("{\"hooks\":{\"Stop\":[" + edited + "]}}").find("\"Stop\":[" + left + "," + ours + "]") != std::string::npos);
    }

    void entriesWithAnOldPathAreReplaced()
    {
        const std::string old = "{\"hooks\":[{\"command\":\"sh '/somewhere/else/orvanta-session-hook.sh' claude\",\"type\":\"command\"}]}";
        QCOMPARE(installed("{\"hooks\":{\"Stop\":[" + old + "," + old + "],\"SessionStart\":[" + old + "]}}"), installed("{}"));
    }

    void groupsOfAnotherFormStay()
    {
        const std::string odd = "7,null,{},{\"hooks\":3},{\"hooks\":[]},{\"hooks\":[{\"command\":3}]}";
        QVERIFY(installed("{\"hooks\":{\"Stop\":[" + odd + "]}}").find("\"Stop\":[" + odd + "," + ours + "]") != std::string::npos);
    }

    void hooksOfAnotherFormAreAnErrorAndNoChange_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("error");
        QTest::newRow("hooks that are an array") << QByteArray("{\"hooks\":[]}") << u"holds something under \"hooks\" that is no object"_s;
        QTest::newRow("hooks that are null") << QByteArray("{\"hooks\":null}") << u"holds something under \"hooks\" that is no object"_s;
        QTest::newRow("an event that is an object")
            << QByteArray("{\"hooks\":{\"Stop\":{}}}") << u"holds something under \"hooks\", \"Stop\" that is no array"_s;
    }

    void hooksOfAnotherFormAreAnErrorAndNoChange()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const QString, error);
        JsonNode root = parsed(content.toStdString());
        const JsonNode before = root;
        const auto added = addRegistrations(root, AIHarness::claude, command);
        QVERIFY(!added);
        QCOMPARE(added.error(), error);
        QCOMPARE(root, before);
    }

    void installingTwiceLeavesOneEntryAnEvent()
    {
        JsonNode root = parsed("{\"x\":1}");
        QVERIFY(addRegistrations(root, AIHarness::claude, command));
        const JsonNode once = root;
        QVERIFY(addRegistrations(root, AIHarness::claude, command));
        QCOMPARE(root, once);
    }

    void registrationsAreRecognisedByTheirCommandAlone()
    {
        JsonNode root = parsed("{}");
        QVERIFY(addRegistrations(root, AIHarness::claude, command));
        QVERIFY(hasRegistrations(root, command));
        QVERIFY(!hasRegistrations(root, command + u' '));
        std::string text = prettyJson(root, JsonOrder::sorted);
        for (std::size_t at = text.find("true"); at != std::string::npos; at = text.find("true"))
            text.replace(at, 4, "0");
        QVERIFY(hasRegistrations(parsed(text), command));
    }

    void anythingThatIsAmissMeansNoRegistration_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::newRow("an event is missing") << QByteArray("\"Stop\"") << QByteArray("\"Stopped\"");
        QTest::newRow("no hooks") << QByteArray("\"hooks\": {") << QByteArray("\"hook\": {");
        QTest::newRow("a group that is no object") << QByteArray("\"Stop\": [") << QByteArray("\"Stop\": [3, ");
        QTest::newRow("an entry that is no object") << QByteArray("\"hooks\": [") << QByteArray("\"hooks\": [3, ");
        QTest::newRow("another command") << QByteArray("claude\"") << QByteArray("codex\"");
        QTest::newRow("no entries") << QByteArray("\"hooks\": [") << QByteArray("\"entries\": [");
    }

    void anythingThatIsAmissMeansNoRegistration()
    {
        QFETCH(const QByteArray, from);
        QFETCH(const QByteArray, to);
        JsonNode root = parsed("{}");
        QVERIFY(addRegistrations(root, AIHarness::claude, command));
        const QByteArray text = QByteArray::fromStdString(prettyJson(root, JsonOrder::sorted));
        const QByteArray changed = QByteArray(text).replace(from, to);
        QVERIFY(changed != text);
        QVERIFY(!hasRegistrations(parsed(changed.toStdString()), command));
    }

    void removingTakesAwayOursAloneFromEveryEvent()
    {
        JsonNode root = parsed("{\"z\":1,\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"mine\"},{\"command\":\"x/orvanta-session-hook.sh\"}]}],"
                               "\"Other\":[{\"hooks\":[{\"command\":\"x/orvanta-session-hook.sh\"}]}],\"Empty\":[]},\"a\":2}");
        QVERIFY(mentionsHookScript(root));
        removeRegistrations(root);
        QVERIFY(!mentionsHookScript(root));
        QCOMPARE(root, parsed("{\"z\":1,\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"mine\"}]}],\"Empty\":[]},\"a\":2}"));
    }

    void removingLeavesAConfigurationWithoutOursAlone()
    {
        for (const char* text : { "{}", "{\"hooks\":{}}", "{\"hooks\":3}", "{\"hooks\":{\"Stop\":[]}}", "{\"hooks\":{\"Stop\":3}}" }) {
            JsonNode root = parsed(text);
            removeRegistrations(root);
            QCOMPARE(root, parsed(text));
        }
    }
};

QTEST_APPLESS_MAIN(TestHookConfiguration)
#include "test_hook_configuration.moc"
