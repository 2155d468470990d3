#include "localservice/activity_overview.h"

#include <QDateTime>
#include <QHash>
#include <QUrl>

#include <algorithm>
#include <functional>
#include <numeric>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

/// As many as can be told apart by their colours.
constexpr std::size_t mostLeading = 7;

UtcTime beginningOf(const QDate& day)
{
    return UtcTime(std::chrono::milliseconds(day.startOfDay().toMSecsSinceEpoch()));
}

std::optional<QDate> dateFrom(std::string_view text)
{
    const QDate date = QDate::fromString(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())), Qt::ISODate);
    // What a database of milliseconds and a picture can do with is less than what a calendar can.
    return text.size() == 10 && date.isValid() && date.year() >= 1971 && date.year() <= 2999 ? std::optional(date) : std::nullopt;
}

/// The steps of a timeline over `range`: quarters of an hour, two hours, days or weeks, so that there are about a hundred at
/// most. Days are those of the calendar, however many hours they have.
std::vector<TimelineStep> steps(const DayRange& range)
{
    std::vector<TimelineStep> result;
    const auto add = [&result](UtcTime from, UtcTime until) { result.push_back({ .span = { from, until }, .focusedSeconds = {} }); };
    if (range.days() > 7) {
        const qint64 length = range.days() > 93 ? 7 : 1;
        for (QDate day = range.first; day <= range.last; day = day.addDays(length))
            add(beginningOf(day), beginningOf(std::min(day.addDays(length), range.last.addDays(1))));
        return result;
    }
    const std::chrono::minutes length { range.days() == 1 ? 15 : 120 };
    const TimeSpan span = range.span();
    for (UtcTime from = span.from; from < span.until; from += length)
        add(from, std::min<UtcTime>(from + length, span.until));
    return result;
}

double seconds(std::chrono::milliseconds duration)
{
    return static_cast<double>(duration.count()) / 1000;
}

double overlap(const TimeSpan& step, const WorkSpan& work)
{
    const UtcTime from = std::max(step.from, work.from);
    const UtcTime until = std::min(step.until, work.until);
    return from < until ? seconds(until - from) : 0;
}

std::vector<SiteTotal> sites(const std::vector<PageTotal>& pages)
{
    QHash<QString, double> bySite;
    for (const PageTotal& page : pages)
        bySite[siteOf(page.url)] += page.focusedSeconds;
    std::vector<SiteTotal> totals;
    for (auto entry = bySite.cbegin(); entry != bySite.cend(); ++entry)
        totals.push_back({ entry.key(), entry.value() });
    std::ranges::sort(totals, [](const SiteTotal& left, const SiteTotal& right) {
        return left.focusedSeconds != right.focusedSeconds ? left.focusedSeconds > right.focusedSeconds : left.site < right.site;
    });
    return totals;
}

/// The applications of all steps together.
std::vector<ApplicationTotal> together(const std::vector<std::vector<ApplicationTotal>>& bySteps)
{
    QHash<QString, ApplicationTotal> byIdentity;
    for (const auto& step : bySteps) {
        for (const ApplicationTotal& total : step) {
            ApplicationTotal& sum = byIdentity[total.identity];
            sum.identity = total.identity;
            sum.name = total.name;
            sum.focusedSeconds += total.focusedSeconds;
        }
    }
    std::vector<ApplicationTotal> totals(byIdentity.cbegin(), byIdentity.cend());
    std::ranges::sort(totals, [](const ApplicationTotal& left, const ApplicationTotal& right) {
        return left.focusedSeconds != right.focusedSeconds ? left.focusedSeconds > right.focusedSeconds : left.identity < right.identity;
    });
    return totals;
}

void fillIn(ActivityOverview& overview, const std::vector<std::vector<ApplicationTotal>>& bySteps)
{
    overview.applications = together(bySteps);
    overview.leading = std::min(overview.applications.size(), mostLeading);
    QHash<QString, std::size_t> places;
    for (std::size_t place = 0; place < overview.leading; ++place)
        places.insert(overview.applications[place].identity, place);
    for (std::size_t i = 0; i < bySteps.size(); ++i) {
        TimelineStep& step = overview.timeline[i];
        step.focusedSeconds.resize(overview.leading);
        for (const ApplicationTotal& total : bySteps[i]) {
            const auto place = places.constFind(total.identity);
            (place == places.cend() ? step.otherSeconds : step.focusedSeconds[*place]) += total.focusedSeconds;
            overview.focusedSeconds += total.focusedSeconds;
        }
    }
}

} // namespace

TimeSpan DayRange::span() const
{
    return { beginningOf(first), beginningOf(last.addDays(1)) };
}

DayRange chosenRange(std::string_view first, std::string_view last, const QDate& today)
{
    const auto from = dateFrom(first);
    const auto until = dateFrom(last);
    DayRange range { from.value_or(until.value_or(today)), until.value_or(from.value_or(today)) };
    if (range.last < range.first)
        std::swap(range.first, range.last);
    range.first = std::max(range.first, range.last.addDays(1 - longestRange));
    return range;
}

double TimelineStep::total() const
{
    return std::accumulate(focusedSeconds.begin(), focusedSeconds.end(), otherSeconds);
}

std::expected<ActivityOverview, StoreError> activityOverview(Database& database, const DayRange& range, UtcTime now)
{
    const ActivityStore store(database);
    const TimeSpan span = range.span();
    ActivityOverview overview { .range = range, .applications = {}, .sites = {}, .pages = {}, .timeline = steps(range) };

    // Each step is a question of its own over its own part of an index: all of them together read what one question over
    // the whole would read, and need no sorting.
    std::vector<std::vector<ApplicationTotal>> bySteps;
    for (TimelineStep& step : overview.timeline) {
        auto applications = store.applicationTotals(step.span);
        if (!applications)
            return std::unexpected(applications.error());
        bySteps.push_back(*std::move(applications));
        const auto idle = store.idleTotal(step.span);
        if (!idle)
            return std::unexpected(idle.error());
        step.idleSeconds = idle->idleSeconds;
        overview.idleSeconds += idle->idleSeconds;
        overview.periods += idle->periods;
    }
    fillIn(overview, bySteps);

    auto pages = store.pageTotals(span);
    if (!pages)
        return std::unexpected(pages.error());
    overview.pages = *std::move(pages);
    overview.sites = sites(overview.pages);

    const auto work = EventStore(database).workSpans(span.from, std::min(span.until, now));
    if (!work)
        return std::unexpected(work.error());
    for (const WorkSpan& agent : *work) {
        overview.agentSeconds += seconds(agent.until - agent.from);
        for (TimelineStep& step : overview.timeline)
            step.agentSeconds += overlap(step.span, agent);
    }
    return overview;
}

QString siteOf(const QString& url)
{
    const QUrl parsed(url);
    QString host = parsed.host();
    if (host.startsWith("www."_L1))
        host.remove(0, 4);
    if (!host.isEmpty())
        return host;
    return parsed.scheme().isEmpty() ? url : parsed.scheme() + u':';
}

} // namespace orvanta::localservice
