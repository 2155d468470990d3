#include "activity/activity_json.h"

#include <QTest>

#include <limits>

using namespace orvanta;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const WallTime start = *wallTimeFromIso(u"2025-01-31T14:04:00Z");
const WallTime end = *wallTimeFromIso(u"2025-01-31T14:05:00Z");

const AggregatedActivity minute {
    .periodStart = start,
    .periodEnd = end,
    .totalIdleSeconds = 10,
    .applications = {
        { u"com.google.Chrome"_s, u"Google Chrome"_s, 45, std::vector<TabActivity> { { u"about:blank"_s, u"New Tab"_s, 40 } } },
        { std::nullopt, u"Terminal"_s, 15, std::nullopt },
    },
};

template <typename Record>
void comesBack(const Record& record)
{
    const auto json = encodeActivity(record);
    QVERIFY(json.has_value());
    const auto decoded = decodeActivity<Record>(*json);
    QVERIFY2(decoded.has_value(), decoded ? "" : qPrintable(decoded.error().description()));
    QVERIFY2(*decoded == record, json->constData());
}

} // namespace

class TestActivityJson : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aPeriodIsWrittenInTheOrderOfItsMembersWithoutTheAbsentOnes()
    {
        QCOMPARE(encodeActivity(minute).value_or(QByteArray()),
            QByteArray("{\"periodStart\":\"2025-01-31T14:04:00Z\",\"periodEnd\":\"2025-01-31T14:05:00Z\",\"totalIdleSeconds\":10,"
                       "\"applications\":[{\"bundleIdentifier\":\"com.google.Chrome\",\"name\":\"Google Chrome\",\"focusedSeconds\":45,"
                       "\"tabs\":[{\"url\":\"about:blank\",\"title\":\"New Tab\",\"focusedSeconds\":40}]},"
                       "{\"name\":\"Terminal\",\"focusedSeconds\":15}]}"));
    }

    void aSnapshotIsWrittenInTheOrderOfItsMembers()
    {
        const ActivitySnapshot snapshot { .timestamp = start,
            .idleSeconds = 1.5,
            .frontmostApp = AppInfo { u"org.mozilla.firefox"_s, u"Firefox"_s, true },
            .runningApps = { { std::nullopt, u"xterm"_s, false } },
            .activeBrowserTab = BrowserTab { u"Firefox"_s, u"Title"_s, u"http://a.example/"_s } };
        QCOMPARE(encodeActivity(snapshot).value_or(QByteArray()),
            QByteArray("{\"timestamp\":\"2025-01-31T14:04:00Z\",\"idleSeconds\":1.5,"
                       "\"frontmostApp\":{\"bundleIdentifier\":\"org.mozilla.firefox\",\"name\":\"Firefox\",\"isActive\":true},"
                       "\"runningApps\":[{\"name\":\"xterm\",\"isActive\":false}],"
                       "\"activeBrowserTab\":{\"browser\":\"Firefox\",\"title\":\"Title\",\"url\":\"http://a.example/\"}}"));
    }

    void aSnapshotOfNothingHasOnlyWhatIsAlwaysThere()
    {
        QCOMPARE(
            encodeActivity(ActivitySnapshot { .timestamp = start, .idleSeconds = 0, .frontmostApp = {}, .runningApps = {}, .activeBrowserTab = {} })
                .value_or(QByteArray()),
            QByteArray("{\"timestamp\":\"2025-01-31T14:04:00Z\",\"idleSeconds\":0,\"runningApps\":[]}"));
    }

    void anApplicationWithoutIdentifierAndTabsHasExactlyTwoKeys()
    {
        QCOMPARE(encodeActivity(AppActivity { std::nullopt, u"Terminal"_s, 15, std::nullopt }).value_or(QByteArray()),
            QByteArray("{\"name\":\"Terminal\",\"focusedSeconds\":15}"));
    }

    void aDateIsWrittenWithoutItsFraction()
    {
        QCOMPARE(isoText(start + 999ms), std::optional(u"2025-01-31T14:04:00Z"_s));
        QCOMPARE(isoText(start + 1s), std::optional(u"2025-01-31T14:04:01Z"_s));
        QCOMPARE(isoText(WallTime()), std::optional(u"1970-01-01T00:00:00Z"_s));
        QCOMPARE(isoText(WallTime() - 1ms), std::optional(u"1969-12-31T23:59:59Z"_s));
        QCOMPARE(isoText(*wallTimeFromIso(u"2024-02-29T23:59:59Z") + 1s), std::optional(u"2024-03-01T00:00:00Z"_s));
    }

    void onlyAWholeSecondInUtcIsReadAsADate_data()
    {
        QTest::addColumn<QString>("text");
        for (const auto* text :
            { "", "2025-01-31", "2025-01-31T14:05:00", "2025-01-31T14:05:00.5Z", "2025-01-31T14:05:00+00:00", "2025-02-29T00:00:00Z",
                "2025-01-31T24:00:00Z", "2025-01-31T14:60:00Z", "2025-01-31T14:05:60Z", "2025-13-01T00:00:00Z", "2025-01-00T00:00:00Z",
                "2025-01-31 14:05:00Z", "2025-01-31T14:05:0xZ", "+025-01-31T14:05:00Z", "0001-01-01T00:00:00Z", "9999-01-01T00:00:00Z" })
            QTest::newRow(text) << QString::fromLatin1(text);
    }

    void onlyAWholeSecondInUtcIsReadAsADate()
    {
        QFETCH(const QString, text);
        QVERIFY(!wallTimeFromIso(text).has_value());
    }

    void whatWasWrittenIsReadBackEqual()
    {
        comesBack(minute);
        comesBack(AggregatedActivity { .periodStart = start, .periodEnd = start, .totalIdleSeconds = -0.25, .applications = {} });
        comesBack(AppActivity { u""_s, u""_s, 0.1, std::vector<TabActivity>() });
        comesBack(TabActivity { u"http://a.example/?q=\"\\\n\u0001"_s, u"\U0001F451 \u00e9"_s, 1e300 });
        comesBack(AppInfo { std::nullopt, u"a"_s, false });
        comesBack(BrowserTab { u"Arc"_s, u""_s, u""_s });
        comesBack(ActivitySnapshot {
            .timestamp = end, .idleSeconds = 5.000000001, .frontmostApp = {}, .runningApps = { { {}, u"b"_s, true } }, .activeBrowserTab = {} });
    }

    void aDateWithAFractionIsReadBackToTheSecond()
    {
        AggregatedActivity activity = minute;
        activity.periodStart += 400ms;
        activity.periodEnd += 999ms;
        const auto decoded = decodeActivity<AggregatedActivity>(*encodeActivity(activity));
        QVERIFY(decoded.has_value());
        QVERIFY(*decoded == minute);
    }

    void aMissingKeyAndNullAreBothAbsent()
    {
        const AppActivity terminal { std::nullopt, u"Terminal"_s, 15, std::nullopt };
        const auto missing = decodeActivity<AppActivity>("{\"name\":\"Terminal\",\"focusedSeconds\":15}");
        const auto null
            = decodeActivity<AppActivity>("{\"tabs\":null,\"focusedSeconds\":15.0,\"bundleIdentifier\":null,\"name\":\"Terminal\",\"more\":[]}");
        QVERIFY(missing == terminal);
        QVERIFY(null == terminal);
    }

    void whatIsNoRecordIsRefusedWithItsReason_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("key");
        QTest::newRow("nothing") << QByteArray() << QString();
        QTest::newRow("half") << QByteArray("{\"name\":") << QString();
        QTest::newRow("no object") << QByteArray("[]") << QString();
        QTest::newRow("not UTF-8") << QByteArray("{\"name\":\"\xff\",\"focusedSeconds\":1}") << QString();
        QTest::newRow("no name") << QByteArray("{\"focusedSeconds\":1}") << u"name"_s;
        QTest::newRow("no seconds") << QByteArray("{\"name\":\"a\"}") << u"focusedSeconds"_s;
        QTest::newRow("seconds as text") << QByteArray("{\"name\":\"a\",\"focusedSeconds\":\"1\"}") << u"focusedSeconds"_s;
        QTest::newRow("seconds as boolean") << QByteArray("{\"name\":\"a\",\"focusedSeconds\":true}") << u"focusedSeconds"_s;
        QTest::newRow("identifier as number") << QByteArray("{\"bundleIdentifier\":1,\"name\":\"a\",\"focusedSeconds\":1}") << u"bundleIdentifier"_s;
        QTest::newRow("tabs as object") << QByteArray("{\"name\":\"a\",\"focusedSeconds\":1,\"tabs\":{}}") << u"tabs"_s;
        QTest::newRow("a tab as text") << QByteArray("{\"name\":\"a\",\"focusedSeconds\":1,\"tabs\":[\"x\"]}") << u"tabs"_s;
        QTest::newRow("nested beyond reason") << QByteArray("{\"name\":").append(QByteArray(100000, '[')) << QString();
    }

    void whatIsNoRecordIsRefusedWithItsReason()
    {
        QFETCH(const QByteArray, json);
        QFETCH(const QString, key);
        const auto decoded = decodeActivity<AppActivity>(json);
        QVERIFY(!decoded.has_value());
        QCOMPARE(decoded.error().key, key);
    }

    void whatJsonCannotCarryIsAnError()
    {
        AggregatedActivity activity = minute;
        activity.totalIdleSeconds = std::numeric_limits<double>::quiet_NaN();
        QCOMPARE(encodeActivity(activity).error().description, u"a number is not finite"_s);
        activity = minute;
        activity.applications[0].name = QString(QChar(0xD800));
        QCOMPARE(encodeActivity(activity).error().description, u"a text is not valid Unicode"_s);
    }
};

QTEST_GUILESS_MAIN(TestActivityJson)
#include "test_activity_json.moc"
