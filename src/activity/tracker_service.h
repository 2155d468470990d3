#pragma once

#include "activity/activity_monitor.h"
#include "activity/activity_sending.h"
#include "activity/tracker_clock.h"

#include <functional>
#include <memory>
#include <thread>

namespace orvanta {

/// Makes the monitor of one run, on that run's thread.
using MakeActivityMonitor = std::function<std::unique_ptr<ActivityMonitor>()>;

/// What a tracker is made of; everything but the monitor has a default. Times are in seconds.
struct TrackerOptions {
    double sampleInterval = 5.0;     ///< pause between two samples, and the idle threshold
    double aggregationPeriod = 60.0; ///< length of one reported period
    double minTabSeconds = Aggregator::defaultMinTabSeconds;
    double retryInterval = 15.0; ///< least time between two upload attempts after a failure
    std::shared_ptr<ActivitySending> sender = {};
    std::function<void(const AggregatedActivity&)> activityHandler = {}; ///< receives each period when there is no sender
    std::function<void(bool)> sendResultHandler = {};                    ///< told the result of each upload attempt
    TrackerClock& clock = systemTrackerClock();
};

/// Runs activity tracking: one background task samples, aggregates and uploads, strictly in sequence. Owned by the app
/// model and used on its thread; the handlers are called on the task's, and must not call back into the tracker.
class TrackerService {
public:
    explicit TrackerService(MakeActivityMonitor monitor, TrackerOptions options = {});

    /// Ends a running task.
    ~TrackerService();

    TrackerService(const TrackerService&) = delete;
    TrackerService& operator=(const TrackerService&) = delete;

    /// Starts the task, unless one is there.
    void start();

    /// Ends the task and what it has gathered of its period. Does not wait for an upload under way, which is given up.
    void stop();

    [[nodiscard]] bool isRunning() const { return m_samplingTask.joinable(); }

private:
    MakeActivityMonitor m_monitor;
    TrackerOptions m_options;
    std::jthread m_samplingTask;
};

} // namespace orvanta
