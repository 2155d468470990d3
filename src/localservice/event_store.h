#pragma once

#include "localservice/database.h"
#include "localservice/json_reading.h"

#include <vector>

namespace orvanta::localservice {

/// One of the first messages of an agent's session.
struct OpeningMessage {
    QString role; ///< "user" or "assistant"
    QString content;
    std::optional<QString> occurredAt; ///< as the transcript has it

    bool operator==(const OpeningMessage&) const = default;
};

/// A step in the life of an AI coding agent's session.
struct AgentEvent {
    QString eventId;   ///< names the event for good: the same one sent again is the same event
    QString eventType; ///< "SessionStart", "UserPromptSubmit" or "Stop"
    QString sessionId;
    UtcTime occurredAt;
    std::optional<QString> workingFolder;
    std::optional<QString> model;
    std::optional<QString> permissionMode;
    std::optional<QString> transcriptPath;
    std::optional<QString> prompt;
    std::vector<OpeningMessage> openingMessages;

    bool operator==(const AgentEvent&) const = default;
};

/// What the events of one session tell of it.
struct AgentSession {
    QString sessionId;
    QString agent; ///< as the events' identifiers begin: "codex" or "claude"
    std::optional<QString> workingFolder;
    std::optional<QString> model;
    std::vector<OpeningMessage> openingMessages; ///< of its latest event that has any
    std::vector<AgentEvent> latestEvents;        ///< the latest first, without their messages
};

/// Reads an uploaded event. Keys that it does not know are ignored.
[[nodiscard]] std::expected<AgentEvent, BadInput> readAgentEvent(const QByteArray& body);

/// A time through which at least one agent worked.
struct WorkSpan {
    UtcTime from;
    UtcTime until;

    bool operator==(const WorkSpan&) const = default;
};

/// The agent events of the database. A light view; the database must outlive it.
class EventStore {
public:
    enum class Outcome : std::uint8_t { stored, knownAlready };

    explicit EventStore(Database& database) : m_database(&database) { }

    /// Stores `event` unless one with its identifier is there; the first one stays as it is.
    [[nodiscard]] std::expected<Outcome, StoreError> store(const AgentEvent& event, UtcTime receivedAt);

    [[nodiscard]] std::expected<std::optional<AgentEvent>, StoreError> find(const QString& eventId) const;

    /// Events that happened at `since` or later.
    [[nodiscard]] std::expected<qint64, StoreError> countSince(UtcTime since) const;

    /// The sessions of the latest events, the one with the latest first: at most `count`, each with at most `eventsEach`.
    [[nodiscard]] std::expected<std::vector<AgentSession>, StoreError> latestSessions(int count, int eventsEach) const;
    /// When agents worked: from each prompt to the next event of its session, an hour at most. In the order of time, without
    /// overlaps; begins and ends within `from` and `until`.
    [[nodiscard]] std::expected<std::vector<WorkSpan>, StoreError> workSpans(UtcTime from, UtcTime until) const;

private:
    Database* m_database;
};

} // namespace orvanta::localservice
