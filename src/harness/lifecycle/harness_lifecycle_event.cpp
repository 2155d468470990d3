#include "harness/lifecycle/harness_lifecycle_event.h"

#include <QStringEncoder>

#include <nlohmann/json.hpp>

#include <string>

namespace orvanta {

namespace {

using Json = nlohmann::ordered_json;

/// Puts texts under keys and remembers whether all of them were Unicode.
class Writer {
public:
    void put(Json& object, const char* key, const QString& text)
    {
        QStringEncoder encoder(QStringEncoder::Utf8, QStringConverter::Flag::Stateless);
        const QByteArray utf8 = encoder(text);
        if (encoder.hasError())
            m_isUnicode = false;
        else
            object[key] = utf8.toStdString();
    }

    void put(Json& object, const char* key, const std::optional<QString>& text)
    {
        if (text)
            put(object, key, *text);
    }

    [[nodiscard]] bool isUnicode() const { return m_isUnicode; }

private:
    bool m_isUnicode = true;
};

/// Takes texts from under keys and remembers whether each was as it had to be.
class Reader {
public:
    [[nodiscard]] QString text(const Json& object, const char* key)
    {
        const auto found = object.find(key);
        if (found != object.end() && found->is_string())
            return QString::fromStdString(found->get_ref<const std::string&>());
        m_isSound = false;
        return {};
    }

    [[nodiscard]] std::optional<QString> optionalText(const Json& object, const char* key)
    {
        const auto found = object.find(key);
        if (found == object.end() || found->is_null())
            return std::nullopt;
        return text(object, key);
    }

    [[nodiscard]] std::optional<std::vector<HarnessOpeningMessage>> messages(const Json& object)
    {
        const auto found = object.find("openingMessages");
        if (found == object.end() || found->is_null())
            return std::nullopt;
        std::vector<HarnessOpeningMessage> messages;
        m_isSound = m_isSound && found->is_array();
        for (const Json& element : found->is_array() ? *found : Json::array()) {
            if (element.is_object())
                messages.push_back({ text(element, "role"), text(element, "content"), optionalText(element, "occurredAt") });
            else
                m_isSound = false;
        }
        return messages;
    }

    [[nodiscard]] bool isSound() const { return m_isSound; }

private:
    bool m_isSound = true;
};

} // namespace

std::optional<QByteArray> encodeLifecycleEvent(const HarnessLifecycleEvent& event)
{
    Writer writer;
    Json json = Json::object();
    writer.put(json, "eventId", event.eventId);
    writer.put(json, "eventType", event.eventType);
    writer.put(json, "sessionId", event.sessionId);
    writer.put(json, "occurredAt", event.occurredAt);
    writer.put(json, "cwd", event.cwd);
    writer.put(json, "model", event.model);
    writer.put(json, "permissionMode", event.permissionMode);
    writer.put(json, "transcriptPath", event.transcriptPath);
    writer.put(json, "prompt", event.prompt);
    if (event.openingMessages) {
        Json messages = Json::array();
        for (const HarnessOpeningMessage& message : *event.openingMessages) {
            Json object = Json::object();
            writer.put(object, "role", message.role);
            writer.put(object, "content", message.content);
            writer.put(object, "occurredAt", message.occurredAt);
            messages.push_back(std::move(object));
        }
        json["openingMessages"] = std::move(messages);
    }
    if (!writer.isUnicode())
        return std::nullopt;
    return QByteArray::fromStdString(json.dump());
}

std::optional<HarnessLifecycleEvent> decodeEncodedLifecycleEvent(const QByteArray& json)
{
    const Json object = Json::parse(json.begin(), json.end(), nullptr, false);
    if (!object.is_object())
        return std::nullopt;
    Reader reader;
    HarnessLifecycleEvent event {
        .eventId = reader.text(object, "eventId"),
        .eventType = reader.text(object, "eventType"),
        .sessionId = reader.text(object, "sessionId"),
        .occurredAt = reader.text(object, "occurredAt"),
        .cwd = reader.optionalText(object, "cwd"),
        .model = reader.optionalText(object, "model"),
        .permissionMode = reader.optionalText(object, "permissionMode"),
        .transcriptPath = reader.optionalText(object, "transcriptPath"),
        .prompt = reader.optionalText(object, "prompt"),
        .openingMessages = reader.messages(object),
    };
    if (!reader.isSound())
        return std::nullopt;
    return event;
}

} // namespace orvanta
