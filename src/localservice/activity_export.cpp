#include "localservice/activity_export.h"

#include "localservice/json_response.h"

#include <algorithm>
#include <iostream>
#include <string_view>
#include <utility>

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

QByteArray csv(const std::vector<UploadedPeriod>& periods)
{
    QByteArray lines;
    for (const UploadedPeriod& period : periods) {
        const QByteArray times = isoFromUtcTime(period.startedAt).toLatin1() + ',' + isoFromUtcTime(period.endedAt).toLatin1() + ',';
        lines += times + "idle,,,,," + number(period.idleSeconds) + "\r\n";
        for (const UploadedApplication& application : period.applications) {
            const QByteArray who = cell(application.bundleIdentifier.value_or(QString())) + ',' + cell(application.name) + ',';
            lines += times + "application," + who + ",," + number(application.focusedSeconds) + "\r\n";
            for (const UploadedTab& tab : application.tabs)
                lines += times + "page," + who + cell(tab.url) + ',' + cell(tab.title) + ',' + number(tab.focusedSeconds) + "\r\n";
        }
    }
    return lines;
}

/// So much is read at once: a few hundred periods, of a minute each.
constexpr std::chrono::hours stride { 6 };

} // namespace

std::expected<std::unique_ptr<ActivityExport>, StoreError> ActivityExport::open(Database& database, TimeSpan span, Format format)
{
    std::unique_ptr<ActivityExport> made(new ActivityExport(database, span, format));
    auto beginning = made->read();
    if (!beginning)
        return std::unexpected(beginning.error());
    made->m_prepared = (format == Format::csv ? "periodStart,periodEnd,kind,bundleIdentifier,name,url,title,seconds\r\n" : "[") + *beginning;
    return made;
}

std::optional<QByteArray> ActivityExport::next()
{
    if (!m_prepared.isEmpty())
        return std::exchange(m_prepared, {});
    auto piece = read();
    if (!piece) {
        std::cerr << "orvanta-service: " << piece.error().description.toStdString() << '\n';
        return std::nullopt;
    }
    return *std::move(piece);
}

/// The next piece; empty when there is nothing left.
std::expected<QByteArray, StoreError> ActivityExport::read()
{
    QByteArray piece;
    while (piece.isEmpty() && m_rest.from < m_rest.until) {
        const UtcTime until = std::min(m_rest.from + stride, m_rest.until);
        const auto periods = m_store.uploaded({ m_rest.from, until });
        if (!periods)
            return std::unexpected(periods.error());
        m_rest.from = until;
        piece = text(*periods);
    }
    if (piece.isEmpty() && m_format == Format::json && !std::exchange(m_isOver, true))
        piece = "\n]\n";
    return piece;
}

QByteArray ActivityExport::text(const std::vector<UploadedPeriod>& periods)
{
    if (m_format == Format::csv)
        return csv(periods);
    QByteArray json;
    for (const UploadedPeriod& period : periods)
        json += (std::exchange(m_hasPeriods, true) ? ",\n" : "\n") + QByteArray::fromStdString(periodJson(period).dump());
    return json;
}

} // namespace orvanta::localservice
