#include "localservice/event_store.h"
#include "scratch_database.h"

#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

namespace {

const QByteArray fullEvent = R"({"eventId":"claude:UserPromptSubmit:s1:t7","eventType":"UserPromptSubmit","sessionId":"s1",
    "occurredAt":"2026-01-31T08:05:09.123Z","cwd":"/home/a","model":"m","permissionMode":"default","transcriptPath":"/t.jsonl","prompt":"",
    "openingMessages":[{"role":"user","content":"Hi","occurredAt":"yesterday"},{"role":"assistant","content":"Hello"}],"unknown":[1]})";

} // namespace

class TestEventStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyFieldComesBack()
    {
        ScratchDatabase scratch;
        EventStore store(scratch.database());
        const AgentEvent event = readAgentEvent(fullEvent).value();
        QVERIFY(store.store(event, at("2026-01-31T08:05:10Z")).value() == EventStore::Outcome::stored);
        const auto found = store.find(u"claude:UserPromptSubmit:s1:t7"_s).value();
        QVERIFY(found == event);
        QVERIFY(found->prompt && found->prompt->isEmpty());
        QVERIFY(found->occurredAt == at("2026-01-31T08:05:09.123Z"));
        QCOMPARE(found->openingMessages.size(), std::size_t { 2 });
        QCOMPARE(found->openingMessages[0].occurredAt.value(), u"yesterday"_s);
        QVERIFY(!found->openingMessages[1].occurredAt);
    }

    void optionalFieldsMayBeAbsentOrNull()
    {
        ScratchDatabase scratch;
        EventStore store(scratch.database());
        const AgentEvent event = readAgentEvent(
            R"({"eventId":"e","eventType":"Stop","sessionId":"s","occurredAt":"2026-01-31T08:05:09Z","cwd":null,"openingMessages":null})")
                                     .value();
        QVERIFY(store.store(event, at("2026-01-31T08:05:10Z")).has_value());
        const auto found = store.find(u"e"_s).value();
        QVERIFY(found == event);
        QVERIFY(!found->workingFolder && !found->model && !found->permissionMode && !found->transcriptPath && !found->prompt);
        QVERIFY(found->openingMessages.empty());
    }

    void sessionsAreListedByTheirLatestEvent()
    {
        ScratchDatabase scratch;
        EventStore store(scratch.database());
        QVERIFY(store.latestSessions(10, 10).value().empty());
        const auto add = [&](const QString& id, const QString& type, const QString& session, const char* time) {
            AgentEvent event { id, type, session, at(time), {}, {}, {}, {}, {}, {} };
            if (type == "SessionStart"_L1)
                event.workingFolder = u"/w"_s;
            if (id.endsWith(u"with messages"_s))
                event.openingMessages = { { u"user"_s, u"Hi"_s, std::nullopt } };
            return store.store(event, at(time)).has_value();
        };
        QVERIFY(add(u"claude:SessionStart:a:1"_s, u"SessionStart"_s, u"a"_s, "2026-01-31T08:00:00Z"));
        QVERIFY(add(u"codex:SessionStart:b:1"_s, u"SessionStart"_s, u"b"_s, "2026-01-31T08:01:00Z"));
        QVERIFY(add(u"claude:UserPromptSubmit:a:with messages"_s, u"UserPromptSubmit"_s, u"a"_s, "2026-01-31T08:02:00Z"));
        QVERIFY(add(u"claude:Stop:a:3"_s, u"Stop"_s, u"a"_s, "2026-01-31T08:03:00Z"));

        const auto sessions = store.latestSessions(10, 2).value();
        QCOMPARE(sessions.size(), std::size_t { 2 });
        QCOMPARE(sessions[0].sessionId, u"a"_s);
        QCOMPARE(sessions[0].agent, u"claude"_s);
        QCOMPARE(sessions[0].latestEvents.size(), std::size_t { 2 });
        QCOMPARE(sessions[0].latestEvents[0].eventType, u"Stop"_s);
        QCOMPARE(sessions[0].latestEvents[1].eventType, u"UserPromptSubmit"_s);
        QCOMPARE(sessions[0].openingMessages, (std::vector<OpeningMessage> { { u"user"_s, u"Hi"_s, std::nullopt } }));
        QCOMPARE(sessions[1].agent, u"codex"_s);
        QCOMPARE(sessions[1].workingFolder, u"/w"_s);
        QVERIFY(sessions[1].openingMessages.empty());
        QCOMPARE(store.latestSessions(1, 10).value().size(), std::size_t { 1 });
    }

    void theSameEventIsStoredOnce()
    {
        ScratchDatabase scratch;
        EventStore store(scratch.database());
        AgentEvent event = readAgentEvent(fullEvent).value();
        QVERIFY(store.store(event, at("2026-01-31T08:05:10Z")).value() == EventStore::Outcome::stored);
        event.prompt = u"another"_s;
        QVERIFY(store.store(event, at("2026-01-31T08:06:10Z")).value() == EventStore::Outcome::knownAlready);
        QCOMPARE(store.countSince(at("2026-01-01T00:00:00Z")).value(), 1);
        QCOMPARE(store.find(event.eventId).value()->prompt.value(), QString());
        QCOMPARE(store.find(event.eventId).value()->openingMessages.size(), std::size_t { 2 });
    }

    void countsTheEventsSinceAMoment()
    {
        ScratchDatabase scratch;
        EventStore store(scratch.database());
        AgentEvent event = readAgentEvent(fullEvent).value();
        QVERIFY(store.store(event, event.occurredAt).has_value());
        QCOMPARE(store.countSince(event.occurredAt).value(), 1);
        QCOMPARE(store.countSince(event.occurredAt + std::chrono::milliseconds { 1 }).value(), 0);
    }

    void refusesAndSaysWhy_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("reason");

        const auto with = [](const QByteArray& from, const QByteArray& to) { return QByteArray(fullEvent).replace(from, to); };
        QTest::newRow("no JSON") << "{"_ba << u"The body is not valid JSON"_s;
        QTest::newRow("empty") << ""_ba << u"The body is not valid JSON"_s;
        QTest::newRow("invalid UTF-8") << with("Hello", "\xff") << u"The body is not valid JSON"_s;
        QTest::newRow("an array") << "[]"_ba << u"The body must be a JSON object"_s;
        QTest::newRow("a million brackets") << QByteArray(1'000'000, '[') << u"The body is nested too deeply"_s;
        QTest::newRow("no event id") << with("\"eventId\"", "\"x\"") << u"eventId must be a text"_s;
        QTest::newRow("empty event id") << with("claude:UserPromptSubmit:s1:t7", "") << u"eventId must not be empty"_s;
        QTest::newRow("long event id") << with("s1:t7", QByteArray(200, 'x')) << u"eventId must not have more than 200 characters"_s;
        QTest::newRow("unknown type") << with("\"eventType\":\"UserPromptSubmit\"", "\"eventType\":\"PreToolUse\"")
                                      << u"eventType must be SessionStart, UserPromptSubmit or Stop"_s;
        QTest::newRow("session is a number") << with("\"sessionId\":\"s1\"", "\"sessionId\":1") << u"sessionId must be a text"_s;
        QTest::newRow("no time") << with("2026-01-31T08:05:09.123Z", "today")
                                 << u"occurredAt must be an ISO 8601 time in UTC, such as 2025-01-31T14:05:00Z"_s;
        QTest::newRow("cwd is a list") << with("\"/home/a\"", "[]") << u"cwd must be a text"_s;
        QTest::newRow("messages are a text") << with("[{\"role\":\"user\"", "\"\",\"y\":[{\"role\":\"user\"")
                                             << u"openingMessages must be an array"_s;
        QTest::newRow("a message is a number") << with("{\"role\":\"assistant\",\"content\":\"Hello\"}", "7")
                                               << u"openingMessages[1] must be an object"_s;
        QTest::newRow("a strange role") << with("\"assistant\"", "\"system\"") << u"openingMessages[1].role must be user or assistant"_s;
        QTest::newRow("no content") << with("\"content\":\"Hi\"", "\"c\":\"Hi\"") << u"openingMessages[0].content must be a text"_s;
    }

    void refusesAndSaysWhy()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, reason);
        const auto event = readAgentEvent(body);
        QVERIFY(!event.has_value());
        QCOMPARE(event.error().description, reason);
    }

    void anIdentifierOf200CharactersMayHaveMoreUnits()
    {
        QByteArray crowns;
        for (int index = 0; index < 200; ++index)
            crowns += "\xf0\x9f\x91\x91";
        QVERIFY(readAgentEvent(QByteArray(fullEvent).replace("claude:UserPromptSubmit:s1:t7", crowns)).has_value());
        QVERIFY(!readAgentEvent(QByteArray(fullEvent).replace("claude:UserPromptSubmit:s1:t7", crowns + "x")).has_value());
    }
};

QTEST_GUILESS_MAIN(TestEventStore)
#include "test_event_store.moc"
