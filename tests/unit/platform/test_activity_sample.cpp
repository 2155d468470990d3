#include "activity/activity_monitor.h"
#include "platform/linux/browser_named_applications.h"
#include "platform/linux/desktop_idle_source.h"
#include "platform/linux/desktop_script_runner.h"
#include "platform/linux/proc_process_lister.h"
#include "platform/linux/x11_running_applications.h"
#include "support/x11_test_desktop.h"

#include <QGuiApplication>
#include <QTest>

#include <cstdint>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

/// One whole sample, of what the tracker takes it from, on a real desktop.
class TestActivitySample : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aSampleOfADesktopThatStaysTheSameWaitsForTheServerTwiceAtMost()
    {
        X11TestClient client;
        QList<xcb_window_t> windows;
        for (int i = 0; i < 10; ++i)
            windows << client.show({ .instanceName = "xterm", .className = "XTerm" });

        auto x11 = std::make_unique<X11RunningApplications>(X11RunningApplications::Use::periodic, OwnApplication());
        auto idle = std::make_unique<DesktopIdleSource>();
        const auto roundTrips = [&x11 = *x11, &idle = *idle] { return x11.roundTrips() + idle.roundTrips(); };
        auto applications = std::make_unique<BrowserNamedApplications>(std::move(x11));
        auto scripts = std::make_unique<DesktopScriptRunner>(*applications);
        ActivityMonitor monitor({ .applications = std::move(applications),
            .scripts = std::move(scripts),
            .idle = std::move(idle),
            .processes = std::make_unique<ProcProcessLister>() });
        const auto costOfASample = [&] {
            const auto before = roundTrips();
            (void)monitor.captureSnapshot();
            return roundTrips() - before;
        };
        // The window manager may still be busy with the windows.
        QTRY_VERIFY_WITH_TIMEOUT(costOfASample() <= 2, patience);
        for (int i = 0; i < 20; ++i)
            QVERIFY(costOfASample() <= 2);

        // And it is no worse for it: the sample sees what has changed.
        const auto front = [&] {
            const auto sample = monitor.captureSnapshot();
            return sample.frontmostApp && sample.runningApps.size() > 0 ? sample.frontmostApp->name : QString();
        };
        QTRY_COMPARE_WITH_TIMEOUT(front(), u"XTerm"_s, patience);
        windows << client.show({ .instanceName = "galculator", .className = "Galculator" });
        QTRY_COMPARE_WITH_TIMEOUT(front(), u"Galculator"_s, patience);
        client.activate(windows.first());
        QTRY_COMPARE_WITH_TIMEOUT(front(), u"XTerm"_s, patience);
        QTRY_VERIFY_WITH_TIMEOUT(costOfASample() <= 2, patience);
        client.destroyAll();
        QTRY_COMPARE_WITH_TIMEOUT(monitor.captureSnapshot().runningApps.size(), std::size_t(0), patience);
    }
};

QTEST_MAIN(TestActivitySample)
#include "test_activity_sample.moc"
