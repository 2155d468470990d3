#pragma once

#include "activity/aggregated_activity.h"

namespace orvanta {

/// A page of several merged periods counts from this on, whatever a single period's bound is.
inline constexpr double leastMergedTabSeconds = 3.0;

/// The periods as one: from the earliest start to the latest end, with everything summed; applications are the same if their
/// bundle identifiers are, or their names where there is none. Of two names or titles the later one stays. A single
/// period is returned as it is. An empty list is a programming error and stops the process.
[[nodiscard]] AggregatedActivity mergedActivity(const std::vector<AggregatedActivity>& list);

} // namespace orvanta
