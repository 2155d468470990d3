#pragma once

#include <string_view>

/// The questions that ActivityStore asks over a span of time, apart from it so that a test can look at how each is answered.
namespace orvanta::localservice::activity_queries {

inline constexpr std::string_view applicationTotals
    = "SELECT identity, name, total FROM"
      " (SELECT application, sum(focused_seconds) AS total FROM application_uses WHERE started_at >= ? AND started_at < ? GROUP BY application)"
      " JOIN applications ON applications.id = application ORDER BY total DESC, identity";

inline constexpr std::string_view pageTotals
    = "SELECT url, title, total FROM"
      " (SELECT page, sum(focused_seconds) AS total FROM page_uses WHERE started_at >= ? AND started_at < ? GROUP BY page)"
      " JOIN web_pages ON web_pages.id = page ORDER BY total DESC, url";

inline constexpr std::string_view periods
    = "SELECT started_at, ended_at, idle_seconds, coalesce((SELECT sum(focused_seconds) FROM application_uses WHERE period = activity_periods.id), 0)"
      " FROM activity_periods WHERE started_at >= ? AND started_at < ? ORDER BY started_at, ended_at";

inline constexpr std::string_view periodsOfApplication
    = "SELECT uses.started_at, periods.ended_at, periods.idle_seconds, uses.focused_seconds FROM application_uses AS uses"
      " JOIN activity_periods AS periods ON periods.id = uses.period"
      " WHERE uses.application = (SELECT id FROM applications WHERE identity = ?) AND uses.started_at >= ? AND uses.started_at < ?"
      " ORDER BY uses.started_at, periods.ended_at";

inline constexpr std::string_view idleTotal
    = "SELECT count(*), coalesce(sum(idle_seconds), 0) FROM activity_periods WHERE started_at >= ? AND started_at < ?";

inline constexpr std::string_view usesOfPeriods
    = "SELECT periods.id, periods.started_at, periods.ended_at, periods.idle_seconds, uses.application, applications.bundle_identifier,"
      " applications.name, uses.focused_seconds FROM activity_periods AS periods"
      " LEFT JOIN application_uses AS uses ON uses.period = periods.id LEFT JOIN applications ON applications.id = uses.application"
      " WHERE periods.started_at >= ? AND periods.started_at < ?"
      " ORDER BY periods.started_at, periods.ended_at, periods.id, uses.focused_seconds DESC, uses.application";

inline constexpr std::string_view pagesOfPeriods
    = "SELECT uses.period, uses.application, web_pages.url, web_pages.title, uses.focused_seconds FROM page_uses AS uses"
      " JOIN web_pages ON web_pages.id = uses.page WHERE uses.started_at >= ? AND uses.started_at < ?"
      " ORDER BY uses.period, uses.application, uses.focused_seconds DESC, web_pages.url";

} // namespace orvanta::localservice::activity_queries
