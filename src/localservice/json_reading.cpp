#include "localservice/json_reading.h"

#include <cmath>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

// The deepest record is an activity period: object, applications, application, tabs, tab.
constexpr int deepestNesting = 8;

} // namespace

std::expected<Json, BadInput> readJsonObject(const QByteArray& body)
{
    bool isTooDeep = false;
    const auto boundDepth = [&isTooDeep](int depth, Json::parse_event_t event, const Json&) {
        const bool begins = event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start;
        if (begins && depth > deepestNesting)
            isTooDeep = true;
        return !isTooDeep;
    };
    Json value = Json::parse(body.cbegin(), body.cend(), boundDepth, /*allow_exceptions=*/false);
    if (isTooDeep)
        return std::unexpected(BadInput { u"The body is nested too deeply"_s });
    if (value.is_discarded())
        return std::unexpected(BadInput { u"The body is not valid JSON"_s });
    if (!value.is_object())
        return std::unexpected(BadInput { u"The body must be a JSON object"_s });
    return value;
}

ObjectReader::ObjectReader(const Json& object, QString path, std::optional<BadInput>& firstProblem)
    : m_object(object)
    , m_path(std::move(path))
    , m_firstProblem(firstProblem)
{
}

const Json* ObjectReader::member(const char* key) const
{
    const auto found = m_object.find(key);
    return found == m_object.end() ? nullptr : &*found;
}

void ObjectReader::refuse(const char* key, const QString& reason)
{
    if (!m_firstProblem)
        m_firstProblem = BadInput { m_path + QString::fromUtf8(key) + u' ' + reason };
}

QString ObjectReader::text(const char* key)
{
    const Json* value = member(key);
    if (value && value->is_string())
        return QString::fromStdString(value->get_ref<const std::string&>());
    refuse(key, u"must be a text"_s);
    return {};
}

QString ObjectReader::filledText(const char* key)
{
    QString value = text(key);
    if (value.isEmpty())
        refuse(key, u"must not be empty"_s);
    return value;
}

std::optional<QString> ObjectReader::optionalText(const char* key)
{
    const Json* value = member(key);
    if (!value || value->is_null())
        return std::nullopt;
    return text(key);
}

double ObjectReader::seconds(const char* key)
{
    const Json* value = member(key);
    if (value && value->is_number()) {
        const auto number = value->get<double>();
        if (std::isfinite(number) && number >= 0)
            return number;
    }
    refuse(key, u"must be a number of seconds, 0 or more"_s);
    return 0;
}

UtcTime ObjectReader::time(const char* key)
{
    const Json* value = member(key);
    if (value && value->is_string()) {
        if (const auto moment = utcTimeFromIso(value->get_ref<const std::string&>()))
            return *moment;
    }
    refuse(key, u"must be an ISO 8601 time in UTC, such as 2025-01-31T14:05:00Z"_s);
    return {};
}

} // namespace orvanta::localservice
