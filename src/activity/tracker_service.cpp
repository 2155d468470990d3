#include "activity/tracker_service.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace orvanta {

namespace {

using Seconds = std::chrono::duration<double>;

class SystemTrackerClock final : public TrackerClock {
public:
    [[nodiscard]] WallTime now() override { return std::chrono::system_clock::now(); }

    void sleep(std::chrono::nanoseconds duration, const std::stop_token& stop) override
    {
        std::mutex mutex;
        std::condition_variable_any stopped;
        std::unique_lock lock(mutex);
        stopped.wait_for(lock, stop, duration, [] { return false; });
    }
};

double secondsBetween(WallTime earlier, WallTime later)
{
    return Seconds(later - earlier).count();
}

std::chrono::nanoseconds nanoseconds(double seconds)
{
    constexpr double longest = 1e9; // about thirty years; more would not fit
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Seconds(std::clamp(seconds, 0.0, longest)));
}

/// One run of the tracker. Holds copies of what the tracker was made of, and no reference to the tracker itself.
class SamplingTask {
public:
    SamplingTask(const TrackerOptions& options, ActivityMonitor& monitor)
        : m_options(options)
        , m_monitor(monitor)
        , m_aggregator(options.sampleInterval, options.minTabSeconds, [&clock = options.clock] { return clock.now(); })
        , m_periodStart(options.clock.now())
        , m_lastSendAttempt(options.clock.now())
    {
    }

    void run(const std::stop_token& stop)
    {
        while (!stop.stop_requested()) {
            const WallTime now = m_options.clock.now();
            m_aggregator.addSnapshot(m_monitor.captureSnapshot());
            const bool periodDue = secondsBetween(m_periodStart, now) >= m_options.aggregationPeriod;
            const bool retryDue = m_needsRetry && secondsBetween(m_lastSendAttempt, now) >= m_options.retryInterval;
            if (periodDue)
                closePeriod();
            if (m_options.sender && (periodDue || retryDue))
                send(stop);
            m_options.clock.sleep(nanoseconds(m_options.sampleInterval), stop);
        }
    }

private:
    void closePeriod()
    {
        AggregatedActivity activity = m_aggregator.finalize();
        if (m_options.sender)
            m_options.sender->queue(std::move(activity));
        else if (m_options.activityHandler)
            m_options.activityHandler(activity);
        m_aggregator.reset();
        m_periodStart = m_options.clock.now();
    }

    void send(const std::stop_token& stop)
    {
        m_lastSendAttempt = m_options.clock.now();
        const bool isSent = m_options.sender->sendPending(stop);
        m_needsRetry = !isSent;
        if (m_options.sendResultHandler)
            m_options.sendResultHandler(isSent);
    }

    const TrackerOptions& m_options;
    ActivityMonitor& m_monitor;
    Aggregator m_aggregator;
    WallTime m_periodStart;
    WallTime m_lastSendAttempt;
    bool m_needsRetry = false;
};

} // namespace

TrackerClock& systemTrackerClock()
{
    static SystemTrackerClock clock;
    return clock;
}

TrackerService::TrackerService(MakeActivityMonitor monitor, TrackerOptions options) : m_monitor(std::move(monitor)), m_options(std::move(options)) { }

TrackerService::~TrackerService() = default; // the task is the last member, so it has ended before the rest goes

void TrackerService::start()
{
    if (isRunning())
        return;
    m_samplingTask = std::jthread([options = m_options, makeMonitor = m_monitor](const std::stop_token& stop) {
        const std::unique_ptr<ActivityMonitor> monitor = makeMonitor();
        SamplingTask(options, *monitor).run(stop);
    });
}

void TrackerService::stop()
{
    m_samplingTask = {};
}

} // namespace orvanta
