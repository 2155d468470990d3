#include "harness/hook_payload.h"

#include "support/fake_file_system.h"

#include <QRegularExpression>
#include <QTest>

#include <nlohmann/json.hpp>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

using Json = nlohmann::json;

constexpr ReceiptTime moment { std::chrono::milliseconds { 1'769'846'709'123 } };

Json prompt()
{
    return { { "session_id", "s1" }, { "hook_event_name", "UserPromptSubmit" }, { "turn_id", "t7" }, { "prompt", "Fix it" } };
}

} // namespace

class TestHookPayload : public QObject {
    Q_OBJECT

private:
    FakeFileSystem m_files;

    std::expected<HarnessLifecycleEvent, HarnessLifecycleEventError> decode(const QByteArray& body, AIHarness harness = AIHarness::claude)
    {
        return decodeHookPayload(body, harness, moment, m_files);
    }
    std::expected<HarnessLifecycleEvent, HarnessLifecycleEventError> decode(const Json& body, AIHarness harness = AIHarness::claude)
    {
        return decode(QByteArray::fromStdString(body.dump()), harness);
    }

private Q_SLOTS:
    void init() { m_files = {}; }

    void aPromptOfClaudeBecomesAnEvent()
    {
        const auto event = decode(prompt());
        QVERIFY(event.has_value());
        QCOMPARE(*event,
            (HarnessLifecycleEvent { .eventId = u"claude:UserPromptSubmit:s1:t7"_s,
                .eventType = u"UserPromptSubmit"_s,
                .sessionId = u"s1"_s,
                .occurredAt = u"2026-01-31T08:05:09.123Z"_s,
                .prompt = u"Fix it"_s }));
    }

    void everyFieldIsTaken()
    {
        const auto event = decode(Json { { "session_id", "s" }, { "hook_event_name", "SessionStart" }, { "source", "startup" }, { "cwd", "/w" },
                                      { "model", "m" }, { "permission_mode", "plan" }, { "transcript_path", "/none" }, { "prompt", "p" } },
            AIHarness::codex);
        QVERIFY(event.has_value());
        QCOMPARE(*event,
            (HarnessLifecycleEvent { .eventId = u"codex:SessionStart:s:startup"_s,
                .eventType = u"SessionStart"_s,
                .sessionId = u"s"_s,
                .occurredAt = u"2026-01-31T08:05:09.123Z"_s,
                .cwd = u"/w"_s,
                .model = u"m"_s,
                .permissionMode = u"plan"_s,
                .transcriptPath = u"/none"_s,
                .prompt = u"p"_s }));
    }

    void camelCaseKeysAreTakenWhereTheOthersHaveNoText()
    {
        const auto event = decode(Json { { "session_id", 7 }, { "sessionId", "s2" }, { "hookEventName", "Stop" }, { "event_id", nullptr },
            { "eventId", "e" }, { "transcriptPath", "/t" }, { "permissionMode", "x" } });
        QVERIFY(event.has_value());
        QCOMPARE(event->eventId, u"claude:Stop:s2:e"_s);
        QCOMPARE(event->transcriptPath, u"/t"_s);
        QCOMPARE(event->permissionMode, u"x"_s);
    }

    void theFirstKeyOfTheIdPartThatHasATextWins()
    {
        Json body { { "session_id", "s" }, { "hook_event_name", "Stop" }, { "event_id", "1" }, { "eventId", "2" }, { "turn_id", "3" },
            { "turnId", "4" }, { "source", "5" } };
        for (const char* key : { "event_id", "eventId", "turn_id", "turnId", "source" }) {
            QCOMPARE(decode(body)->eventId, u"claude:Stop:s:"_s + QString::fromStdString(body[key]));
            body.erase(key);
        }
    }

    void withoutAnIdPartEachEventHasAnIdOfItsOwn()
    {
        const Json body { { "session_id", "s" }, { "hook_event_name", "Stop" } };
        const QString first = decode(body)->eventId;
        const QString second = decode(body)->eventId;
        const QRegularExpression form(u"^claude:Stop:s:[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$"_s);
        QVERIFY2(form.match(first).hasMatch(), qUtf8Printable(first));
        QVERIFY(form.match(second).hasMatch());
        QVERIFY(first != second);
    }

    void theIdIsCutToTwoHundredCharactersAsAReaderCountsThem()
    {
        const std::string crown = "\xF0\x9F\x91\x91";
        std::string session;
        for (int count = 0; count < 300; ++count)
            session += crown;
        const auto event = decode(Json { { "session_id", session }, { "hook_event_name", "Stop" }, { "source", "x" } });
        QCOMPARE(event->eventId, u"claude:Stop:"_s + u"\U0001F451"_s.repeated(188));
        QCOMPARE(event->sessionId, u"\U0001F451"_s.repeated(300));
    }

    void whatIsNoEventIsRefused_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no JSON") << QByteArray("session_id=1");
        QTest::newRow("no object") << QByteArray("[1]");
        QTest::newRow("cut off") << QByteArray("{\"session_id\":\"s\",\"hook_event_name\":\"Stop\"");
        QTest::newRow("something behind") << QByteArray("{\"session_id\":\"s\",\"hook_event_name\":\"Stop\"}x");
        QTest::newRow("no session") << QByteArray("{\"hook_event_name\":\"Stop\"}");
        QTest::newRow("a session that is no text") << QByteArray("{\"session_id\":1,\"hook_event_name\":\"Stop\"}");
        QTest::newRow("no event name") << QByteArray("{\"session_id\":\"s\"}");
        QTest::newRow("another event") << QByteArray("{\"session_id\":\"s\",\"hook_event_name\":\"PreToolUse\"}");
        QTest::newRow("another case") << QByteArray("{\"session_id\":\"s\",\"hook_event_name\":\"stop\"}");
        QTest::newRow("not UTF-8") << QByteArray("{\"session_id\":\"s\xE4\",\"hook_event_name\":\"Stop\"}");
        QTest::newRow("nested beyond reason") << QByteArray(1'000'000, '[');
    }

    void whatIsNoEventIsRefused()
    {
        QFETCH(const QByteArray, body);
        const auto event = decode(body);
        QVERIFY(!event);
        QCOMPARE(event.error(), HarnessLifecycleEventError::invalidPayload);
    }

    void aNumberThatNoProgramCanHoldCostsNothing()
    {
        QVERIFY(decode("{\"session_id\":\"s\",\"hook_event_name\":\"Stop\",\"tool\":{\"n\":1e400}}"_ba));
    }

    void halfASurrogatePairDoesNotCostTheEvent()
    {
        const auto event = decode("{\"session_id\":\"s\",\"hook_event_name\":\"UserPromptSubmit\",\"prompt\":\"cut \\ud83d\"}"_ba);
        QCOMPARE(event->prompt, u"cut \uFFFD"_s);
        QVERIFY(encodeLifecycleEvent(*event));
    }

    void thePromptIsCleaned()
    {
        Json body = prompt();
        body["prompt"] = "<in-app-browser-context>x</in-app-browser-context>\n## My request for Codex:\n Fix it \n";
        QCOMPARE(decode(body)->prompt, u"Fix it"_s);
    }

    void aPromptThatIsOnlyABrowsersContextIsAbsent()
    {
        Json body = prompt();
        body["prompt"] = "<in-app-browser-context>x</in-app-browser-context>\n";
        QCOMPARE(decode(body)->prompt, std::nullopt);
    }

    void theTranscriptsOpeningMessagesComeWithEveryEvent()
    {
        m_files.files[u"/t.jsonl"_s].content = "{\"message\":{\"role\":\"user\",\"content\":\"Hello\"},\"timestamp\":\"2026\"}\n";
        for (const char* name : { "SessionStart", "UserPromptSubmit", "Stop" }) {
            const auto event = decode(Json { { "session_id", "s" }, { "hook_event_name", name }, { "transcript_path", "/t.jsonl" } });
            QCOMPARE(event->openingMessages, (std::vector<HarnessOpeningMessage> { { u"user"_s, u"Hello"_s, u"2026"_s } }));
        }
    }

    void aTranscriptWithoutMessagesGivesNone()
    {
        m_files.files[u"/t.jsonl"_s].content = "{}\n";
        QCOMPARE(
            decode(Json { { "session_id", "s" }, { "hook_event_name", "Stop" }, { "transcript_path", "/t.jsonl" } })->openingMessages, std::nullopt);
    }

    void timesAreWrittenInUtcWithMilliseconds()
    {
        QCOMPARE(isoDateTime(ReceiptTime {}), u"1970-01-01T00:00:00.000Z"_s);
        QCOMPARE(isoDateTime(moment), u"2026-01-31T08:05:09.123Z"_s);
        QCOMPARE(isoDateTime(ReceiptTime { std::chrono::milliseconds { 1'769'846'709'007 } }), u"2026-01-31T08:05:09.007Z"_s);
    }
};

QTEST_APPLESS_MAIN(TestHookPayload)
#include "test_hook_payload.moc"
