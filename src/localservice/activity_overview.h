#pragma once

#include "localservice/activity_store.h"
#include "localservice/event_store.h"

#include <QDate>

namespace orvanta::localservice {

/// Whole days of the machine's own time zone.
struct DayRange {
    QDate first;
    QDate last; ///< included

    [[nodiscard]] qint64 days() const { return first.daysTo(last) + 1; }
    [[nodiscard]] TimeSpan span() const;

    bool operator==(const DayRange&) const = default;
};

/// The longest range that is shown at once.
inline constexpr qint64 longestRange = 366;

/// The days from `first` to `last`, both as "2026-01-31". A day that is missing or no date is the other one, and `today` if both
/// are; a range in the wrong order is turned round, and one that is too long keeps its end.
[[nodiscard]] DayRange chosenRange(std::string_view first, std::string_view last, const QDate& today);

/// One step of the timeline.
struct TimelineStep {
    TimeSpan span;
    std::vector<double> focusedSeconds; ///< of each of the overview's leading applications
    double otherSeconds = 0;            ///< of all the others
    double idleSeconds = 0;
    double agentSeconds = 0;

    [[nodiscard]] double total() const;
};

struct SiteTotal {
    QString site; ///< the host without "www.", or the scheme with its colon where there is no host
    double focusedSeconds = 0;

    bool operator==(const SiteTotal&) const = default;
};

/// Where a range of days went.
struct ActivityOverview {
    DayRange range;
    std::vector<ApplicationTotal> applications; ///< most focused first
    std::size_t leading = 0;                    ///< so many of them are told apart in the timeline
    std::vector<SiteTotal> sites;               ///< most focused first
    std::vector<PageTotal> pages;               ///< most focused first
    std::vector<TimelineStep> timeline;         ///< without gaps
    qint64 periods = 0;
    double focusedSeconds = 0;
    double idleSeconds = 0;
    double agentSeconds = 0;
};

/// The overview of `range`, at the moment `now`: what lies after it has not happened.
[[nodiscard]] std::expected<ActivityOverview, StoreError> activityOverview(Database& database, const DayRange& range, UtcTime now);

/// The site that an address belongs to.
[[nodiscard]] QString siteOf(const QString& url);

} // namespace orvanta::localservice
