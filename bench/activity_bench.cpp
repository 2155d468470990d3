// Takes samples of the user's activity, or parts of one, again and again, and tells what they cost.
//
//   activity_bench processes|windows|idle|sample [COUNT]
//
//   processes  what an agent is looked for among
//   windows    the front application and the running ones, as one sample asks for them
//   idle       the time without input
//   sample     all of it
//
// Prints one line of JSON: medians of "cpu_us" (this process) and "wall_us" of one, after the first, and for windows "round_trips".

#include "activity/activity_monitor.h"
#include "activity/agent_activity_detector.h"
#include "figures.h"
#include "platform/linux/proc_process_lister.h"
#include "platform/linux/x11_running_applications.h"
#include "platform/platform.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string_view>
#include <vector>

using namespace orvanta;
using namespace orvanta::bench;

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    const std::string_view what = argc > 1 ? argv[1] : "";
    const int count = argc > 2 ? std::atoi(argv[2]) : 50;

    ProcProcessLister processes;
    X11RunningApplications applications(X11RunningApplications::Use::periodic, OwnApplication::current());
    ActivitySources sources = activitySourcesFactory()();
    IdleSource& idle = *sources.idle;
    ActivityMonitor monitor(std::move(sources));

    std::function<void()> work;
    if (what == "processes")
        work = [&] { (void)AgentActivityDetector::isAgentWorking(processes); };
    else if (what == "windows")
        work = [&] {
            (void)applications.frontmost();
            (void)applications.all();
        };
    else if (what == "idle")
        work = [&] { (void)idle.secondsSinceLastEvents(); };
    else if (what == "sample")
        work = [&] { (void)monitor.captureSnapshot(); };
    else
        return 2;

    work(); // connections, desktop entries
    const auto before = applications.roundTrips();
    std::vector<double> cpu;
    std::vector<double> wall;
    for (int i = 0; i < count; ++i) {
        const double cpuStart = cpuMicroseconds();
        const double wallStart = microseconds(CLOCK_MONOTONIC);
        work();
        cpu.push_back(cpuMicroseconds() - cpuStart);
        wall.push_back(microseconds(CLOCK_MONOTONIC) - wallStart);
    }
    std::printf("{\"cpu_us\": %.1f, \"wall_us\": %.1f, \"round_trips\": %.2f}\n", median(cpu), median(wall),
        static_cast<double>(applications.roundTrips() - before) / count);
    return 0;
}
