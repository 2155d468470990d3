#include "harness/hook_payload.h"

#include "harness/json_reader.h"
#include "harness/opening_messages.h"
#include "harness/prompt_cleaning.h"

#include <QDateTime>
#include <QUuid>

#include <array>
#include <initializer_list>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr int eventIdCharacters = 200;

/// The keys that are looked at. An agent spells them either way.
enum Key : std::uint8_t {
    session_id,
    sessionId,
    hook_event_name,
    hookEventName,
    event_id,
    eventId,
    turn_id,
    turnId,
    source,
    transcript_path,
    transcriptPath,
    cwd,
    model,
    permission_mode,
    permissionMode,
    prompt,
    keyCount,
};

constexpr std::array<std::string_view, keyCount> keyNames { "session_id", "sessionId", "hook_event_name", "hookEventName", "event_id", "eventId",
    "turn_id", "turnId", "source", "transcript_path", "transcriptPath", "cwd", "model", "permission_mode", "permissionMode", "prompt" };

/// The texts under the keys that matter, as they are spelt.
using Texts = std::array<std::optional<std::string_view>, keyCount>;

std::optional<Texts> readTexts(std::string_view body)
{
    Texts texts;
    JsonReader reader(body);
    const bool isObject = reader.members([&](std::string_view key) {
        const bool isText = reader.kind() == JsonKind::text;
        const auto value = reader.take();
        for (std::size_t index = 0; index < keyCount; ++index) {
            // Where a key stands twice, the last one counts, as with most readers of JSON.
            if (spellsText(key, keyNames[index]))
                texts[index] = isText ? value : std::nullopt;
        }
        return value.has_value();
    });
    if (!isObject || !reader.isAtEnd())
        return std::nullopt;
    return texts;
}

/// The first of `keys` that has a text.
std::optional<QString> first(const Texts& texts, std::initializer_list<Key> keys)
{
    for (const Key key : keys) {
        if (const auto& spelling = texts[key])
            return QString::fromStdString(decodedText(*spelling));
    }
    return std::nullopt;
}

bool isKnownEvent(const QString& name)
{
    return name == "SessionStart"_L1 || name == "UserPromptSubmit"_L1 || name == "Stop"_L1;
}

/// A prompt that is nothing but what the agent put around it is no prompt.
std::optional<QString> presentPrompt(const std::optional<QString>& text)
{
    const QString cleaned = cleanedPrompt(text.value_or(QString()));
    return cleaned.isEmpty() ? std::nullopt : std::optional(cleaned);
}

std::optional<std::vector<HarnessOpeningMessage>> openingMessages(FileSystem& files, const std::optional<QString>& path)
{
    if (!path)
        return std::nullopt;
    auto messages = readOpeningMessages(files, *path);
    return messages.empty() ? std::nullopt : std::optional(std::move(messages));
}

} // namespace

QString isoDateTime(ReceiptTime time)
{
    return QDateTime::fromMSecsSinceEpoch(time.time_since_epoch().count(), Qt::UTC).toString(Qt::ISODateWithMs);
}

std::expected<HarnessLifecycleEvent, HarnessLifecycleEventError> decodeHookPayload(
    const QByteArray& body, AIHarness harness, ReceiptTime occurredAt, FileSystem& files)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    std::string_view bytes(body.constData(), static_cast<std::size_t>(body.size()));
    if (bytes.starts_with(byteOrderMark))
        bytes.remove_prefix(byteOrderMark.size());

    const auto texts = readTexts(bytes);
    if (!texts)
        return std::unexpected(HarnessLifecycleEventError::invalidPayload);
    const auto session = first(*texts, { session_id, sessionId });
    const auto name = first(*texts, { hook_event_name, hookEventName });
    if (!session || !name || !isKnownEvent(*name))
        return std::unexpected(HarnessLifecycleEventError::invalidPayload);

    const auto idPart = first(*texts, { event_id, eventId, turn_id, turnId, source });
    const QString id
        = harnessName(harness) + u':' + *name + u':' + *session + u':' + (idPart ? *idPart : QUuid::createUuid().toString(QUuid::WithoutBraces));
    const auto transcript = first(*texts, { transcript_path, transcriptPath });
    return HarnessLifecycleEvent {
        .eventId = firstCharacters(id, eventIdCharacters),
        .eventType = *name,
        .sessionId = *session,
        .occurredAt = isoDateTime(occurredAt),
        .cwd = first(*texts, { cwd }),
        .model = first(*texts, { model }),
        .permissionMode = first(*texts, { permission_mode, permissionMode }),
        .transcriptPath = transcript,
        .prompt = presentPrompt(first(*texts, { prompt })),
        .openingMessages = openingMessages(files, transcript),
    };
}

} // namespace orvanta
