#include "activity/activity_monitor.h"

#include "support/fake_activity_sources.h"

#include <QTest>

#include <limits>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const WallTime moment { 1'700'000'000s };

RunningApplication running(
    const std::optional<QString>& identifier, const std::optional<QString>& name, ActivationPolicy policy = ActivationPolicy::regular)
{
    return { .bundleIdentifier = identifier, .localizedName = name, .activationPolicy = policy };
}

struct MonitorScene : ActivityScene {
    ActivityMonitor monitor { sources(), {}, {}, [] { return moment; } };
};

QString scriptCall(ScriptId id)
{
    return u"script %1"_s.arg(static_cast<int>(id));
}

} // namespace

class TestActivityMonitor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // A whole sample

    void aSampleIsTakenInOrder()
    {
        MonitorScene scene;
        scene.answers = { { ScriptId::frontProcess, u"Firefox"_s }, { ScriptId::firefoxTab, u"http://a.example/\nA page"_s } };
        scene.running = { running(u"org.mozilla.firefox"_s, u"Firefox"_s), running(std::nullopt, u"xterm"_s) };
        scene.front = scene.running[0];
        scene.idle = { 12 };
        const ActivitySnapshot snapshot = scene.monitor.captureSnapshot();
        const QString front = scriptCall(ScriptId::frontProcess);
        QCOMPARE(scene.log.calls,
            (QStringList { u"processes"_s, u"idle"_s, front, u"all"_s, u"frontmost"_s, u"all"_s, front, scriptCall(ScriptId::firefoxTab) }));
        QVERIFY(snapshot.timestamp == moment);
        QCOMPARE(snapshot.idleSeconds, 12.0);
        QCOMPARE(snapshot.frontmostApp, std::optional(AppInfo { u"org.mozilla.firefox"_s, u"Firefox"_s, true }));
        QCOMPARE(
            snapshot.runningApps, (std::vector<AppInfo> { { u"org.mozilla.firefox"_s, u"Firefox"_s, true }, { std::nullopt, u"xterm"_s, false } }));
        QCOMPARE(snapshot.activeBrowserTab, std::optional(BrowserTab { u"Firefox"_s, u"A page"_s, u"http://a.example/"_s }));
    }

    void whereNothingAnswersTheSampleIsEmpty()
    {
        MonitorScene scene;
        scene.processes = std::nullopt;
        const ActivitySnapshot snapshot = scene.monitor.captureSnapshot();
        QVERIFY(
            (snapshot == ActivitySnapshot { .timestamp = moment, .idleSeconds = 0, .frontmostApp = {}, .runningApps = {}, .activeBrowserTab = {} }));
    }

    // Idle time

    void aWorkingAgentMakesTheUserNotIdle()
    {
        MonitorScene scene;
        scene.idle = { 3600 };
        scene.processes = " 3.0 claude\n";
        QCOMPARE(scene.monitor.captureSnapshot().idleSeconds, 0.0);
        QVERIFY(!scene.log.calls.contains(u"idle"_s));
        QCOMPARE(scene.monitor.getIdleTime(), 0.0);
        scene.processes = " 0.0 claude\n";
        QCOMPARE(scene.monitor.getIdleTime(), 3600.0);
    }

    void theProvidersThatWereGivenAreAsked()
    {
        ActivityScene scene;
        bool isAgentWorking = false;
        int asked = 0;
        ActivityMonitor monitor(
            scene.sources(),
            [&asked] {
                ++asked;
                return 42.0;
            },
            [&isAgentWorking] { return isAgentWorking; });
        QCOMPARE(monitor.getIdleTime(), 42.0);
        isAgentWorking = true;
        QCOMPARE(monitor.getIdleTime(), 0.0);
        QCOMPARE(asked, 1);
        QCOMPARE(scene.log.calls, QStringList());
    }

    void theLatestOfSeveralKindsOfEventsCounts()
    {
        QCOMPARE(idleSeconds({ 8, 3, 5, 4, 9 }), 3.0);
        QCOMPARE(idleSeconds({ 7 }), 7.0);
        QCOMPARE(idleSeconds({}), 0.0);
        QCOMPARE(idleSeconds({ std::numeric_limits<double>::max(), std::numeric_limits<double>::infinity() }), 0.0);
    }

    // The front application

    void withoutAFrontProcessTheWorkspaceIsAsked()
    {
        MonitorScene scene;
        scene.front = running(u"a.b"_s, u"Name"_s);
        QCOMPARE(scene.monitor.getFrontmostApp(), std::optional(AppInfo { u"a.b"_s, u"Name"_s, true }));
        QCOMPARE(scene.log.calls, (QStringList { scriptCall(ScriptId::frontProcess), u"frontmost"_s }));
        scene.front = running(std::nullopt, std::nullopt);
        QCOMPARE(scene.monitor.getFrontmostApp(), std::optional(AppInfo { std::nullopt, u"Unknown"_s, true }));
        scene.front = std::nullopt;
        QVERIFY(!scene.monitor.getFrontmostApp().has_value());
    }

    void theFirstApplicationWithTheNameOrTheIdentifierIsTheFrontOne()
    {
        MonitorScene scene;
        scene.answers = { { ScriptId::frontProcess, u"Editor"_s } };
        // Both tests are made for one application before the next is looked at.
        scene.running = { running(u"org.editor.Tool"_s, u"Something"_s), running(u"x.y"_s, u"Editor"_s) };
        QCOMPARE(scene.monitor.getFrontmostApp(), std::optional(AppInfo { u"org.editor.Tool"_s, u"Something"_s, true }));
        scene.running = { running(u"org.Editor.Tool"_s, u"editor"_s), running(u"x.y"_s, u"Editor"_s) };
        QCOMPARE(scene.monitor.getFrontmostApp(), std::optional(AppInfo { u"x.y"_s, u"Editor"_s, true }));
    }

    void anApplicationWithoutNameTakesTheProcessName()
    {
        MonitorScene scene;
        scene.answers = { { ScriptId::frontProcess, u"Editor"_s } };
        scene.running = { running(u"org.editor"_s, std::nullopt, ActivationPolicy::accessory) };
        QCOMPARE(scene.monitor.getFrontmostApp(), std::optional(AppInfo { u"org.editor"_s, u"Editor"_s, true }));
    }

    void aFrontProcessThatIsNoApplicationIsKnownByItsName()
    {
        MonitorScene scene;
        scene.answers = { { ScriptId::frontProcess, u"daemon"_s } };
        scene.running = { running(std::nullopt, u"Other"_s) };
        scene.front = scene.running[0];
        QCOMPARE(scene.monitor.getFrontmostApp(), std::optional(AppInfo { std::nullopt, u"daemon"_s, true }));
    }

    // The running applications

    void regularApplicationsAreListedInTheirOrder()
    {
        MonitorScene scene;
        scene.running = { running(u"b.b"_s, u"B"_s), running(u"panel"_s, u"Panel"_s, ActivationPolicy::accessory), running(u"a.a"_s, std::nullopt) };
        scene.front = running(u"a.a"_s, u"A"_s);
        QCOMPARE(scene.monitor.getRunningApps(), (std::vector<AppInfo> { { u"b.b"_s, u"B"_s, false }, { u"a.a"_s, u"Unknown"_s, true } }));
    }

    void twoAbsentIdentifiersCountAsEqual()
    {
        MonitorScene scene;
        scene.running = { running(std::nullopt, u"nameless"_s), running(u"a.a"_s, u"A"_s) };
        QCOMPARE(scene.monitor.getRunningApps(), (std::vector<AppInfo> { { std::nullopt, u"nameless"_s, true }, { u"a.a"_s, u"A"_s, false } }));
        scene.front = running(std::nullopt, u"other"_s);
        QCOMPARE(scene.monitor.getRunningApps()[0].isActive, true);
        scene.front = running(u"a.a"_s, u"A"_s);
        QCOMPARE(scene.monitor.getRunningApps()[0].isActive, false);
    }

    // The tab

    void theFrontProcessNameChoosesTheBrowser_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("script");
        QTest::addColumn<QString>("browser");
        const auto row = [](const char* name, ScriptId script, const char* browser) {
            QTest::newRow(name) << QString::fromLatin1(name) << static_cast<int>(script) << QString::fromLatin1(browser);
        };
        row("Safari", ScriptId::safariTab, "Safari");
        row("Google Chrome", ScriptId::chromeTab, "Chrome");
        row("Brave Browser", ScriptId::braveTab, "Brave");
        row("Firefox", ScriptId::firefoxTab, "Firefox");
        row("Firefox Developer Edition", ScriptId::firefoxTab, "Firefox");
        row("firefox-esr", ScriptId::firefoxTab, "Firefox");
        row("Arc", ScriptId::arcTab, "Arc");
        row("Spotlight search", ScriptId::arcTab, "Arc");
        row("Safari for Chrome", ScriptId::safariTab, "Safari");
    }

    void theFrontProcessNameChoosesTheBrowser()
    {
        QFETCH(const QString, name);
        QFETCH(const int, script);
        QFETCH(const QString, browser);
        MonitorScene scene;
        scene.answers = { { ScriptId::frontProcess, name }, { static_cast<ScriptId>(script), u"url\ntitle"_s } };
        QCOMPARE(scene.monitor.getActiveBrowserTab(), std::optional(BrowserTab { browser, u"title"_s, u"url"_s }));
        QCOMPARE(scene.log.calls, (QStringList { scriptCall(ScriptId::frontProcess), u"script %1"_s.arg(script) }));
    }

    void noBrowserInFrontNoTab()
    {
        MonitorScene scene;
        QVERIFY(!scene.monitor.getActiveBrowserTab().has_value());
        scene.answers = { { ScriptId::frontProcess, u"Terminal"_s } };
        QVERIFY(!scene.monitor.getActiveBrowserTab().has_value());
        QCOMPARE(scene.log.calls.size(), 2);
    }

    void aBrowserThatDoesNotAnswerHasNoTab()
    {
        MonitorScene scene;
        scene.answers = { { ScriptId::frontProcess, u"Firefox"_s } };
        QVERIFY(!scene.monitor.getActiveBrowserTab().has_value());
    }

    void anAnswerIsAnAddressALineFeedAndATitle_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("isTab");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("title");
        QTest::newRow("plain") << u"u\nt"_s << true << u"u"_s << u"t"_s;
        QTest::newRow("title of several lines") << u"u\nt\n\nmore\n"_s << true << u"u"_s << u"t\n\nmore\n"_s;
        QTest::newRow("empty pieces before") << u"\n\nu\nt"_s << true << u"u"_s << u"t"_s;
        QTest::newRow("blanks") << u" \n "_s << true << u" "_s << u" "_s;
        QTest::newRow("no line feed") << u"u"_s << false << QString() << QString();
        QTest::newRow("no title") << u"u\n"_s << false << QString() << QString();
        QTest::newRow("nothing") << u""_s << false << QString() << QString();
        QTest::newRow("line feeds alone") << u"\n\n\n"_s << false << QString() << QString();
    }

    void anAnswerIsAnAddressALineFeedAndATitle()
    {
        QFETCH(const QString, answer);
        QFETCH(const bool, isTab);
        QFETCH(const QString, url);
        QFETCH(const QString, title);
        const auto tab = browserTab(u"Arc"_s, answer);
        QCOMPARE(tab.has_value(), isTab);
        if (isTab)
            QCOMPARE(*tab, (BrowserTab { u"Arc"_s, title, url }));
    }
};

QTEST_GUILESS_MAIN(TestActivityMonitor)
#include "test_activity_monitor.moc"
