#include "app/policy/blocked_application.h"

#include <nlohmann/json.hpp>

#include <QStringEncoder>

namespace orvanta {

using Json = nlohmann::ordered_json;

namespace {

std::optional<std::string> utf8(const QString& text)
{
    QStringEncoder encode(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    const QByteArray bytes = encode(text);
    if (encode.hasError())
        return std::nullopt;
    return bytes.toStdString();
}

std::optional<QString> text(const Json& object, const char* key)
{
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string())
        return std::nullopt;
    return QString::fromStdString(found->get_ref<const std::string&>());
}

} // namespace

std::optional<QByteArray> encodeBlockedApplications(const std::vector<BlockedApplication>& applications)
{
    Json array = Json::array();
    for (const auto& application : applications) {
        auto identifier = utf8(application.bundleIdentifier);
        auto name = utf8(application.displayName);
        if (!identifier || !name)
            return std::nullopt;
        array.push_back({ { "bundleIdentifier", *std::move(identifier) }, { "displayName", *std::move(name) } });
    }
    return QByteArray::fromStdString(array.dump());
}

std::optional<std::vector<BlockedApplication>> decodeBlockedApplications(const QByteArray& json)
{
    const Json array = Json::parse(json.cbegin(), json.cend(), nullptr, /*allow_exceptions=*/false);
    if (!array.is_array())
        return std::nullopt;
    std::vector<BlockedApplication> applications;
    applications.reserve(array.size());
    for (const Json& element : array) {
        if (!element.is_object())
            return std::nullopt;
        auto identifier = text(element, "bundleIdentifier");
        auto name = text(element, "displayName");
        if (!identifier || !name)
            return std::nullopt;
        applications.push_back({ *std::move(identifier), *std::move(name) });
    }
    return applications;
}

} // namespace orvanta
