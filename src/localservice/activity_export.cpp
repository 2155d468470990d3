#include "localservice/activity_export.h"

#include "localservice/json_response.h"

#include <string_view>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

QByteArray cell(const QString& text)
{
    QByteArray bytes = text.toUtf8();
    bytes.replace('"', "\"\"");
    const bool isFormula = !bytes.isEmpty() && std::string_view("=+-@\t\r").contains(bytes[0]);
    return '"' + QByteArray(isFormula ? "'" : "") + bytes + '"';
}

QByteArray number(double value)
{
    return QByteArray::number(value, 'g', 15);
}

Json tabsJson(const std::vector<UploadedTab>& tabs)
{
    Json json = Json::array();
    for (const UploadedTab& tab : tabs)
        json.push_back({ { "url", jsonText(tab.url) }, { "title", jsonText(tab.title) }, { "focusedSeconds", tab.focusedSeconds } });
    return json;
}

Json periodJson(const UploadedPeriod& period)
{
    Json applications = Json::array();
    for (const UploadedApplication& application : period.applications) {
        Json json = Json::object();
        if (application.bundleIdentifier)
            json["bundleIdentifier"] = jsonText(*application.bundleIdentifier);
        json["name"] = jsonText(application.name);
        json["focusedSeconds"] = application.focusedSeconds;
        if (!application.tabs.empty())
            json["tabs"] = tabsJson(application.tabs);
        applications.push_back(std::move(json));
    }
    return { { "periodStart", jsonText(isoFromUtcTime(period.startedAt)) }, { "periodEnd", jsonText(isoFromUtcTime(period.endedAt)) },
        { "totalIdleSeconds", period.idleSeconds }, { "applications", std::move(applications) } };
}

} // namespace

QByteArray activityCsv(const std::vector<UploadedPeriod>& periods)
{
    QByteArray csv = "periodStart,periodEnd,kind,bundleIdentifier,name,url,title,seconds\r\n";
    for (const UploadedPeriod& period : periods) {
        const QByteArray times = isoFromUtcTime(period.startedAt).toLatin1() + ',' + isoFromUtcTime(period.endedAt).toLatin1() + ',';
        csv += times + "idle,,,,," + number(period.idleSeconds) + "\r\n";
        for (const UploadedApplication& application : period.applications) {
            const QByteArray who = cell(application.bundleIdentifier.value_or(QString())) + ',' + cell(application.name) + ',';
            csv += times + "application," + who + ",," + number(application.focusedSeconds) + "\r\n";
            for (const UploadedTab& tab : application.tabs)
                csv += times + "page," + who + cell(tab.url) + ',' + cell(tab.title) + ',' + number(tab.focusedSeconds) + "\r\n";
        }
    }
    return csv;
}

QByteArray activityJson(const std::vector<UploadedPeriod>& periods)
{
    // Piece by piece: as one value a year would take ten times its text.
    QByteArray json = "[";
    for (const UploadedPeriod& period : periods)
        json += (json.size() > 1 ? ",\n" : "\n") + QByteArray::fromStdString(periodJson(period).dump());
    return json + "\n]\n";
}

} // namespace orvanta::localservice
