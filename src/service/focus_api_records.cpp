#include "service/focus_api_records.h"

#include <QStringEncoder>

#include <nlohmann/json.hpp>

#include <cmath>
#include <optional>
#include <string>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

using Json = nlohmann::json;
using Reason = DecodeError::Reason;

/// As deep as the answers' own records need, many times over. Without a bound a body of opening brackets alone would
/// cost a hundred times its size in memory.
constexpr int deepestNesting = 512;

bool isNestedTooDeep(const QByteArray& body)
{
    int depth = 0;
    bool inText = false;
    for (qsizetype i = 0; i < body.size(); ++i) {
        const char c = body[i];
        if (inText) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inText = false;
        } else if (c == '"') {
            inText = true;
        } else if (c == '[' || c == '{') {
            if (++depth > deepestNesting)
                return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

std::expected<Json, DecodeError> parseObject(const QByteArray& body)
{
    if (isNestedTooDeep(body))
        return std::unexpected(DecodeError { Reason::notJson });
    Json json = Json::parse(body.begin(), body.end(), nullptr, false);
    if (json.is_discarded())
        return std::unexpected(DecodeError { Reason::notJson });
    if (!json.is_object())
        return std::unexpected(DecodeError { Reason::wrongType });
    return json;
}

std::optional<bool> asBool(const Json& value)
{
    return value.is_boolean() ? std::optional(value.get<bool>()) : std::nullopt;
}

std::optional<std::int64_t> asInteger(const Json& value)
{
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        return std::in_range<std::int64_t>(number) ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
    }
    if (value.is_number_integer())
        return value.get<std::int64_t>();
    if (value.is_number_float()) {
        const auto number = value.get<double>();
        // The first double above the range. Its negative is the range's lowest, and stands as well for numbers below it.
        constexpr double limit = 0x1p63;
        if (number > -limit && number < limit && std::trunc(number) == number)
            return static_cast<std::int64_t>(number);
    }
    return std::nullopt;
}

std::optional<QStringList> asTexts(const Json& value)
{
    if (!value.is_array())
        return std::nullopt;
    QStringList texts;
    texts.reserve(static_cast<qsizetype>(value.size()));
    for (const Json& element : value) {
        if (!element.is_string())
            return std::nullopt;
        texts.append(QString::fromStdString(element.get_ref<const std::string&>()));
    }
    return texts;
}

std::optional<std::vector<BlockedApplication>> asApplications(const Json& value)
{
    // Back to text, so that the one rule of what a list of applications is stands in one place.
    return decodeBlockedApplications(QByteArray::fromStdString(value.dump()));
}

/// The value under `key` as `convert` takes it.
template <typename Convert>
auto member(const Json& object, const char* key, Convert convert) -> std::expected<typename decltype(convert(object))::value_type, DecodeError>
{
    const auto found = object.find(key);
    if (found == object.end())
        return std::unexpected(DecodeError { Reason::missingKey, QString::fromLatin1(key) });
    auto value = convert(*found);
    if (!value)
        return std::unexpected(DecodeError { Reason::wrongType, QString::fromLatin1(key) });
    return *std::move(value);
}

const char* rawValue(FocusPolicyMutation::Action action)
{
    switch (action) {
    case FocusPolicyMutation::Action::addDomain:
        return "add_domain";
    case FocusPolicyMutation::Action::removeDomain:
        return "remove_domain";
    case FocusPolicyMutation::Action::addApplication:
        return "add_application";
    case FocusPolicyMutation::Action::removeApplication:
        break;
    }
    return "remove_application";
}

} // namespace

std::expected<FocusStateResponse, DecodeError> decodeFocusState(const QByteArray& body)
{
    const auto object = parseObject(body);
    if (!object)
        return std::unexpected(object.error());
    const auto active = member(*object, "active", asBool);
    if (!active)
        return std::unexpected(active.error());
    const auto inProgressTaskCount = member(*object, "inProgressTaskCount", asInteger);
    if (!inProgressTaskCount)
        return std::unexpected(inProgressTaskCount.error());
    const auto policyRevision = member(*object, "policyRevision", asInteger);
    if (!policyRevision)
        return std::unexpected(policyRevision.error());
    return FocusStateResponse { .active = *active, .inProgressTaskCount = *inProgressTaskCount, .policyRevision = *policyRevision };
}

std::expected<FocusPolicyResponse, DecodeError> decodeFocusPolicy(const QByteArray& body)
{
    const auto object = parseObject(body);
    if (!object)
        return std::unexpected(object.error());
    const auto revision = member(*object, "revision", asInteger);
    if (!revision)
        return std::unexpected(revision.error());
    auto blockedDomains = member(*object, "blockedDomains", asTexts);
    if (!blockedDomains)
        return std::unexpected(blockedDomains.error());
    auto blockedApplications = member(*object, "blockedApplications", asApplications);
    if (!blockedApplications)
        return std::unexpected(blockedApplications.error());
    return FocusPolicyResponse {
        .revision = *revision, .blockedDomains = *std::move(blockedDomains), .blockedApplications = *std::move(blockedApplications)
    };
}

std::expected<QByteArray, EncodeError> encodeMutation(const FocusPolicyMutation& mutation)
{
    QStringEncoder encoder(QStringEncoder::Utf8, QStringConverter::Flag::Stateless);
    const QByteArray value = encoder(mutation.value);
    if (encoder.hasError())
        return std::unexpected(EncodeError {});
    nlohmann::ordered_json json;
    json["action"] = rawValue(mutation.action);
    json["value"] = value.toStdString();
    return QByteArray::fromStdString(json.dump());
}

} // namespace orvanta
