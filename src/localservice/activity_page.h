#pragma once

#include "localservice/activity_overview.h"
#include "localservice/http_exchange.h"

namespace orvanta::localservice {

/// The page at "/activity": where the days went, as charts that are drawn without any script, beside tables with the same
/// numbers. `today` is for the links of the range chooser.
[[nodiscard]] Response activityPage(const ActivityOverview& overview, const QDate& today);

/// A duration for people: "45 s", "12 min 5 s", "3 h 20 min".
[[nodiscard]] QString durationText(double seconds);

} // namespace orvanta::localservice
