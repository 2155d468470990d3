#include "activity/tracker_service.h"

#include "activity/activity_api_client.h"
#include "activity/activity_json.h"
#include "support/captured_stderr.h"
#include "support/fake_activity_sources.h"
#include "support/fake_url_session.h"

#include <QTest>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A clock that passes only while the tracker sleeps, and then at once. After `sleeps` of them it stands still until
/// the tracker is stopped.
class SteppedClock final : public TrackerClock {
public:
    explicit SteppedClock(int sleeps) : m_left(sleeps) { }

    static constexpr WallTime begin { 1'700'000'000s };

    [[nodiscard]] WallTime now() override { return begin + std::chrono::duration_cast<WallTime::duration>(m_passed.load()); }

    void sleep(std::chrono::nanoseconds duration, const std::stop_token& stop) override
    {
        if (m_left > 0) {
            --m_left;
            pass(duration);
            lastSleep = duration;
            return;
        }
        isStanding = true;
        std::mutex mutex;
        std::condition_variable_any stopped;
        std::unique_lock lock(mutex);
        stopped.wait(lock, stop, [] { return false; });
        isStanding = false;
    }

    void pass(std::chrono::nanoseconds duration) { m_passed = m_passed.load() + duration; }

    std::atomic<bool> isStanding = false;
    std::atomic<std::chrono::nanoseconds> lastSleep {};

private:
    std::atomic<std::chrono::nanoseconds> m_passed {};
    int m_left; ///< of the task alone, after the start
};

/// Records what it is asked, with the second at which it is asked, and says what the test says.
class RecordingSender final : public ActivitySending {
public:
    explicit RecordingSender(SteppedClock& clock) : m_clock(clock) { }

    void queue(AggregatedActivity activity) override
    {
        log << u"queue %1"_s.arg(second());
        periods.push_back(std::move(activity));
    }

    [[nodiscard]] bool sendPending(const std::stop_token& /*stop*/) override
    {
        log << u"send %1"_s.arg(second());
        m_clock.pass(duration);
        return answer(second());
    }

    QStringList log;
    std::vector<AggregatedActivity> periods;
    std::chrono::seconds duration { 0 }; ///< of one upload
    std::function<bool(qint64)> answer = [](qint64) { return true; };

private:
    [[nodiscard]] qint64 second() { return std::chrono::floor<std::chrono::seconds>(m_clock.now() - SteppedClock::begin).count(); }

    SteppedClock& m_clock;
};

/// A tracker whose run is over when start() returns, but for its last sleep.
struct House {
    explicit House(int sleeps) : clock(sleeps), sender(std::make_shared<RecordingSender>(clock))
    {
        scene.answers = { { ScriptId::frontProcess, u"Editor"_s } };
        scene.running = { { .bundleIdentifier = u"org.editor"_s, .localizedName = u"Editor"_s } };
        scene.idle = { 0 };
    }

    [[nodiscard]] MakeActivityMonitor monitor()
    {
        return [this] {
            ++monitors;
            return std::make_unique<ActivityMonitor>(
                scene.sources(), ActivityMonitor::IdleTimeProvider(), ActivityMonitor::AgentActivityProvider(), [this] { return clock.now(); });
        };
    }

    void make(TrackerOptions options) { tracker = std::make_unique<TrackerService>(monitor(), std::move(options)); }

    void run()
    {
        tracker->start();
        QTRY_VERIFY_WITH_TIMEOUT(clock.isStanding.load(), 20'000);
    }

    ActivityScene scene;
    SteppedClock clock;
    std::shared_ptr<RecordingSender> sender;
    std::atomic<int> monitors = 0;
    std::unique_ptr<TrackerService> tracker; ///< destroyed first
};

double focused(const AggregatedActivity& activity)
{
    return activity.applications.empty() ? -1 : activity.applications.front().focusedSeconds;
}

} // namespace

class TestTrackerService : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theDefaults()
    {
        const TrackerOptions options;
        QCOMPARE(options.sampleInterval, 5.0);
        QCOMPARE(options.aggregationPeriod, 60.0);
        QCOMPARE(options.minTabSeconds, 3.0);
        QCOMPARE(options.retryInterval, 15.0);
        QVERIFY(!options.sender);
    }

    void withDefaultsAPeriodIsTwelveSamplesAndIsSentAfterAMinute()
    {
        House house(25);
        QList<bool> results;
        house.make({ .sender = house.sender, .sendResultHandler = [&](bool isSent) { results << isSent; }, .clock = house.clock });
        house.run();
        QCOMPARE(house.clock.lastSleep.load(), std::chrono::nanoseconds(5s));
        QCOMPARE(house.sender->log, (QStringList { u"queue 60"_s, u"send 60"_s, u"queue 120"_s, u"send 120"_s }));
        QCOMPARE(results, (QList { true, true }));
        const AggregatedActivity& first = house.sender->periods.at(0);
        QVERIFY(first.periodStart == SteppedClock::begin);
        QVERIFY(first.periodEnd == SteppedClock::begin + 60s);
        QCOMPARE(focused(first), 60.0);
        QCOMPARE(focused(house.sender->periods.at(1)), 60.0);
        // The sample at the start, twelve in each of two minutes, and the one at the end.
        QCOMPARE(house.scene.log.calls.count(u"processes"_s), 26);
    }

    void aSampleIsTakenBeforeThePeriodIsClosed()
    {
        House house(1);
        house.make({ .aggregationPeriod = 0, .sender = house.sender, .clock = house.clock });
        house.run();
        QCOMPARE(house.sender->log, (QStringList { u"queue 0"_s, u"send 0"_s, u"queue 5"_s, u"send 5"_s }));
        QCOMPARE(focused(house.sender->periods.at(0)), 0.0);
        QCOMPARE(focused(house.sender->periods.at(1)), 5.0);
    }

    void afterAFailureItIsTriedAgainFifteenSecondsLaterAndAtThePeriodsEnd()
    {
        House house(26);
        house.sender->answer = [](qint64 second) { return second >= 120; };
        QList<bool> results;
        house.make({ .sender = house.sender, .sendResultHandler = [&](bool isSent) { results << isSent; }, .clock = house.clock });
        house.run();
        QCOMPARE(house.sender->log,
            (QStringList { u"queue 60"_s, u"send 60"_s, u"send 75"_s, u"send 90"_s, u"send 105"_s, u"queue 120"_s, u"send 120"_s }));
        QCOMPARE(results, (QList { false, false, false, false, true }));
    }

    void theTimeOfAnAttemptIsWhenItBegan()
    {
        House house(20);
        house.sender->answer = [](qint64) { return false; };
        house.sender->duration = 10s;
        house.make({ .sender = house.sender, .clock = house.clock });
        house.run();
        // Each attempt takes ten seconds; the next begins with the first sample fifteen seconds after its beginning.
        QCOMPARE(house.sender->log.mid(0, 5), (QStringList { u"queue 60"_s, u"send 60"_s, u"send 75"_s, u"send 90"_s, u"send 105"_s }));
    }

    void aTrackerWithoutASenderHandsItsPeriodsToTheHandlerAlone()
    {
        House house(25);
        std::vector<AggregatedActivity> periods;
        int results = 0;
        house.make({ .activityHandler = [&](const AggregatedActivity& activity) { periods.push_back(activity); },
            .sendResultHandler = [&](bool) { ++results; },
            .clock = house.clock });
        house.run();
        QCOMPARE(periods.size(), 2U);
        QCOMPARE(focused(periods[0]), 60.0);
        QCOMPARE(results, 0);
    }

    void withASenderTheHandlerIsNeverCalled()
    {
        House house(13);
        int handled = 0;
        house.make({ .sender = house.sender, .activityHandler = [&](const AggregatedActivity&) { ++handled; }, .clock = house.clock });
        house.run();
        QCOMPARE(house.sender->periods.size(), 1U);
        QCOMPARE(handled, 0);
    }

    void withoutAnyHandlerItRunsToo()
    {
        House house(13);
        house.make({ .clock = house.clock });
        house.run();
        QVERIFY(house.tracker->isRunning());
    }

    void theIntervalsAreThoseThatWereGiven()
    {
        House house(10);
        house.scene.idle = { 2.5 };
        house.make({ .sampleInterval = 2, .aggregationPeriod = 6, .sender = house.sender, .clock = house.clock });
        house.run();
        QCOMPARE(house.sender->log, (QStringList { u"queue 6"_s, u"send 6"_s, u"queue 12"_s, u"send 12"_s, u"queue 18"_s, u"send 18"_s }));
        // The sample interval is the idle threshold, too.
        QCOMPARE(house.sender->periods.at(0).totalIdleSeconds, 6.0);
    }

    void aNegativeIntervalCountsAsNone()
    {
        House house(3);
        house.make({ .sampleInterval = -5, .sender = house.sender, .clock = house.clock });
        house.run();
        QCOMPARE(house.clock.lastSleep.load(), std::chrono::nanoseconds(0));
    }

    void startingTwiceRunsOneTask()
    {
        House house(3);
        house.make({ .sender = house.sender, .clock = house.clock });
        QVERIFY(!house.tracker->isRunning());
        house.tracker->start();
        house.tracker->start();
        QVERIFY(house.tracker->isRunning());
        QTRY_VERIFY_WITH_TIMEOUT(house.clock.isStanding.load(), 20'000);
        QCOMPARE(house.monitors.load(), 1);
        QCOMPARE(house.scene.log.calls.count(u"processes"_s), 4);
    }

    void stoppingEndsTheTaskAndSendsNothing()
    {
        House house(11);
        house.make({ .sender = house.sender, .clock = house.clock });
        house.run();
        house.tracker->stop();
        QVERIFY(!house.tracker->isRunning());
        QCOMPARE(house.sender->log, QStringList());
        house.tracker->stop();
        QVERIFY(!house.tracker->isRunning());
    }

    void startingAgainBeginsAPeriodFromZero()
    {
        House house(11);
        house.make({ .aggregationPeriod = 10'000, .sender = house.sender, .clock = house.clock });
        house.run();
        house.tracker->stop();
        QVERIFY(!house.clock.isStanding.load());
        house.clock.pass(1h);
        const WallTime second = house.clock.now();
        int handled = 0;
        AggregatedActivity last;
        house.make({ .aggregationPeriod = 0,
            .activityHandler =
                [&](const AggregatedActivity& activity) {
                    ++handled;
                    last = activity;
                },
            .clock = house.clock });
        house.run();
        QCOMPARE(handled, 1);
        QVERIFY(last.periodStart == second);
        QCOMPARE(focused(last), 0.0);
        QCOMPARE(house.monitors.load(), 2);
    }

    void oneTrackerCanBeStoppedAndStarted()
    {
        House house(0);
        house.make({ .clock = house.clock });
        house.run();
        house.tracker->stop();
        house.run();
        QCOMPARE(house.monitors.load(), 2);
    }

    void destroyingTheTrackerEndsARunningTask()
    {
        House house(2);
        house.make({ .clock = house.clock });
        house.run();
        house.tracker.reset();
        QVERIFY(!house.clock.isStanding.load());
    }

    void stoppingDoesNotWaitForARequestInFlight()
    {
        House house(13);
        FakeUrlSession session;
        const auto client = std::make_shared<ActivityAPIClient>(session, QUrl(u"https://service.example/api/activity"_s), u"k"_s);
        house.make({ .sender = client, .clock = house.clock });
        house.tracker->start();
        QTRY_COMPARE_WITH_TIMEOUT(session.pending(), 1U, 20'000);
        house.tracker->stop(); // nobody ever answers the request
        QVERIFY(!house.tracker->isRunning());
        QCOMPARE(session.pending(), 0U);
    }

    void theSleepOfTheRealClockEndsWhenStopped()
    {
        House house(0);
        house.make({ .sampleInterval = 1e12 });
        house.tracker->start();
        QTRY_VERIFY_WITH_TIMEOUT(house.monitors.load() == 1, 20'000);
        house.tracker->stop();
        QVERIFY(!house.tracker->isRunning());
    }

    void elevenPeriodsWithoutAServiceDropTheFirstAndGoOutAsOne()
    {
        House house(12 * 12 + 1);
        const CapturedStderr errors;
        FakeUrlSession session;
        const auto client = std::make_shared<ActivityAPIClient>(session, QUrl(u"https://service.example/api/activity"_s), u"k"_s);
        house.make({ .retryInterval = 1e9, .sender = client, .clock = house.clock });
        house.tracker->start();
        for (int period = 0; period < 12; ++period) {
            QTRY_COMPARE_WITH_TIMEOUT(session.pending(), 1U, 20'000);
            if (period < 11)
                session.fail(u"Connection refused"_s);
            else
                session.answer(200);
        }
        QTRY_VERIFY_WITH_TIMEOUT(house.clock.isStanding.load(), 20'000);
        QByteArray expected;
        for (int period = 0; period < 12; ++period) {
            if (period >= 10)
                expected += "Warning: Dropping oldest pending data due to repeated failures\n";
            if (period < 11)
                expected += "API error: Connection refused\n";
        }
        QCOMPARE(errors.text(), expected);
        const auto body = decodeActivity<AggregatedActivity>(*session.requests().back().body);
        QVERIFY(body.has_value());
        QVERIFY(body->periodStart == SteppedClock::begin + 120s);
        QVERIFY(body->periodEnd == SteppedClock::begin + 720s);
        QCOMPARE(focused(*body), 600.0);
    }
};

QTEST_GUILESS_MAIN(TestTrackerService)
#include "test_tracker_service.moc"
