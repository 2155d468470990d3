#pragma once

#include "activity/activity_snapshot.h"

#include <stop_token>

namespace orvanta {

/// The time of the tracker's task, which a test may keep in its own hands. Used on the task's thread; outlives the tracker.
class TrackerClock {
public:
    virtual ~TrackerClock() = default;

    [[nodiscard]] virtual WallTime now() = 0;

    /// Returns after `duration`, at once when `stop` is requested. Does not count the time for which the machine is suspended.
    virtual void sleep(std::chrono::nanoseconds duration, const std::stop_token& stop) = 0;
};

/// The time as it is.
[[nodiscard]] TrackerClock& systemTrackerClock();

} // namespace orvanta
