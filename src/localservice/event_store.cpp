#include "localservice/event_store.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

// An event's sender cuts its identifier to so many characters, as a reader counts them.
constexpr int longestEventId = 200;

bool hasMoreCharactersThan(int limit, const QString& text)
{
    if (text.size() <= limit)
        return false;
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
    for (int count = 0; count < limit; ++count)
        if (characters.toNextBoundary() < 0)
            return false;
    return characters.position() < text.size();
}

} // namespace

std::expected<AgentEvent, BadInput> readAgentEvent(const QByteArray& body)
{
    const auto json = readJsonObject(body);
    if (!json)
        return std::unexpected(json.error());
    std::optional<BadInput> problem;
    ObjectReader reader(*json, {}, problem);
    AgentEvent event;
    event.eventId = reader.filledText("eventId");
    if (hasMoreCharactersThan(longestEventId, event.eventId))
        reader.refuse("eventId", u"must not have more than 200 characters"_s);
    event.eventType = reader.text("eventType");
    if (event.eventType != "SessionStart"_L1 && event.eventType != "UserPromptSubmit"_L1 && event.eventType != "Stop"_L1)
        reader.refuse("eventType", u"must be SessionStart, UserPromptSubmit or Stop"_s);
    event.sessionId = reader.text("sessionId");
    event.occurredAt = reader.time("occurredAt");
    event.workingFolder = reader.optionalText("cwd");
    event.model = reader.optionalText("model");
    event.permissionMode = reader.optionalText("permissionMode");
    event.transcriptPath = reader.optionalText("transcriptPath");
    event.prompt = reader.optionalText("prompt");
    reader.optionalObjects("openingMessages", [&](ObjectReader& message) {
        event.openingMessages.push_back({ message.text("role"), message.text("content"), message.optionalText("occurredAt") });
        const QString& role = event.openingMessages.back().role;
        if (role != "user"_L1 && role != "assistant"_L1)
            message.refuse("role", u"must be user or assistant"_s);
    });
    if (problem)
        return std::unexpected(*std::move(problem));
    return event;
}

std::expected<EventStore::Outcome, StoreError> EventStore::store(const AgentEvent& event, UtcTime receivedAt)
{
    return attempt([&] {
        Transaction transaction(*m_database);
        m_database->run(
            "INSERT INTO agent_events (event_id, event_type, session_id, occurred_at, received_at, working_folder, model, permission_mode,"
            " transcript_path, prompt) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (event_id) DO NOTHING",
            event.eventId, event.eventType, event.sessionId, event.occurredAt.time_since_epoch().count(), receivedAt.time_since_epoch().count(),
            event.workingFolder, event.model, event.permissionMode, event.transcriptPath, event.prompt);
        if (m_database->changedRows() == 0)
            return Outcome::knownAlready;
        const qint64 id = m_database->lastInsertedId();
        qint64 position = 0;
        for (const OpeningMessage& message : event.openingMessages)
            m_database->run("INSERT INTO opening_messages (event, position, role, content, occurred_at) VALUES (?, ?, ?, ?, ?)", id, ++position,
                message.role, message.content, message.occurredAt);
        transaction.commit();
        return Outcome::stored;
    });
}

std::expected<std::optional<AgentEvent>, StoreError> EventStore::find(const QString& eventId) const
{
    return attempt([&]() -> std::optional<AgentEvent> {
        Query query(*m_database,
            "SELECT id, event_id, event_type, session_id, occurred_at, working_folder, model, permission_mode, transcript_path, prompt"
            " FROM agent_events WHERE event_id = ?",
            eventId);
        if (!query.next())
            return std::nullopt;
        AgentEvent event { query.text(1), query.text(2), query.text(3), UtcTime(std::chrono::milliseconds(query.integer(4))), query.optionalText(5),
            query.optionalText(6), query.optionalText(7), query.optionalText(8), query.optionalText(9), {} };
        Query messages(*m_database, "SELECT role, content, occurred_at FROM opening_messages WHERE event = ? ORDER BY position", query.integer(0));
        while (messages.next())
            event.openingMessages.push_back({ messages.text(0), messages.text(1), messages.optionalText(2) });
        return event;
    });
}

std::expected<qint64, StoreError> EventStore::countSince(UtcTime since) const
{
    return attempt([&] {
        Query query(*m_database, "SELECT count(*) FROM agent_events WHERE occurred_at >= ?", since.time_since_epoch().count());
        return query.next() ? query.integer(0) : 0;
    });
}

std::expected<std::vector<AgentSession>, StoreError> EventStore::latestSessions(int count, int eventsEach) const
{
    return attempt([&] {
        const Transaction oneMoment(*m_database, Transaction::Purpose::read);
        std::vector<AgentSession> sessions;
        {
            // Looking at the latest events alone keeps the page quick after years of them.
            Query latest(*m_database,
                "SELECT session_id FROM (SELECT id, session_id, occurred_at FROM agent_events ORDER BY occurred_at DESC, id DESC LIMIT 1000)"
                " GROUP BY session_id ORDER BY max(occurred_at) DESC, max(id) DESC LIMIT ?",
                count);
            while (latest.next())
                sessions.push_back(
                    { .sessionId = latest.text(0), .agent = {}, .workingFolder = {}, .model = {}, .openingMessages = {}, .latestEvents = {} });
        }
        for (AgentSession& session : sessions) {
            Query events(*m_database,
                "SELECT event_id, event_type, occurred_at, working_folder, model, prompt FROM agent_events WHERE session_id = ?"
                " ORDER BY occurred_at DESC, id DESC LIMIT ?",
                session.sessionId, eventsEach);
            while (events.next()) {
                AgentEvent event { events.text(0), events.text(1), session.sessionId, UtcTime(std::chrono::milliseconds(events.integer(2))),
                    events.optionalText(3), events.optionalText(4), {}, {}, events.optionalText(5), {} };
                if (!session.workingFolder)
                    session.workingFolder = event.workingFolder;
                if (!session.model)
                    session.model = event.model;
                session.latestEvents.push_back(std::move(event));
            }
            session.agent = session.latestEvents.front().eventId.section(u':', 0, 0);
            Query messages(*m_database,
                "SELECT role, content, occurred_at FROM opening_messages WHERE event = (SELECT id FROM agent_events"
                " WHERE session_id = ? AND EXISTS (SELECT 1 FROM opening_messages WHERE event = agent_events.id)"
                " ORDER BY occurred_at DESC, id DESC LIMIT 1) ORDER BY position",
                session.sessionId);
            while (messages.next())
                session.openingMessages.push_back({ messages.text(0), messages.text(1), messages.optionalText(2) });
        }
        return sessions;
    });
}

std::expected<std::vector<WorkSpan>, StoreError> EventStore::workSpans(UtcTime from, UtcTime until) const
{
    // An agent that was killed says nothing of it.
    constexpr std::chrono::hours longestWork { 1 };
    return attempt([&] {
        std::vector<WorkSpan> spans;
        const auto add = [&](UtcTime begin, UtcTime end) {
            const WorkSpan span { std::max(begin, from), std::min({ end, begin + longestWork, until }) };
            if (span.from < span.until)
                spans.push_back(span);
        };
        Query query(*m_database,
            "SELECT session_id, event_type, occurred_at FROM agent_events WHERE occurred_at >= ? AND occurred_at < ? ORDER BY session_id, "
            "occurred_at",
            (from - longestWork).time_since_epoch().count(), (until + longestWork).time_since_epoch().count());
        QString session;
        std::optional<UtcTime> prompt;
        while (query.next()) {
            const UtcTime moment { std::chrono::milliseconds(query.integer(2)) };
            if (prompt)
                add(*prompt, query.text(0) == session ? moment : *prompt + longestWork);
            session = query.text(0);
            prompt = query.text(1) == "UserPromptSubmit"_L1 ? std::optional(moment) : std::nullopt;
        }
        if (prompt)
            add(*prompt, *prompt + longestWork);

        std::ranges::sort(spans, {}, &WorkSpan::from);
        std::vector<WorkSpan> merged;
        for (const WorkSpan& span : spans) {
            if (!merged.empty() && span.from <= merged.back().until)
                merged.back().until = std::max(merged.back().until, span.until);
            else
                merged.push_back(span);
        }
        return merged;
    });
}

} // namespace orvanta::localservice
