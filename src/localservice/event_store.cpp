#include "localservice/event_store.h"

#include <QTextBoundaryFinder>

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

} // namespace orvanta::localservice
