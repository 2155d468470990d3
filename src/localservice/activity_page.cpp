#include "localservice/activity_page.h"

#include "localservice/page_frame.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

// The timeline's picture, in units of its own.
constexpr double width = 960;
constexpr double leftEdge = 76; ///< of the columns; the scale stands before it
constexpr double top = 8;       ///< of the highest column
constexpr double columnHeight = 200;
constexpr double idleTop = top + columnHeight + 26;
constexpr double stripHeight = 14;
constexpr double agentTop = idleTop + stripHeight + 8;
constexpr double height = agentTop + stripHeight + 4;

constexpr std::size_t mostApplications = 25; ///< rows of a table; the rest is summed
constexpr std::size_t mostSites = 25;
constexpr std::size_t mostPages = 25;

QString number(double value)
{
    return QString::number(value, 'f', 2);
}

QDateTime local(UtcTime time)
{
    return QDateTime::fromMSecsSinceEpoch(time.time_since_epoch().count());
}

QString formatted(const QDate& date, const QString& form)
{
    return QLocale::c().toString(date, form);
}

QString dayName(const QDate& day)
{
    return formatted(day, u"d MMM yyyy"_s);
}

QString rangeName(const DayRange& range, const QDate& today)
{
    if (range == DayRange { today, today })
        return u"today"_s;
    if (range.days() == 1)
        return dayName(range.first);
    return dayName(range.first) + u" to "_s + dayName(range.last);
}

QString query(const DayRange& range)
{
    return u"from="_s + range.first.toString(Qt::ISODate) + u"&amp;to="_s + range.last.toString(Qt::ISODate);
}

/// What a step of the timeline is called: its time, its day, or both.
QString stepName(const TimelineStep& step, const DayRange& range)
{
    const QDateTime from = local(step.span.from);
    const QDateTime until = local(step.span.until);
    if (range.days() == 1)
        return from.toString(u"HH:mm"_s) + u"–"_s + until.toString(u"HH:mm"_s);
    if (range.days() <= 7)
        return formatted(from.date(), u"ddd d MMM"_s) + u", "_s + from.toString(u"HH:mm"_s) + u"–"_s + until.toString(u"HH:mm"_s);
    if (step.span.until - step.span.from < std::chrono::days { 2 })
        return formatted(from.date(), u"ddd d MMM"_s);
    return formatted(from.date(), u"d MMM"_s) + u" to "_s + formatted(until.date().addDays(-1), u"d MMM"_s);
}

QString secondsCell(double seconds)
{
    return u"<td class=\"time\" data-seconds=\"%1\">%2</td>"_s.arg(QString::number(seconds, 'g', 15), durationText(seconds));
}

QString share(double part, double whole)
{
    return whole > 0 ? u"%1 %"_s.arg(QString::number(100 * part / whole, 'f', 1)) : u"–"_s;
}

// The range chooser

QString rangeLink(const QString& name, const DayRange& target, const DayRange& shown)
{
    const QString current = target == shown ? u" aria-current=\"page\""_s : QString();
    return u"<a href=\"/activity?"_s + query(target) + u"\""_s + current + u">"_s + name + u"</a>\n"_s;
}

QString chooser(const DayRange& shown, const QDate& today)
{
    const auto latest = [&today](qint64 days) { return DayRange { today.addDays(1 - days), today }; };
    const QDate yesterday = today.addDays(-1);
    const qint64 days = shown.days();
    const auto field = [](const QString& label, const QString& name, const QDate& day) {
        return u"<label>%1 <input type=\"date\" name=\"%2\" value=\"%3\"></label>\n"_s.arg(label, name, day.toString(Qt::ISODate));
    };
    return u"<section class=\"chooser\">\n<nav aria-label=\"Range\">\n"_s + rangeLink(u"Today"_s, latest(1), shown)
        + rangeLink(u"Yesterday"_s, { yesterday, yesterday }, shown) + rangeLink(u"7 days"_s, latest(7), shown)
        + rangeLink(u"30 days"_s, latest(30), shown) + rangeLink(u"A year"_s, latest(365), shown) + u"<a rel=\"prev\" href=\"/activity?"_s
        + query({ shown.first.addDays(-days), shown.last.addDays(-days) }) + u"\">Earlier</a>\n"_s + u"<a rel=\"next\" href=\"/activity?"_s
        + query({ shown.first.addDays(days), shown.last.addDays(days) }) + u"\">Later</a>\n</nav>\n"_s
        + u"<form method=\"get\" action=\"/activity\">\n"_s + field(u"From"_s, u"from"_s, shown.first) + field(u"to"_s, u"to"_s, shown.last)
        + u"<button class=\"plain\">Show</button>\n</form>\n</section>\n"_s;
}

// The totals

QString figure(const QString& name, const QString& identifier, double seconds)
{
    return u"<div><dt>%1</dt><dd id=\"%2\" data-seconds=\"%3\">%4</dd></div>\n"_s.arg(
        name, identifier, QString::number(seconds, 'g', 15), durationText(seconds));
}

QString summary(const ActivityOverview& overview)
{
    return u"<section>\n<h2>Altogether</h2>\n<dl class=\"figures\">\n"_s + figure(u"In front"_s, u"focused"_s, overview.focusedSeconds)
        + figure(u"Idle"_s, u"idle"_s, overview.idleSeconds) + figure(u"An agent worked"_s, u"agent"_s, overview.agentSeconds)
        + u"</dl>\n<p class=\"caption\">Idle time is part of the time in front: an application stays in front while nobody is there. "
          "Agent time comes from the agents' hooks.</p>\n</section>\n"_s;
}

// The timeline

double columnSpace(const ActivityOverview& overview)
{
    return (width - leftEdge) / static_cast<double>(overview.timeline.size());
}

QString rectangle(const QString& kind, double x, double y, double w, double h)
{
    return u"<rect class=\"%1\" x=\"%2\" y=\"%3\" width=\"%4\" height=\"%5\"/>"_s.arg(kind, number(x), number(y), number(w), number(h));
}

QString colour(std::size_t place)
{
    return u"c%1"_s.arg(place);
}

QString column(const TimelineStep& step, const ActivityOverview& overview, double x, double fullScale)
{
    const double space = columnSpace(overview);
    const double w = std::max(space - 1, space * 0.8);
    QString parts;
    double y = top + columnHeight;
    const auto add = [&](const QString& kind, double seconds) {
        const double h = std::clamp(seconds / fullScale, 0.0, 1.0) * columnHeight;
        if (h <= 0)
            return;
        y -= h;
        parts += rectangle(kind, x, y, w, h);
    };
    for (std::size_t place = 0; place < step.focusedSeconds.size(); ++place)
        add(colour(place), step.focusedSeconds[place]);
    add(u"other"_s, step.otherSeconds);
    const auto strip = [&](const QString& kind, double seconds, double stripTop) {
        const double h = std::clamp(seconds / fullScale, 0.0, 1.0) * stripHeight;
        if (h > 0)
            parts += rectangle(kind, x, stripTop + stripHeight - h, w, h);
    };
    strip(u"idle"_s, step.idleSeconds, idleTop);
    strip(u"agent"_s, step.agentSeconds, agentTop);
    if (parts.isEmpty())
        return {};

    QString tip = stepName(step, overview.range);
    for (std::size_t place = 0; place < step.focusedSeconds.size(); ++place) {
        if (step.focusedSeconds[place] > 0)
            tip += u"\n"_s + overview.applications[place].name + u": "_s + durationText(step.focusedSeconds[place]);
    }
    if (step.otherSeconds > 0)
        tip += u"\nOthers: "_s + durationText(step.otherSeconds);
    if (step.idleSeconds > 0)
        tip += u"\nIdle: "_s + durationText(step.idleSeconds);
    if (step.agentSeconds > 0)
        tip += u"\nAgent: "_s + durationText(step.agentSeconds);
    return u"<g><title>"_s + escaped(tip) + u"</title>"_s + parts + u"</g>\n"_s;
}

/// What a full column stands for: as much as a step has, unless nothing comes near it.
double fullScale(const ActivityOverview& overview)
{
    double most = 1;
    for (const TimelineStep& step : overview.timeline)
        most = std::max({ most, step.total(), step.idleSeconds, step.agentSeconds });
    constexpr double steps[] = { 60, 300, 900, 1800, 3600, 7200, 14400, 28800, 43200, 86400, 172800, 345600, 604800 };
    const auto* const found = std::ranges::lower_bound(steps, most);
    return found == std::end(steps) ? most : *found;
}

QString tickName(const TimelineStep& step, const DayRange& range)
{
    const QDateTime from = local(step.span.from);
    return range.days() == 1 ? from.toString(u"HH:mm"_s) : formatted(from.date(), range.days() <= 7 ? u"ddd d"_s : u"d MMM"_s);
}

QString axis(const ActivityOverview& overview, double scale)
{
    QString parts;
    for (const int part : { 0, 1, 2 }) {
        const double y = top + columnHeight * (2 - part) / 2;
        parts += u"<line class=\"grid\" x1=\"%1\" x2=\"%2\" y1=\"%3\" y2=\"%3\"/>"_s.arg(number(leftEdge), number(width), number(y));
        if (part > 0)
            parts += u"<text x=\"%1\" y=\"%2\" text-anchor=\"end\">%3</text>"_s.arg(
                number(leftEdge - 6), number(y + 4), durationText(scale * part / 2));
    }
    const std::size_t every = std::max<std::size_t>(1, (overview.timeline.size() + 7) / 8);
    for (std::size_t i = 0; i < overview.timeline.size(); i += every)
        parts += u"<text x=\"%1\" y=\"%2\">%3</text>"_s.arg(number(leftEdge + columnSpace(overview) * static_cast<double>(i)),
            number(top + columnHeight + 16), tickName(overview.timeline[i], overview.range));
    for (const auto& [name, y] : { std::pair(u"Idle"_s, idleTop), std::pair(u"Agent"_s, agentTop) })
        parts += u"<text x=\"%1\" y=\"%2\" text-anchor=\"end\">%3</text>"_s.arg(number(leftEdge - 6), number(y + stripHeight - 3), name);
    return parts + u"\n"_s;
}

QString legend(const ActivityOverview& overview)
{
    QString entries;
    for (std::size_t place = 0; place < overview.leading; ++place)
        entries
            += u"<li><svg class=\"key\" viewBox=\"0 0 10 10\" aria-hidden=\"true\"><rect class=\"%1\" width=\"10\" height=\"10\" rx=\"2\"/></svg>%2</li>\n"_s
                   .arg(colour(place), escaped(overview.applications[place].name));
    if (overview.applications.size() > overview.leading)
        entries
            += u"<li><svg class=\"key\" viewBox=\"0 0 10 10\" aria-hidden=\"true\"><rect class=\"other\" width=\"10\" height=\"10\" rx=\"2\"/></svg>Others</li>\n"_s;
    return entries.isEmpty() ? QString() : u"<ul class=\"legend\">\n"_s + entries + u"</ul>\n"_s;
}

/// The same numbers for those who do not see the picture.
QString timelineTable(const ActivityOverview& overview)
{
    QString head = u"<tr><th scope=\"col\">Time</th>"_s;
    for (std::size_t place = 0; place < overview.leading; ++place)
        head += u"<th scope=\"col\">"_s + escaped(overview.applications[place].name) + u"</th>"_s;
    head += u"<th scope=\"col\">Others</th><th scope=\"col\">Idle</th><th scope=\"col\">Agent</th></tr>\n"_s;
    QString rows;
    for (const TimelineStep& step : overview.timeline) {
        if (step.total() <= 0 && step.idleSeconds <= 0 && step.agentSeconds <= 0)
            continue;
        rows += u"<tr><th scope=\"row\">"_s + stepName(step, overview.range) + u"</th>"_s;
        for (const double seconds : step.focusedSeconds)
            rows += secondsCell(seconds);
        rows += secondsCell(step.otherSeconds) + secondsCell(step.idleSeconds) + secondsCell(step.agentSeconds) + u"</tr>\n"_s;
    }
    return u"<details>\n<summary>The timeline in numbers</summary>\n<div class=\"wide\"><table id=\"timeline-table\">\n<thead>"_s + head
        + u"</thead>\n<tbody>\n"_s + rows + u"</tbody>\n</table></div>\n</details>\n"_s;
}

QString timeline(const ActivityOverview& overview)
{
    const double scale = fullScale(overview);
    QString columns;
    double x = leftEdge;
    for (const TimelineStep& step : overview.timeline) {
        columns += column(step, overview, x, scale);
        x += columnSpace(overview);
    }
    return u"<section>\n<h2 id=\"timeline-title\">Timeline</h2>\n<svg id=\"timeline\" class=\"chart\" viewBox=\"0 0 %1 %2\" role=\"img\" "
           "aria-labelledby=\"timeline-title\" aria-describedby=\"timeline-note\">\n"_s.arg(number(width), number(height))
        + axis(overview, scale) + columns + u"</svg>\n<p class=\"unseen\" id=\"timeline-note\">The numbers are in the table below.</p>\n"_s
        + legend(overview) + timelineTable(overview) + u"</section>\n"_s;
}

// The tables

struct Row {
    QString name;    ///< markup
    QString tooltip; ///< plain text
    QString colour;
    double seconds;
};

QString totalsTable(const QString& identifier, const QString& heading, const QString& what, const std::vector<Row>& rows, double whole)
{
    if (rows.empty())
        return u"<section>\n<h2>%1</h2>\n<p class=\"caption\">Nothing was recorded.</p>\n</section>\n"_s.arg(heading);
    double most = 0;
    for (const Row& row : rows)
        most = std::max(most, row.seconds);
    QString body;
    for (const Row& row : rows) {
        const double length = most > 0 ? std::clamp(100 * row.seconds / most, 0.0, 100.0) : 0;
        body += u"<tr><th scope=\"row\" dir=\"auto\" title=\""_s + escaped(row.tooltip) + u"\">"_s + row.name
            + u"</th><td class=\"bar\"><svg viewBox=\"0 0 100 10\" preserveAspectRatio=\"none\" aria-hidden=\"true\"><rect class=\""_s + row.colour
            + u"\" width=\""_s + number(length) + u"\" height=\"10\"/></svg></td>"_s + secondsCell(row.seconds) + u"<td class=\"share\">"_s
            + share(row.seconds, whole) + u"</td></tr>\n"_s;
    }
    return u"<section>\n<h2>"_s + heading + u"</h2>\n<table class=\"totals\" id=\""_s + identifier
        + u"\">\n<colgroup><col class=\"name\"><col><col class=\"time\"><col class=\"share\"></colgroup>\n<thead class=\"unseen\"><tr><th scope=\"col\">"_s
        + what + u"</th><td></td><th scope=\"col\">Time</th><th scope=\"col\">Share</th></tr></thead>\n<tbody>\n"_s + body
        + u"</tbody>\n</table>\n</section>\n"_s;
}

/// The rows of the first `most` totals, and one for the rest of them.
template <typename Total, typename MakeRow>
std::vector<Row> rowsOf(const std::vector<Total>& totals, std::size_t most, MakeRow makeRow)
{
    std::vector<Row> rows;
    double rest = 0;
    for (std::size_t place = 0; place < totals.size(); ++place) {
        if (place < most)
            rows.push_back(makeRow(totals[place], place));
        else
            rest += totals[place].focusedSeconds;
    }
    if (totals.size() > most)
        rows.push_back({ u"%1 others"_s.arg(totals.size() - most), QString(), u"other"_s, rest });
    return rows;
}

double pageSeconds(const ActivityOverview& overview)
{
    double sum = 0;
    for (const SiteTotal& site : overview.sites)
        sum += site.focusedSeconds;
    return sum;
}

QString tables(const ActivityOverview& overview)
{
    const auto applications = rowsOf(overview.applications, mostApplications, [&overview](const ApplicationTotal& total, std::size_t place) {
        return Row { escaped(total.name), total.identity, place < overview.leading ? colour(place) : u"other"_s, total.focusedSeconds };
    });
    const auto sites = rowsOf(overview.sites, mostSites,
        [](const SiteTotal& total, std::size_t) { return Row { escaped(total.site), total.site, u"site"_s, total.focusedSeconds }; });
    const auto pages = rowsOf(overview.pages, mostPages, [](const PageTotal& total, std::size_t) {
        const QString title = total.title.isEmpty() ? total.url : total.title;
        return Row { escaped(title) + u"<span class=\"caption\">"_s + escaped(total.url) + u"</span>"_s, total.url, u"site"_s, total.focusedSeconds };
    });
    const double onPages = pageSeconds(overview);
    return totalsTable(u"applications"_s, u"Applications"_s, u"Application"_s, applications, overview.focusedSeconds)
        + totalsTable(u"sites"_s, u"Sites"_s, u"Site"_s, sites, onPages) + totalsTable(u"pages"_s, u"Pages"_s, u"Page"_s, pages, onPages);
}

} // namespace

Response activityPage(const ActivityOverview& overview, const QDate& today)
{
    const QString name = rangeName(overview.range, today);
    const QString exports = query(overview.range);
    const QString empty = overview.periods == 0
        ? u"<section>\n<p>Nothing was recorded in this range. The application uploads a period every minute while it runs with an API key.</p>\n</section>\n"_s
        : QString();
    const QString main = u"<header>\n<h1>Where "_s + (overview.range.days() == 1 ? u"the day"_s : u"the days"_s)
        + u" went</h1>\n<p class=\"state\">"_s + name + u"</p>\n</header>\n"_s + chooser(overview.range, today) + empty + summary(overview)
        + timeline(overview) + tables(overview) + u"<footer class=\"caption\"><p>Take it with you: <a href=\"/activity.csv?"_s + exports
        + u"\">CSV</a> · <a href=\"/activity.json?"_s + exports + u"\">JSON</a></p>\n<p><a href=\"/\">Back to your tasks</a></p></footer>\n"_s;
    return framedPage(200, u"Activity, "_s + name + u" – Orvanta"_s, pageAsset(u"home.css"_s) + pageAsset(u"activity.css"_s), main);
}

QString durationText(double seconds)
{
    const auto whole = static_cast<qint64>(std::llround(seconds));
    if (whole < 60)
        return u"%1 s"_s.arg(whole);
    if (whole < 3600)
        return whole % 60 == 0 ? u"%1 min"_s.arg(whole / 60) : u"%1 min %2 s"_s.arg(whole / 60).arg(whole % 60);
    return whole % 3600 < 60 ? u"%1 h"_s.arg(whole / 3600) : u"%1 h %2 min"_s.arg(whole / 3600).arg(whole % 3600 / 60);
}

} // namespace orvanta::localservice
