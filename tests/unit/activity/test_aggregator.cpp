#include "activity/aggregator.h"

#include <QTest>

#include <malloc.h>

using namespace orvanta;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const AppInfo safari { u"com.apple.Safari"_s, u"Safari"_s, true };
const AppInfo terminal { u"com.apple.Terminal"_s, u"Terminal"_s, true };

/// An aggregator whose period began at second 0 of a clock in the test's hands.
struct Period {
    explicit Period(double sampleInterval = 5, double minTabSeconds = 3) : aggregator(sampleInterval, minTabSeconds, [this] { return now; }) { }

    WallTime at(double seconds) const { return begin + std::chrono::duration_cast<WallTime::duration>(std::chrono::duration<double>(seconds)); }

    void add(double second, std::optional<AppInfo> app, double idleSeconds = 0, std::optional<BrowserTab> tab = {})
    {
        aggregator.addSnapshot({ .timestamp = at(second),
            .idleSeconds = idleSeconds,
            .frontmostApp = std::move(app),
            .runningApps = {},
            .activeBrowserTab = std::move(tab) });
    }

    /// Seconds in front, by name.
    QMap<QString, double> seconds() const
    {
        QMap<QString, double> result;
        for (const auto& application : aggregator.finalize().applications)
            result.insert(application.name, application.focusedSeconds);
        return result;
    }

    const WallTime begin { 1'700'000'000s };
    WallTime now = begin;
    Aggregator aggregator;
};

BrowserTab page(const QString& url, const QString& title = u"Title"_s)
{
    return { u"Safari"_s, title, url };
}

} // namespace

class TestAggregator : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theTimeIsChargedToWhatIsSeenAtItsEnd()
    {
        Period period;
        period.now = period.at(100);
        period.aggregator.reset();
        const WallTime begin = period.now;
        for (const auto& [second, app] : { std::pair(100.0, safari), std::pair(105.0, terminal), std::pair(110.0, terminal) })
            period.add(second, app);
        period.now = period.at(111);
        const AggregatedActivity activity = period.aggregator.finalize();
        QVERIFY(activity.periodStart == begin);
        QVERIFY(activity.periodEnd == period.now);
        QCOMPARE(activity.applications.size(), 2U);
        QCOMPARE(activity.applications[0], (AppActivity { terminal.bundleIdentifier, terminal.name, 10, std::nullopt }));
        QCOMPARE(activity.applications[1], (AppActivity { safari.bundleIdentifier, safari.name, 0, std::nullopt }));
        QCOMPARE(activity.totalIdleSeconds, 0.0);
    }

    void anEmptyPeriodHasNoApplications()
    {
        const Period period;
        const AggregatedActivity activity = period.aggregator.finalize();
        QVERIFY(activity.applications.empty());
        QVERIFY(activity.periodStart == period.begin);
        QCOMPARE(activity.totalIdleSeconds, 0.0);
    }

    void aPageCountsFromTheLeastSecondsOn()
    {
        Period period(5, 3);
        period.add(2.9, safari, 0, page(u"short"_s));
        period.add(5.9, safari, 0, page(u"just"_s));
        period.add(10.9, safari, 0, page(u"long"_s));
        const auto activity = period.aggregator.finalize();
        QVERIFY(activity.applications[0].tabs.has_value());
        QStringList urls;
        for (const TabActivity& tab : *activity.applications[0].tabs)
            urls << tab.url;
        QCOMPARE(urls, (QStringList { u"long"_s, u"just"_s }));
    }

    void anApplicationWhosePagesAreAllTooShortHasNoPages()
    {
        Period period(5, 3);
        period.add(2.9, safari, 0, page(u"short"_s));
        QVERIFY(!period.aggregator.finalize().applications[0].tabs.has_value());
    }

    void theLeastSecondsOfAPageAreThreeUnlessGiven()
    {
        Aggregator aggregator(5);
        const WallTime now = std::chrono::system_clock::now();
        aggregator.addSnapshot({ .timestamp = now, .idleSeconds = 0, .frontmostApp = terminal, .runningApps = {}, .activeBrowserTab = {} });
        aggregator.addSnapshot(
            { .timestamp = now + 2900ms, .idleSeconds = 0, .frontmostApp = safari, .runningApps = {}, .activeBrowserTab = page(u"a"_s) });
        aggregator.addSnapshot(
            { .timestamp = now + 5900ms, .idleSeconds = 0, .frontmostApp = safari, .runningApps = {}, .activeBrowserTab = page(u"b"_s) });
        const auto tabs = aggregator.finalize().applications[0].tabs;
        QVERIFY(tabs.has_value());
        QCOMPARE(tabs->size(), 1U);
        QCOMPARE(tabs->front().url, u"b"_s);
    }

    void theSecondsOfAPageAreSummedAndItsLatestTitleStays()
    {
        Period period;
        period.add(5, safari, 0, page(u"http://a.example/"_s, u"Loading"_s));
        period.add(10, safari, 0, page(u"http://a.example/#x"_s, u"Elsewhere"_s));
        period.add(15, safari, 0, page(u"http://a.example/"_s, u"Ready"_s));
        const auto tabs = period.aggregator.finalize().applications[0].tabs;
        QVERIFY(tabs.has_value());
        QCOMPARE(tabs->size(), 2U);
        QCOMPARE(tabs->at(0), (TabActivity { u"http://a.example/"_s, u"Ready"_s, 10 }));
        QCOMPARE(tabs->at(1), (TabActivity { u"http://a.example/#x"_s, u"Elsewhere"_s, 5 }));
    }

    void onlyMoreThanTheSampleIntervalWithoutInputIsIdle()
    {
        Period period(5);
        period.add(5, safari, 5);
        QCOMPARE(period.aggregator.finalize().totalIdleSeconds, 0.0);
        period.add(10, safari, 5.000001);
        QCOMPARE(period.aggregator.finalize().totalIdleSeconds, 5.0);
        QCOMPARE(period.seconds(), (QMap<QString, double> { { u"Safari"_s, 10 } }));
    }

    void withoutAFrontApplicationOnlyIdleTimeCountsAndTheClockMovesOn()
    {
        Period period(5);
        period.add(5, std::nullopt, 60, page(u"http://a.example/"_s));
        period.add(8, safari);
        const auto activity = period.aggregator.finalize();
        QCOMPARE(activity.totalIdleSeconds, 5.0);
        QCOMPARE(period.seconds(), (QMap<QString, double> { { u"Safari"_s, 3 } }));
        QVERIFY(!activity.applications[0].tabs.has_value());
    }

    void aPageUnderTwoApplicationsCountsForEach()
    {
        Period period;
        const AppInfo chrome { u"com.google.Chrome"_s, u"Google Chrome"_s, true };
        period.add(5, safari, 0, page(u"http://a.example/"_s, u"In Safari"_s));
        period.add(12, chrome, 0, page(u"http://a.example/"_s, u"In Chrome"_s));
        const auto activity = period.aggregator.finalize();
        QCOMPARE(activity.applications[0].tabs->front(), (TabActivity { u"http://a.example/"_s, u"In Chrome"_s, 7 }));
        QCOMPARE(activity.applications[1].tabs->front(), (TabActivity { u"http://a.example/"_s, u"In Safari"_s, 5 }));
    }

    void applicationsWithoutIdentifierAreOneIfTheirNamesAre()
    {
        Period period;
        period.add(5, AppInfo { std::nullopt, u"tool"_s, true });
        period.add(10, AppInfo { std::nullopt, u"tool"_s, true });
        period.add(15, AppInfo { std::nullopt, u"other"_s, true });
        QCOMPARE(period.seconds(), (QMap<QString, double> { { u"tool"_s, 10 }, { u"other"_s, 5 } }));
    }

    void theLatestNameOfAnIdentifierStays()
    {
        Period period;
        period.add(5, AppInfo { u"a.b"_s, u"Old"_s, true });
        period.add(10, AppInfo { u"a.b"_s, u"New"_s, true });
        QCOMPARE(period.seconds(), (QMap<QString, double> { { u"New"_s, 10 } }));
    }

    void aLongGapAndAClockPutBackCountAsTheyAre()
    {
        Period period;
        period.add(36000, safari);
        QCOMPARE(period.seconds(), (QMap<QString, double> { { u"Safari"_s, 36000 } }));
        period.add(35990, safari);
        QCOMPARE(period.seconds(), (QMap<QString, double> { { u"Safari"_s, 35990 } }));
    }

    void finalizingChangesNothing()
    {
        Period period;
        period.add(5, safari, 9, page(u"u"_s));
        const auto first = period.aggregator.finalize();
        QVERIFY(period.aggregator.finalize() == first);
    }

    void aResetForgetsEverythingButTheBounds()
    {
        Period period(5, 3);
        period.add(10, safari, 60, page(u"u"_s));
        period.now = period.at(20);
        period.aggregator.reset();
        const auto activity = period.aggregator.finalize();
        QVERIFY(activity.applications.empty());
        QCOMPARE(activity.totalIdleSeconds, 0.0);
        QVERIFY(activity.periodStart == period.at(20));
        period.add(22.9, safari, 5, page(u"u"_s));
        const auto next = period.aggregator.finalize();
        QCOMPARE(next.totalIdleSeconds, 0.0);
        QVERIFY(!next.applications[0].tabs.has_value());
    }

    void aMillionSnapshotsTakeNoMoreRoomThanWhatTheyShow()
    {
        Period period;
        const auto addMany = [&period](int count, int from) {
            for (int i = from; i < from + count; ++i)
                period.add(i, i % 2 == 0 ? safari : terminal, 0, page(u"http://%1.example/"_s.arg(i % 10)));
        };
        addMany(1000, 1);
        const auto before = mallinfo2().uordblks;
        addMany(1'000'000, 1001);
        QVERIFY(mallinfo2().uordblks < before + 100'000);
        const auto activity = period.aggregator.finalize();
        QCOMPARE(activity.applications.size(), 2U);
        QCOMPARE(activity.applications[0].focusedSeconds + activity.applications[1].focusedSeconds, 1'001'000.0);
        QCOMPARE(activity.applications[0].tabs->size(), 5U);
    }
};

QTEST_GUILESS_MAIN(TestAggregator)
#include "test_aggregator.moc"
