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

/// Reads an uploaded event. Keys that it does not know are ignored.
[[nodiscard]] std::expected<AgentEvent, BadInput> readAgentEvent(const QByteArray& body);

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

private:
    Database* m_database;
};

} // namespace orvanta::localservice
