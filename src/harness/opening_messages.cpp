#include "harness/opening_messages.h"

#include "harness/json_reader.h"
#include "harness/prompt_cleaning.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QString textOf(std::string_view spelling)
{
    return QString::fromStdString(decodedText(spelling));
}

bool isText(std::string_view spelling)
{
    return spelling.starts_with('"');
}

/// The values of an object's members that matter, as they are spelt; empty where there is none.
template <std::size_t count>
std::optional<std::array<std::string_view, count>> membersOf(std::string_view object, const std::array<std::string_view, count>& names)
{
    std::array<std::string_view, count> values {};
    JsonReader reader(object);
    const bool isObject = reader.members([&](std::string_view key) {
        const auto value = reader.take();
        if (!value)
            return false;
        for (std::size_t index = 0; index < count; ++index) {
            if (spellsText(key, names[index]))
                values[index] = *value;
        }
        return true;
    });
    if (!isObject || !reader.isAtEnd())
        return std::nullopt;
    return values;
}

/// The texts of a message's parts, a line each; absent if `content` is no array.
std::optional<QString> joinedParts(std::string_view content)
{
    if (!content.starts_with('['))
        return std::nullopt;
    QString joined;
    bool isFirst = true;
    JsonReader reader(content);
    const bool isArray = reader.elements([&] {
        const auto element = reader.take();
        if (!element)
            return false;
        if (!element->starts_with('{'))
            return true;
        const auto part = membersOf<2>(*element, { "type", "text" });
        if (!part)
            return false;
        const auto& [type, text] = *part;
        if (!isText(text) || !(spellsText(type, "input_text") || spellsText(type, "output_text") || spellsText(type, "text")))
            return true;
        if (!std::exchange(isFirst, false))
            joined += u'\n';
        joined += textOf(text);
        return true;
    });
    return isArray ? std::optional(joined) : std::nullopt;
}

std::optional<QString> roleOf(std::string_view spelling)
{
    if (spellsText(spelling, "user"))
        return u"user"_s;
    if (spellsText(spelling, "assistant"))
        return u"assistant"_s;
    return std::nullopt;
}

/// A role and a text, from a line of either form.
std::optional<HarnessOpeningMessage> messageIn(std::string_view line)
{
    const auto members = membersOf<4>(line, { "type", "payload", "message", "timestamp" });
    if (!members)
        return std::nullopt;
    const auto& [type, payload, message, timestamp] = *members;
    std::optional<QString> role;
    std::optional<QString> text;
    if (spellsText(type, "response_item") && payload.starts_with('{')) {
        const auto item = membersOf<3>(payload, { "type", "role", "content" });
        if (item && spellsText((*item)[0], "message")) {
            role = roleOf((*item)[1]);
            text = role ? joinedParts((*item)[2]) : std::nullopt;
        }
    }
    if (!text && message.starts_with('{')) {
        const auto item = membersOf<2>(message, { "role", "content" });
        if (item) {
            role = roleOf((*item)[0]);
            if (role)
                text = isText((*item)[1]) ? textOf((*item)[1]) : joinedParts((*item)[1]);
        }
    }
    if (!role || !text)
        return std::nullopt;
    HarnessOpeningMessage found { .role = *role, .content = *text };
    if (isText(timestamp))
        found.occurredAt = textOf(timestamp);
    return found;
}

/// What an agent writes into a transcript before the user's first words.
bool isPreamble(const QString& text)
{
    return text.startsWith("# AGENTS.md instructions"_L1) || text.startsWith("<environment_context>"_L1)
        || text.startsWith("<permissions instructions>"_L1);
}

} // namespace

bool OpeningMessageScan::feed(std::string_view piece)
{
    while (!isFull()) {
        const std::size_t end = piece.find('\n');
        if (end == std::string_view::npos) {
            m_beginning.append(piece);
            return true;
        }
        if (m_beginning.empty()) {
            takeLine(piece.substr(0, end));
        } else {
            m_beginning.append(piece.substr(0, end));
            takeLine(m_beginning);
            m_beginning.clear();
        }
        piece.remove_prefix(end + 1);
    }
    return false;
}

std::vector<HarnessOpeningMessage> OpeningMessageScan::finish()
{
    if (!isFull() && !m_beginning.empty())
        takeLine(m_beginning);
    m_beginning.clear();
    return std::exchange(m_messages, {});
}

void OpeningMessageScan::takeLine(std::string_view line)
{
    auto message = messageIn(line);
    if (!message && !isUtf8(line)) {
        // One byte that is no character must not cost the message: it becomes U+FFFD, as a reader would show it.
        const QByteArray mended = QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())).toUtf8();
        message = messageIn({ mended.constData(), static_cast<std::size_t>(mended.size()) });
    }
    if (!message)
        return;
    const QString text = cleanedPrompt(message->content);
    if (text.isEmpty() || isPreamble(text))
        return;
    message->content = firstCharacters(text, openingMessageCharacters);
    m_messages.push_back(*std::move(message));
}

std::vector<HarnessOpeningMessage> readOpeningMessages(FileSystem& files, const QString& path)
{
    OpeningMessageScan scan;
    const auto result = files.readPieces(path, transcriptLimit, [&scan](QByteArrayView piece) {
        return scan.feed({ piece.data(), static_cast<std::size_t>(piece.size()) }) ? FileSystem::Reading::goOn : FileSystem::Reading::enough;
    });
    if (!result)
        return {};
    return scan.finish();
}

} // namespace orvanta
