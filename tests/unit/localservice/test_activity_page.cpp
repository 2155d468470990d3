#include "localservice/activity_export.h"
#include "localservice/activity_page.h"
#include "served.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTest>
#include <QTimeZone>

#include <nlohmann/json.hpp>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

namespace {

const QDate day(2026, 3, 10);

/// A moment of a day of the machine's own time zone.
UtcTime on(const QDate& date, int hour, int minute = 0)
{
    return UtcTime(std::chrono::milliseconds(QDateTime(date, QTime(hour, minute)).toMSecsSinceEpoch()));
}

UploadedPeriod period(UtcTime start, double idle, std::vector<UploadedApplication> applications)
{
    UploadedPeriod result {
        .startedAt = start, .endedAt = start + std::chrono::minutes { 1 }, .idleSeconds = idle, .applications = std::move(applications)
    };
    result.digest = QByteArray::number(start.time_since_epoch().count());
    return result;
}

UploadedApplication editor(double seconds)
{
    return { u"org.example.Editor"_s, u"Editor <b>"_s, seconds, {} };
}

UploadedApplication browser(double seconds, const QString& url, const QString& title = u"A & B"_s)
{
    return { u"org.mozilla.firefox"_s, u"Firefox"_s, seconds, { { url, title, seconds } } };
}

void add(Database& database, const UploadedPeriod& uploaded)
{
    if (!ActivityStore(database).store(uploaded, uploaded.endedAt))
        qFatal("not stored");
}

void addEvent(Database& database, const QString& session, const QString& type, UtcTime moment)
{
    static int number = 0;
    AgentEvent event;
    event.eventId = QString::number(++number);
    event.eventType = type;
    event.sessionId = session;
    event.occurredAt = moment;
    if (!EventStore(database).store(event, moment))
        qFatal("not stored");
}

ActivityOverview overview(Database& database, const DayRange& range)
{
    return activityOverview(database, range, on(QDate(2100, 1, 1), 0)).value();
}

} // namespace

class TestActivityPage : public QObject {
    Q_OBJECT

private:
    static QByteArray page(const Served& served, const QByteArray& query)
    {
        const auto reply = exchange(served.port(), "GET", "/activity" + query, { "Host: 127.0.0.1:" + QByteArray::number(served.port()) });
        return reply->status == 200 ? reply->body : QByteArray();
    }

private Q_SLOTS:
    // The range

    void aRangeIsReadFromItsTwoDays()
    {
        const QDate today(2026, 3, 15);
        const auto range = [&today](std::string_view from, std::string_view to) { return chosenRange(from, to, today); };
        QCOMPARE(range("2026-03-01", "2026-03-04"), (DayRange { QDate(2026, 3, 1), QDate(2026, 3, 4) }));
        QCOMPARE(range("2026-03-04", "2026-03-01"), (DayRange { QDate(2026, 3, 1), QDate(2026, 3, 4) }));
        QCOMPARE(range("2026-03-01", ""), (DayRange { QDate(2026, 3, 1), QDate(2026, 3, 1) }));
        QCOMPARE(range("", "2026-03-01"), (DayRange { QDate(2026, 3, 1), QDate(2026, 3, 1) }));
        QCOMPARE(range("", ""), (DayRange { today, today }));
        QCOMPARE(range("yesterday", "2026-02-30"), (DayRange { today, today }));
        QCOMPARE(range("0001-01-01", "9999-01-01"), (DayRange { today, today }));
        QCOMPARE(range("2020-01-01", "2026-03-01").days(), longestRange);
        QCOMPARE(range("2020-01-01", "2026-03-01").last, QDate(2026, 3, 1));
    }

    void theTimelineCoversItsRangeWithoutGaps_data()
    {
        QTest::addColumn<int>("days");
        for (const int days : { 1, 2, 7, 8, 30, 93, 94, 366 })
            QTest::addRow("%d", days) << days;
    }

    void theTimelineCoversItsRangeWithoutGaps()
    {
        QFETCH(const int, days);
        ScratchDatabase scratch;
        const DayRange range { day, day.addDays(days - 1) };
        const auto timeline = overview(scratch.database(), range).timeline;
        QVERIFY(!timeline.empty());
        QVERIFY(timeline.size() <= 102);
        QVERIFY(timeline.front().span.from == range.span().from);
        QVERIFY(timeline.back().span.until == range.span().until);
        for (std::size_t i = 1; i < timeline.size(); ++i)
            QVERIFY(timeline[i].span.from == timeline[i - 1].span.until);
    }

    // The numbers

    void whatWasUploadedIsSummedByApplicationSiteAndStep()
    {
        ScratchDatabase scratch;
        add(scratch.database(), period(on(day, 9), 10, { editor(40), browser(20, u"https://www.a.example/x"_s) }));
        add(scratch.database(), period(on(day, 9, 1), 0, { browser(60, u"https://a.example/y"_s) }));
        add(scratch.database(), period(on(day, 23, 59), 5, { browser(60, u"about:blank"_s) }));
        add(scratch.database(), period(on(day.addDays(1), 0), 60, { editor(60) })); // the next day
        const ActivityOverview shown = overview(scratch.database(), { day, day });
        QCOMPARE(shown.periods, 3);
        QCOMPARE(shown.focusedSeconds, 180.0);
        QCOMPARE(shown.idleSeconds, 15.0);
        QCOMPARE(shown.applications.size(), 2U);
        QCOMPARE(shown.applications[0].name, u"Firefox"_s);
        QCOMPARE(shown.applications[0].focusedSeconds, 140.0);
        QCOMPARE(shown.applications[1].focusedSeconds, 40.0);
        QCOMPARE(shown.sites, (std::vector<SiteTotal> { { u"a.example"_s, 80 }, { u"about:"_s, 60 } }));
        QCOMPARE(shown.timeline.at(36).focusedSeconds, (std::vector<double> { 80, 40 })); // nine o'clock
        QCOMPARE(shown.timeline.at(36).idleSeconds, 10.0);
        QCOMPARE(shown.timeline.back().focusedSeconds, (std::vector<double> { 60, 0 }));
    }

    void applicationsBeyondTheLeadingOnesAreTogether()
    {
        ScratchDatabase scratch;
        std::vector<UploadedApplication> many;
        for (int i = 0; i < 12; ++i)
            many.push_back({ std::nullopt, u"tool %1"_s.arg(i), 12.0 - i, {} });
        add(scratch.database(), period(on(day, 9), 0, many));
        const ActivityOverview shown = overview(scratch.database(), { day, day });
        QCOMPARE(shown.leading, 7U);
        QCOMPARE(shown.timeline.at(36).focusedSeconds.front(), 12.0);
        QCOMPARE(shown.timeline.at(36).otherSeconds, 15.0);
        QCOMPARE(shown.timeline.at(36).total(), 78.0);
    }

    void anAgentWorksFromAPromptToTheNextEventOfItsSession()
    {
        ScratchDatabase scratch;
        Database& database = scratch.database();
        addEvent(database, u"a"_s, u"SessionStart"_s, on(day, 9));
        addEvent(database, u"a"_s, u"UserPromptSubmit"_s, on(day, 9, 10));
        addEvent(database, u"a"_s, u"Stop"_s, on(day, 9, 20));
        addEvent(database, u"b"_s, u"UserPromptSubmit"_s, on(day, 9, 15)); // at the same time
        addEvent(database, u"b"_s, u"UserPromptSubmit"_s, on(day, 9, 25));
        addEvent(database, u"b"_s, u"Stop"_s, on(day, 9, 30));
        addEvent(database, u"c"_s, u"UserPromptSubmit"_s, on(day, 23, 30)); // never heard of again
        QCOMPARE(overview(database, { day, day }).agentSeconds, 20.0 * 60 + 30 * 60);
        QCOMPARE(overview(database, { day.addDays(1), day.addDays(1) }).agentSeconds, 30.0 * 60);
        QCOMPARE(
            EventStore(database).workSpans(on(day, 9, 12), on(day, 9, 13)).value(), (std::vector<WorkSpan> { { on(day, 9, 12), on(day, 9, 13) } }));
        // What lies in the future has not happened.
        QCOMPARE(activityOverview(database, { day, day }, on(day, 23, 40)).value().agentSeconds, 20.0 * 60 + 10 * 60);
        const auto timeline = overview(database, { day, day }).timeline;
        QCOMPARE(timeline.at(36).agentSeconds, 5.0 * 60);
        QCOMPARE(timeline.at(37).agentSeconds, 15.0 * 60);
    }

    void aSiteIsItsHostWithoutWww()
    {
        QCOMPARE(siteOf(u"https://www.example.org:8080/x?y#z"_s), u"example.org"_s);
        QCOMPARE(siteOf(u"http://127.0.0.1:5000/"_s), u"127.0.0.1"_s);
        QCOMPARE(siteOf(u"about:blank"_s), u"about:"_s);
        QCOMPARE(siteOf(u"file:///home/u/x.html"_s), u"file:"_s);
        QCOMPARE(siteOf(u"nonsense"_s), u"nonsense"_s);
        QCOMPARE(siteOf(QString()), QString());
    }

    void durationsAreReadAloud()
    {
        QCOMPARE(durationText(0), u"0 s"_s);
        QCOMPARE(durationText(59.4), u"59 s"_s);
        QCOMPARE(durationText(59.5), u"1 min"_s);
        QCOMPARE(durationText(90), u"1 min 30 s"_s);
        QCOMPARE(durationText(3600), u"1 h"_s);
        QCOMPARE(durationText(12000), u"3 h 20 min"_s);
        QCOMPARE(durationText(90000), u"25 h"_s);
    }

    // The page

    void thePageShowsTheNumbersOfTheDatabase()
    {
        Served served;
        add(served.database(), period(on(day, 9), 10, { editor(40), browser(20.5, u"https://a.example/"_s) }));
        const QByteArray body = page(served, "?from=2026-03-10&to=2026-03-10");
        QVERIFY(body.contains("<dd id=\"focused\" data-seconds=\"60.5\">"));
        QVERIFY(body.contains("<dd id=\"idle\" data-seconds=\"10\">10 s</dd>"));
        QVERIFY(body.contains("<td class=\"time\" data-seconds=\"40\">40 s</td>"));
        QVERIFY(body.contains("<td class=\"time\" data-seconds=\"20.5\">"));
        QVERIFY(body.contains("a.example"));
        QVERIFY(body.contains("10 Mar 2026"));
    }

    void theChartHasTheNumbersBesideItForThoseWhoDoNotSeeIt()
    {
        Served served;
        add(served.database(), period(on(day, 9), 10, { editor(40) }));
        const QByteArray body = page(served, "?from=2026-03-10&to=2026-03-10");
        QVERIFY(body.contains("role=\"img\" aria-labelledby=\"timeline-title\""));
        QVERIFY(body.contains("<tr><th scope=\"row\">09:00–09:15</th><td class=\"time\" data-seconds=\"40\">"));
        QVERIFY(body.contains("<rect class=\"c0\""));
        QVERIFY(body.contains("<rect class=\"idle\""));
    }

    void whatOthersNamedIsEscapedEverywhere()
    {
        Served served;
        add(served.database(), period(on(day, 9), 0, { editor(40), browser(20, u"javascript:alert('<x>')"_s, u"<script>alert(1)</script>"_s) }));
        const QByteArray body = page(served, "?from=2026-03-10");
        QVERIFY(body.contains("Editor &lt;b&gt;"));
        QVERIFY(!body.contains("<b>"));
        QVERIFY(!body.contains("<script"));
        QVERIFY(!body.contains("<x>"));
        QVERIFY(!body.contains("href=\"javascript:"));
    }

    void anEmptyDayIsSaidToBeEmpty()
    {
        Served served;
        QVERIFY(page(served, "?from=2026-03-10").contains("Nothing was recorded"));
    }

    void withoutARangeItIsToday()
    {
        Served served;
        QVERIFY(page(served, "").contains(">today</p>"));
    }

    void nothingIsLoadedAndNoScriptRuns()
    {
        Served served;
        const auto reply = exchange(served.port(), "GET", "/activity", { "Host: 127.0.0.1:" + QByteArray::number(served.port()) });
        const QByteArray policy = reply->headers.value("content-security-policy");
        QVERIFY(policy.startsWith("default-src 'none'"));
        QVERIFY(!policy.contains("script-src"));
        static const QRegularExpression foreign(u"(src|href)=\"(?!/|data:)"_s);
        QVERIFY(!foreign.match(QString::fromUtf8(reply->body)).hasMatch());
    }

    void aStrangerIsRefused()
    {
        Served served;
        for (const char* path : { "/activity", "/activity.csv", "/activity.json" })
            QCOMPARE(exchange(served.port(), "GET", path, { "Host: attacker.example" })->status, 403);
    }

    // The exports

    void theCsvHoldsEveryUse()
    {
        Served served;
        add(served.database(), period(on(day, 9), 10, { editor(40), browser(20.25, u"https://a.example/"_s, u"say \"hi\""_s) }));
        add(served.database(), period(on(day, 10), 0, { { std::nullopt, u"=cmd()"_s, 60, {} } }));
        const auto reply
            = exchange(served.port(), "GET", "/activity.csv?from=2026-03-10", { "Host: 127.0.0.1:" + QByteArray::number(served.port()) });
        QCOMPARE(reply->status, 200);
        QCOMPARE(reply->headers.value("content-type"), "text/csv; charset=utf-8"_ba);
        QCOMPARE(reply->headers.value("content-disposition"), "attachment; filename=\"orvanta-activity-2026-03-10-to-2026-03-10.csv\""_ba);
        const auto times = [](UtcTime start) {
            return isoFromUtcTime(start).toLatin1() + ',' + isoFromUtcTime(start + std::chrono::minutes { 1 }).toLatin1() + ',';
        };
        QCOMPARE(reply->body,
            "periodStart,periodEnd,kind,bundleIdentifier,name,url,title,seconds\r\n" + times(on(day, 9)) + "idle,,,,,10\r\n" + times(on(day, 9))
                + "application,\"org.example.Editor\",\"Editor <b>\",,,40\r\n" + times(on(day, 9))
                + "application,\"org.mozilla.firefox\",\"Firefox\",,,20.25\r\n" + times(on(day, 9))
                + "page,\"org.mozilla.firefox\",\"Firefox\",\"https://a.example/\",\"say \"\"hi\"\"\",20.25\r\n" + times(on(day, 10))
                + "idle,,,,,0\r\n" + times(on(day, 10)) + "application,\"\",\"'=cmd()\",,,60\r\n");
    }

    void theJsonCanBeUploadedAgain()
    {
        Served served;
        const UploadedPeriod original = period(on(day, 9), 10.5, { editor(40), browser(20, u"https://a.example/"_s) });
        add(served.database(), original);
        const auto reply
            = exchange(served.port(), "GET", "/activity.json?from=2026-03-10", { "Host: 127.0.0.1:" + QByteArray::number(served.port()) });
        QCOMPARE(reply->headers.value("content-type"), "application/json"_ba);
        const auto json = nlohmann::ordered_json::parse(reply->body.begin(), reply->body.end(), nullptr, false);
        QVERIFY(json.is_array());
        QCOMPARE(json.size(), 1U);
        const auto again = readUploadedPeriod(QByteArray::fromStdString(json[0].dump()));
        QVERIFY(again.has_value());
        QVERIFY(again->startedAt == original.startedAt && again->endedAt == original.endedAt);
        QCOMPARE(again->idleSeconds, 10.5);
        QCOMPARE(again->applications.size(), 2U);
        QCOMPARE(again->applications[1].tabs.at(0).url, u"https://a.example/"_s);
    }

    void whereNothingWasUploadedTheFilesAreEmpty()
    {
        Served served;
        const QByteArray host = "Host: 127.0.0.1:" + QByteArray::number(served.port());
        QCOMPARE(exchange(served.port(), "GET", "/activity.json?from=2026-03-10", { host })->body, "[\n]\n"_ba);
        QCOMPARE(exchange(served.port(), "GET", "/activity.csv?from=2026-03-10", { host })->body,
            "periodStart,periodEnd,kind,bundleIdentifier,name,url,title,seconds\r\n"_ba);
    }

    /// Over days with nothing in them, and from the first minute of the range to its last.
    void theFilesHoldEveryPeriodOfALongRangeInOrder()
    {
        Served served;
        QList<UtcTime> starts;
        for (const int days : { 0, 1, 40, 200 }) {
            for (const int hour : { 0, 5, 6, 23 })
                starts << on(day.addDays(days), hour);
        }
        for (const UtcTime start : starts)
            add(served.database(), period(start, 0, { editor(60) }));
        add(served.database(), period(on(day.addDays(201), 0), 0, { editor(60) })); // beyond the range
        const QByteArray host = "Host: 127.0.0.1:" + QByteArray::number(served.port());
        const QByteArray range = "?from=2026-03-10&to=" + day.addDays(200).toString(Qt::ISODate).toLatin1();

        const auto json = exchange(served.port(), "GET", "/activity.json" + range, { host });
        const auto periods = nlohmann::ordered_json::parse(json->body.begin(), json->body.end(), nullptr, false);
        QCOMPARE(periods.size(), static_cast<std::size_t>(starts.size()));
        for (qsizetype i = 0; i < starts.size(); ++i)
            QCOMPARE(QString::fromStdString(periods[static_cast<std::size_t>(i)].at("periodStart").get<std::string>()), isoFromUtcTime(starts[i]));

        const auto csv = exchange(served.port(), "GET", "/activity.csv" + range, { host });
        QCOMPARE(csv->body.count("periodStart"), 1);
        QCOMPARE(csv->body.count("\r\n"), 1 + 2 * starts.size());
        qsizetype place = 0;
        for (const UtcTime start : starts) {
            const qsizetype found = csv->body.indexOf("\n" + isoFromUtcTime(start).toLatin1() + ',', place);
            QVERIFY(found >= place);
            place = found;
        }
    }

    /// A file that ends too early must not look whole.
    void aFileThatCannotBeReadToItsEndIsCutOff()
    {
        Served served;
        for (const int days : { 0, 300 })
            add(served.database(), period(on(day.addDays(days), 9), 0, { editor(60) }));
        const TimeSpan span { on(day, 0), on(day.addDays(301), 0) };
        const auto file = ActivityExport::open(served.database(), span, ActivityExport::Format::csv);
        QVERIFY(file.has_value());
        const auto beginning = (*file)->next();
        QVERIFY(beginning && beginning->contains("idle"));
        served.database().execute("ALTER TABLE page_uses RENAME TO elsewhere");
        QVERIFY(!(*file)->next().has_value());
    }
};

QTEST_GUILESS_MAIN(TestActivityPage)
#include "test_activity_page.moc"
