#include "activity/activity_json.h"

#include <QStringEncoder>

#include <nlohmann/json.hpp>

#include <array>
#include <cmath>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

using Json = nlohmann::ordered_json;
using Reason = DecodeError::Reason;

/// Beyond it a double has no room for every integer, and is written as what it is.
constexpr double largestExactInteger = 0x1p53;

/// Deeper than any record is.
constexpr int deepestNesting = 16;

/// Writes members in the order in which they are given; remembers the first that JSON cannot carry.
class Writer {
public:
    Json text(const QString& value)
    {
        QStringEncoder encoder(QStringEncoder::Utf8, QStringConverter::Flag::Stateless);
        const QByteArray bytes = encoder(value);
        if (encoder.hasError())
            refuse(u"a text is not valid Unicode"_s);
        return bytes.toStdString();
    }

    Json number(double value)
    {
        if (!std::isfinite(value))
            refuse(u"a number is not finite"_s);
        if (std::trunc(value) == value && std::abs(value) < largestExactInteger)
            return static_cast<std::int64_t>(value);
        return value;
    }

    Json date(WallTime value)
    {
        const auto iso = isoText(value);
        if (!iso)
            refuse(u"a date is out of range"_s);
        return iso.value_or(QString()).toStdString();
    }

    Json record(const AppInfo& app)
    {
        Json json = Json::object();
        if (app.bundleIdentifier)
            json["bundleIdentifier"] = text(*app.bundleIdentifier);
        json["name"] = text(app.name);
        json["isActive"] = app.isActive;
        return json;
    }

    Json record(const BrowserTab& tab)
    {
        Json json = Json::object();
        json["browser"] = text(tab.browser);
        json["title"] = text(tab.title);
        json["url"] = text(tab.url);
        return json;
    }

    Json record(const ActivitySnapshot& snapshot)
    {
        Json json = Json::object();
        json["timestamp"] = date(snapshot.timestamp);
        json["idleSeconds"] = number(snapshot.idleSeconds);
        if (snapshot.frontmostApp)
            json["frontmostApp"] = record(*snapshot.frontmostApp);
        json["runningApps"] = list(snapshot.runningApps);
        if (snapshot.activeBrowserTab)
            json["activeBrowserTab"] = record(*snapshot.activeBrowserTab);
        return json;
    }

    Json record(const TabActivity& tab)
    {
        Json json = Json::object();
        json["url"] = text(tab.url);
        json["title"] = text(tab.title);
        json["focusedSeconds"] = number(tab.focusedSeconds);
        return json;
    }

    Json record(const AppActivity& app)
    {
        Json json = Json::object();
        if (app.bundleIdentifier)
            json["bundleIdentifier"] = text(*app.bundleIdentifier);
        json["name"] = text(app.name);
        json["focusedSeconds"] = number(app.focusedSeconds);
        if (app.tabs)
            json["tabs"] = list(*app.tabs);
        return json;
    }

    Json record(const AggregatedActivity& activity)
    {
        Json json = Json::object();
        json["periodStart"] = date(activity.periodStart);
        json["periodEnd"] = date(activity.periodEnd);
        json["totalIdleSeconds"] = number(activity.totalIdleSeconds);
        json["applications"] = list(activity.applications);
        return json;
    }

    [[nodiscard]] const QString& problem() const { return m_problem; }

private:
    template <typename Record>
    Json list(const std::vector<Record>& records)
    {
        Json json = Json::array();
        for (const Record& element : records)
            json.push_back(record(element));
        return json;
    }

    void refuse(const QString& problem)
    {
        if (m_problem.isEmpty())
            m_problem = problem;
    }

    QString m_problem;
};

template <typename Record>
EncodedActivity encoded(const Record& record)
{
    Writer writer;
    const Json json = writer.record(record);
    if (!writer.problem().isEmpty())
        return std::unexpected(ActivityEncodingError { writer.problem() });
    return QByteArray::fromStdString(json.dump());
}

/// Reads members by key. The first that is missing or of the wrong type is remembered, and every read after it gives a
/// default: a record is read straight through and judged once.
class Reader {
public:
    std::optional<DecodeError> problem;

    QString text(const Json& object, const char* key)
    {
        const Json* value = required(object, key);
        return value ? asText(*value, key) : QString();
    }

    std::optional<QString> optionalText(const Json& object, const char* key)
    {
        const Json* value = present(object, key);
        return value ? std::optional(asText(*value, key)) : std::nullopt;
    }

    double number(const Json& object, const char* key)
    {
        const Json* value = required(object, key);
        if (value && !value->is_number())
            refuse(Reason::wrongType, key);
        return value && value->is_number() ? value->get<double>() : 0;
    }

    bool boolean(const Json& object, const char* key)
    {
        const Json* value = required(object, key);
        if (value && !value->is_boolean())
            refuse(Reason::wrongType, key);
        return value && value->is_boolean() && value->get<bool>();
    }

    WallTime date(const Json& object, const char* key)
    {
        const auto moment = wallTimeFromIso(text(object, key));
        if (!moment)
            refuse(Reason::wrongType, key);
        return moment.value_or(WallTime());
    }

    template <typename Record>
    std::vector<Record> list(const Json& object, const char* key)
    {
        const Json* value = required(object, key);
        return value ? elements<Record>(*value, key) : std::vector<Record>();
    }

    template <typename Record>
    std::optional<std::vector<Record>> optionalList(const Json& object, const char* key)
    {
        const Json* value = present(object, key);
        return value ? std::optional(elements<Record>(*value, key)) : std::nullopt;
    }

    template <typename Record>
    std::optional<Record> optionalRecord(const Json& object, const char* key)
    {
        const Json* value = present(object, key);
        if (!value)
            return std::nullopt;
        if (value->is_object())
            return record<Record>(*value);
        refuse(Reason::wrongType, key);
        return std::nullopt;
    }

    template <typename Record>
    Record record(const Json& object);

private:
    static const Json* present(const Json& object, const char* key)
    {
        const auto found = object.find(key);
        return found == object.end() || found->is_null() ? nullptr : &*found;
    }

    const Json* required(const Json& object, const char* key)
    {
        const Json* value = present(object, key);
        if (!value)
            refuse(object.contains(key) ? Reason::wrongType : Reason::missingKey, key);
        return value;
    }

    QString asText(const Json& value, const char* key)
    {
        if (value.is_string())
            return QString::fromStdString(value.get_ref<const std::string&>());
        refuse(Reason::wrongType, key);
        return {};
    }

    template <typename Record>
    std::vector<Record> elements(const Json& array, const char* key)
    {
        std::vector<Record> records;
        if (!array.is_array()) {
            refuse(Reason::wrongType, key);
            return records;
        }
        for (const Json& element : array) {
            if (!element.is_object()) {
                refuse(Reason::wrongType, key);
                break;
            }
            records.push_back(record<Record>(element));
        }
        return records;
    }

    void refuse(Reason reason, const char* key)
    {
        if (!problem)
            problem = DecodeError { reason, QString::fromLatin1(key) };
    }
};

// A braced list is evaluated from left to right, so the members are read in the order of the record.

template <>
AppInfo Reader::record<AppInfo>(const Json& object)
{
    return { optionalText(object, "bundleIdentifier"), text(object, "name"), boolean(object, "isActive") };
}

template <>
BrowserTab Reader::record<BrowserTab>(const Json& object)
{
    return { text(object, "browser"), text(object, "title"), text(object, "url") };
}

template <>
ActivitySnapshot Reader::record<ActivitySnapshot>(const Json& object)
{
    return { date(object, "timestamp"), number(object, "idleSeconds"), optionalRecord<AppInfo>(object, "frontmostApp"),
        list<AppInfo>(object, "runningApps"), optionalRecord<BrowserTab>(object, "activeBrowserTab") };
}

template <>
TabActivity Reader::record<TabActivity>(const Json& object)
{
    return { text(object, "url"), text(object, "title"), number(object, "focusedSeconds") };
}

template <>
AppActivity Reader::record<AppActivity>(const Json& object)
{
    return { optionalText(object, "bundleIdentifier"), text(object, "name"), number(object, "focusedSeconds"),
        optionalList<TabActivity>(object, "tabs") };
}

template <>
AggregatedActivity Reader::record<AggregatedActivity>(const Json& object)
{
    return { date(object, "periodStart"), date(object, "periodEnd"), number(object, "totalIdleSeconds"), list<AppActivity>(object, "applications") };
}

QString twoDigits(unsigned value)
{
    return QString::number(value).rightJustified(2, u'0');
}

/// The number that `digits` spell; absent if anything else stands there.
std::optional<int> digits(QStringView text)
{
    int value = 0;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
        value = value * 10 + (c.unicode() - u'0');
    }
    return value;
}

} // namespace

EncodedActivity encodeActivity(const ActivitySnapshot& record)
{
    return encoded(record);
}
EncodedActivity encodeActivity(const AppInfo& record)
{
    return encoded(record);
}
EncodedActivity encodeActivity(const BrowserTab& record)
{
    return encoded(record);
}
EncodedActivity encodeActivity(const AggregatedActivity& record)
{
    return encoded(record);
}
EncodedActivity encodeActivity(const AppActivity& record)
{
    return encoded(record);
}
EncodedActivity encodeActivity(const TabActivity& record)
{
    return encoded(record);
}

template <typename Record>
std::expected<Record, DecodeError> decodeActivity(const QByteArray& json)
{
    bool isTooDeep = false;
    const auto keep = [&isTooDeep](int depth, Json::parse_event_t, const Json&) {
        isTooDeep = isTooDeep || depth > deepestNesting;
        return !isTooDeep;
    };
    const Json object = Json::parse(json.begin(), json.end(), keep, false);
    if (isTooDeep || object.is_discarded())
        return std::unexpected(DecodeError { Reason::notJson });
    if (!object.is_object())
        return std::unexpected(DecodeError { Reason::wrongType });
    Reader reader;
    auto record = reader.record<Record>(object);
    if (reader.problem)
        return std::unexpected(*std::move(reader.problem));
    return record;
}

template std::expected<ActivitySnapshot, DecodeError> decodeActivity(const QByteArray&);
template std::expected<AppInfo, DecodeError> decodeActivity(const QByteArray&);
template std::expected<BrowserTab, DecodeError> decodeActivity(const QByteArray&);
template std::expected<AggregatedActivity, DecodeError> decodeActivity(const QByteArray&);
template std::expected<AppActivity, DecodeError> decodeActivity(const QByteArray&);
template std::expected<TabActivity, DecodeError> decodeActivity(const QByteArray&);

std::optional<QString> isoText(WallTime moment)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
    const auto day = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day date(day);
    const int year = static_cast<int>(date.year());
    if (year < 0 || year > 9999)
        return std::nullopt;
    const std::chrono::hh_mm_ss time(seconds - day);
    const auto pair = [](auto count) { return twoDigits(static_cast<unsigned>(count)); };
    return QString::number(year).rightJustified(4, u'0') + u'-' + twoDigits(static_cast<unsigned>(date.month())) + u'-'
        + twoDigits(static_cast<unsigned>(date.day())) + u'T' + pair(time.hours().count()) + u':' + pair(time.minutes().count()) + u':'
        + pair(time.seconds().count()) + u'Z';
}

std::optional<WallTime> wallTimeFromIso(QStringView text)
{
    constexpr QStringView form = u"0000-00-00T00:00:00Z";
    if (text.size() != form.size())
        return std::nullopt;
    for (qsizetype i = 0; i < form.size(); ++i) {
        if (form[i] != u'0' && text[i] != form[i])
            return std::nullopt;
    }
    std::array<int, 6> values {};
    constexpr std::array<std::pair<int, int>, 6> places { { { 0, 4 }, { 5, 2 }, { 8, 2 }, { 11, 2 }, { 14, 2 }, { 17, 2 } } };
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto value = digits(text.mid(places[i].first, places[i].second));
        if (!value)
            return std::nullopt;
        values[i] = *value;
    }
    const std::chrono::year_month_day date(std::chrono::year { values[0] }, std::chrono::month { static_cast<unsigned>(values[1]) },
        std::chrono::day { static_cast<unsigned>(values[2]) });
    // What the clock counts in has room for 292 years on either side of 1970.
    if (!date.ok() || values[0] < 1680 || values[0] > 2260 || values[3] > 23 || values[4] > 59 || values[5] > 59)
        return std::nullopt;
    return WallTime(std::chrono::sys_days(date)) + std::chrono::hours { values[3] } + std::chrono::minutes { values[4] }
    + std::chrono::seconds { values[5] };
}

} // namespace orvanta
