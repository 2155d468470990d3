// The tracker by itself, with times of the test's choosing.
//
//   activity_tracker ENDPOINT KEY SAMPLE PERIOD RETRY
//
// Samples what the user does every SAMPLE seconds and uploads each PERIOD to ENDPOINT, as the application does; after a failure
// again after RETRY seconds. Ends on SIGTERM.

#include "activity/activity_api_client.h"
#include "activity/tracker_service.h"
#include "platform/platform.h"
#include "service/network_url_session.h"

#include <QGuiApplication>
#include <QUrl>

#include <csignal>
#include <cstdio>

using namespace orvanta;

int main(int argc, char** argv)
{
    // Blocked in every thread that starts from here, and waited for in this one.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 6) {
        std::fputs("activity_tracker: five arguments are needed\n", stderr);
        return 2;
    }
    NetworkUrlSession session;
    auto makeMonitor = [sources = activitySourcesFactory()] { return std::make_unique<ActivityMonitor>(sources()); };
    TrackerService tracker(std::move(makeMonitor),
        { .sampleInterval = arguments[3].toDouble(),
            .aggregationPeriod = arguments[4].toDouble(),
            .retryInterval = arguments[5].toDouble(),
            .sender = std::make_shared<ActivityAPIClient>(session, QUrl(arguments[1]), arguments[2]) });

    tracker.start();
    int received = 0;
    sigwait(&signals, &received);
    tracker.stop();
    return 0;
}
