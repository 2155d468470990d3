#include "localservice/activity_queries.h"
#include "localservice/activity_store.h"
#include "scratch_database.h"

#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

namespace {

QByteArray body(const QByteArray& start, const QByteArray& end, const QByteArray& applications)
{
    return "{\"periodStart\":\"" + start + "\",\"periodEnd\":\"" + end + "\",\"totalIdleSeconds\":10,\"applications\":[" + applications + "]}";
}

const QByteArray browser = R"({"bundleIdentifier":"com.google.Chrome","name":"Chrome","focusedSeconds":45,
    "tabs":[{"url":"https://a.example/","title":"A","focusedSeconds":30},{"url":"about:blank","title":"New","focusedSeconds":15}]})";
const QByteArray terminal = R"({"name":"Terminal","focusedSeconds":15.5})";

TimeSpan span(const char* from, const char* until)
{
    return { at(from), at(until) };
}

const TimeSpan everything { at("2000-01-01T00:00:00Z"), at("2100-01-01T00:00:00Z") };

} // namespace

class TestActivityStore : public QObject {
    Q_OBJECT

private:
    static ActivityStore::Outcome add(ActivityStore& store, const QByteArray& json)
    {
        return store.store(readUploadedPeriod(json).value(), at("2026-01-31T12:00:00Z")).value();
    }

private Q_SLOTS:
    void answersPerApplicationPerTabAndPerPeriod()
    {
        ScratchDatabase scratch;
        ActivityStore store(scratch.database());
        add(store, body("2026-01-31T10:00:00Z", "2026-01-31T10:01:00Z", browser + "," + terminal));
        add(store, body("2026-01-31T10:01:00Z", "2026-01-31T10:02:00Z", terminal));
        add(store, body("2026-01-31T11:00:00Z", "2026-01-31T11:01:00Z", browser));

        const auto applications = store.applicationTotals(everything).value();
        QCOMPARE(applications.size(), std::size_t { 2 });
        QCOMPARE(applications[0].identity, u"com.google.Chrome"_s);
        QCOMPARE(applications[0].name, u"Chrome"_s);
        QCOMPARE(applications[0].focusedSeconds, 90.0);
        QCOMPARE(applications[1].identity, u"Terminal"_s);
        QCOMPARE(applications[1].focusedSeconds, 31.0);

        const auto pages = store.pageTotals(everything).value();
        QCOMPARE(pages.size(), std::size_t { 2 });
        QCOMPARE(pages[0].url, u"https://a.example/"_s);
        QCOMPARE(pages[0].focusedSeconds, 60.0);
        QCOMPARE(pages[1].focusedSeconds, 30.0);

        const auto periods = store.periods(span("2026-01-31T10:00:00Z", "2026-01-31T11:00:00Z")).value();
        QCOMPARE(periods.size(), std::size_t { 2 });
        QVERIFY(periods[0].startedAt == at("2026-01-31T10:00:00Z"));
        QVERIFY(periods[0].endedAt == at("2026-01-31T10:01:00Z"));
        QCOMPARE(periods[0].idleSeconds, 10.0);
        QCOMPARE(periods[0].focusedSeconds, 60.5);
        QCOMPARE(periods[1].focusedSeconds, 15.5);

        const auto terminalPeriods = store.periodsOfApplication(u"Terminal"_s, everything).value();
        QCOMPARE(terminalPeriods.size(), std::size_t { 2 });
        QCOMPARE(terminalPeriods[1].focusedSeconds, 15.5);
        QVERIFY(store.periodsOfApplication(u"Absent"_s, everything).value().empty());
    }

    void aSpanIsHalfOpen()
    {
        ScratchDatabase scratch;
        ActivityStore store(scratch.database());
        add(store, body("2026-01-31T10:00:00Z", "2026-01-31T10:01:00Z", browser));
        QCOMPARE(store.applicationTotals(span("2026-01-31T10:00:00Z", "2026-01-31T10:00:01Z")).value().size(), std::size_t { 1 });
        QVERIFY(store.applicationTotals(span("2026-01-31T09:00:00Z", "2026-01-31T10:00:00Z")).value().empty());
        QVERIFY(store.pageTotals(span("2026-01-31T10:00:01Z", "2026-01-31T11:00:00Z")).value().empty());
        QVERIFY(store.periods(span("2026-01-31T10:00:01Z", "2026-01-31T11:00:00Z")).value().empty());
    }

    void theSameUploadCountsOnce()
    {
        ScratchDatabase scratch;
        ActivityStore store(scratch.database());
        const QByteArray upload = body("2026-01-31T10:00:00Z", "2026-01-31T10:01:00Z", browser);
        QVERIFY(add(store, upload) == ActivityStore::Outcome::stored);
        QVERIFY(add(store, upload) == ActivityStore::Outcome::knownAlready);
        // Another machine's minute has the same times, but is not the same.
        QVERIFY(add(store, body("2026-01-31T10:00:00Z", "2026-01-31T10:01:00Z", terminal)) == ActivityStore::Outcome::stored);
        QCOMPARE(store.applicationTotals(everything).value().at(0).focusedSeconds, 45.0);
        QCOMPARE(store.periods(everything).value().size(), std::size_t { 2 });
    }

    void whatIsNamedTwiceIsSummed()
    {
        ScratchDatabase scratch;
        ActivityStore store(scratch.database());
        add(store, body("2026-01-31T10:00:00Z", "2026-01-31T10:01:00Z", browser + "," + browser));
        QCOMPARE(store.applicationTotals(everything).value().at(0).focusedSeconds, 90.0);
        QCOMPARE(store.pageTotals(everything).value().at(0).focusedSeconds, 60.0);
    }

    void theLatestNameAndTitleAreShown()
    {
        ScratchDatabase scratch;
        ActivityStore store(scratch.database());
        add(store, body("2026-01-31T10:00:00Z", "2026-01-31T10:01:00Z", browser));
        add(store,
            body("2026-01-31T10:01:00Z", "2026-01-31T10:02:00Z",
                QByteArray(browser).replace("\"Chrome\"", "\"Google Chrome\"").replace("\"A\"", "\"B\"")));
        QCOMPARE(store.applicationTotals(everything).value().at(0).name, u"Google Chrome"_s);
        QCOMPARE(store.pageTotals(everything).value().at(0).title, u"B"_s);
    }

    void aPeriodWithoutApplicationsOrLengthIsTaken()
    {
        ScratchDatabase scratch;
        ActivityStore store(scratch.database());
        add(store, body("2026-01-31T10:00:00Z", "2026-01-31T10:00:00Z", ""));
        add(store, body("2026-01-31T10:02:00Z", "2026-01-31T10:03:00Z", R"({"name":"X","focusedSeconds":1,"tabs":[]})"));
        const auto periods = store.periods(everything).value();
        QCOMPARE(periods.size(), std::size_t { 2 });
        QCOMPARE(periods[0].focusedSeconds, 0.0);
    }

    void refusesAndSaysWhy_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("reason");

        const QByteArray good = body("2026-01-31T10:00:00Z", "2026-01-31T10:01:00Z", browser);
        const auto with = [good](const QByteArray& from, const QByteArray& to) { return QByteArray(good).replace(from, to); };
        QTest::newRow("no start") << with("periodStart", "x") << u"periodStart must be an ISO 8601 time in UTC, such as 2025-01-31T14:05:00Z"_s;
        QTest::newRow("the end before the start") << with("10:01:00Z", "09:00:00Z") << u"periodEnd must not be before periodStart"_s;
        QTest::newRow("negative idle time") << with("\"totalIdleSeconds\":10", "\"totalIdleSeconds\":-1")
                                            << u"totalIdleSeconds must be a number of seconds, 0 or more"_s;
        QTest::newRow("idle time as a text") << with("\"totalIdleSeconds\":10", "\"totalIdleSeconds\":\"10\"")
                                             << u"totalIdleSeconds must be a number of seconds, 0 or more"_s;
        QTest::newRow("no applications") << with("\"applications\"", "\"a\"") << u"applications must be an array"_s;
        QTest::newRow("no name") << with("\"name\"", "\"n\"") << u"applications[0].name must be a text"_s;
        QTest::newRow("identifier is a number") << with("\"com.google.Chrome\"", "5") << u"applications[0].bundleIdentifier must be a text"_s;
        QTest::newRow("tab without a title") << with("\"title\":\"New\"", "\"t\":1") << u"applications[0].tabs[1].title must be a text"_s;
        QTest::newRow("tab without a time") << with("\"focusedSeconds\":30", "\"focusedSeconds\":null")
                                            << u"applications[0].tabs[0].focusedSeconds must be a number of seconds, 0 or more"_s;
    }

    void refusesAndSaysWhy()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, reason);
        const auto period = readUploadedPeriod(json);
        QVERIFY(!period.has_value());
        QCOMPARE(period.error().description, reason);
    }

    void questionsOverTimeReadIndicesByTime_data()
    {
        QTest::addColumn<QByteArray>("question");
        QTest::addColumn<QString>("step");
        const auto bytes = [](std::string_view sql) { return QByteArray(sql.data(), static_cast<qsizetype>(sql.size())); };
        QTest::newRow("applications") << bytes(activity_queries::applicationTotals)
                                      << u"SEARCH application_uses USING COVERING INDEX application_uses_by_time (started_at>? AND started_at<?)"_s;
        QTest::newRow("pages") << bytes(activity_queries::pageTotals)
                               << u"SEARCH page_uses USING COVERING INDEX page_uses_by_time (started_at>? AND started_at<?)"_s;
        QTest::newRow("periods") << bytes(activity_queries::periods)
                                 << u"SEARCH activity_periods USING INDEX activity_periods_by_time (started_at>? AND started_at<?)"_s;
        QTest::newRow("idle time") << bytes(activity_queries::idleTotal)
                                   << u"SEARCH activity_periods USING INDEX activity_periods_by_time (started_at>? AND started_at<?)"_s;
        QTest::newRow("everything uploaded") << bytes(activity_queries::usesOfPeriods)
                                             << u"SEARCH periods USING INDEX activity_periods_by_time (started_at>? AND started_at<?)"_s;
        QTest::newRow("every page uploaded") << bytes(activity_queries::pagesOfPeriods)
                                             << u"SEARCH uses USING COVERING INDEX page_uses_by_time (started_at>? AND started_at<?)"_s;
        QTest::newRow("one application")
            << bytes(activity_queries::periodsOfApplication)
            << u"SEARCH uses USING COVERING INDEX application_uses_by_application (application=? AND started_at>? AND started_at<?)"_s;
    }

    void questionsOverTimeReadIndicesByTime()
    {
        QFETCH(QByteArray, question);
        QFETCH(QString, step);
        ScratchDatabase scratch;
        QStringList plan;
        Query query(scratch.database(), "EXPLAIN QUERY PLAN " + question.toStdString());
        while (query.next())
            plan.append(query.text(3));
        QVERIFY2(plan.contains(step), qPrintable(plan.join(u'\n')));
        // Nothing but the totals, of which there is one an application or page of the span, is gone through whole.
        plan.removeIf([](const QString& line) { return !line.startsWith(u"SCAN"_s) || line.startsWith(u"SCAN (subquery"_s); });
        QVERIFY2(plan.isEmpty(), qPrintable(plan.join(u'\n')));
    }
};

QTEST_GUILESS_MAIN(TestActivityStore)
#include "test_activity_store.moc"
