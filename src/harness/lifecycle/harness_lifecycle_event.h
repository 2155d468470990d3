#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace orvanta {

/// One of the first messages of an agent's session.
struct HarnessOpeningMessage {
    QString role;                           ///< "user" or "assistant"
    QString content;                        ///< cleaned; at most 4000 characters
    std::optional<QString> occurredAt = {}; ///< as the transcript has it

    bool operator==(const HarnessOpeningMessage&) const = default;
};

/// One step in the life of an agent's session, as it is uploaded. A plain value.
struct HarnessLifecycleEvent {
    QString eventId;    ///< names the event for good; at most 200 characters
    QString eventType;  ///< "SessionStart", "UserPromptSubmit" or "Stop"
    QString sessionId;  ///< the agent's own
    QString occurredAt; ///< when it was received: ISO 8601 in UTC with milliseconds
    std::optional<QString> cwd = {};
    std::optional<QString> model = {};
    std::optional<QString> permissionMode = {};
    std::optional<QString> transcriptPath = {};
    std::optional<QString> prompt = {}; ///< cleaned
    std::optional<std::vector<HarnessOpeningMessage>> openingMessages = {};

    bool operator==(const HarnessLifecycleEvent&) const = default;
};

/// A JSON object with the fields' names as keys, in the fields' order; what is absent is left out. Absent if a text is not
/// Unicode (half a surrogate pair), which JSON cannot carry.
[[nodiscard]] std::optional<QByteArray> encodeLifecycleEvent(const HarnessLifecycleEvent& event);

/// The reverse. Unknown keys are ignored; absent where a required key is missing or any has another type.
[[nodiscard]] std::optional<HarnessLifecycleEvent> decodeEncodedLifecycleEvent(const QByteArray& json);

} // namespace orvanta
