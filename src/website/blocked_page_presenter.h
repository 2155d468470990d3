#pragma once

#include "platform/subscription.h"

#include <QObject>
#include <QUrl>

#include <chrono>
#include <functional>

namespace orvanta {

class RunningApplications;
class SystemNotifications;
class UrlOpener;

/// Opens the service's "blocked" page when the extension refuses a website while a browser is in front, so that the user
/// sees why the site does not load. A page's many refused connections open it once. The app model owns it. Main thread
/// only.
class BlockedPagePresenter : public QObject {
    Q_OBJECT

public:
    /// The time that spaces the openings. It is the monotonic one: setting the machine's clock neither holds a page
    /// back nor opens a second one.
    using Clock = std::chrono::steady_clock;
    using PointInTime = Clock::time_point;

    static constexpr std::chrono::seconds minimumSpacing { 2 };

    BlockedPagePresenter(SystemNotifications& notifications, RunningApplications& runningApplications, UrlOpener& urlOpener, QUrl blockedPage,
        std::function<PointInTime()> currentTime = &Clock::now);
    ~BlockedPagePresenter() override;

    /// Begins to listen, for the rest of its life. A second call does nothing.
    void startObserving();

    /// Opens the page, unless it was opened less than minimumSpacing before `now` or no browser is in front.
    void present(PointInTime now);

private:
    SystemNotifications& m_notifications;
    RunningApplications& m_runningApplications;
    UrlOpener& m_urlOpener;
    QUrl m_blockedPage;
    std::function<PointInTime()> m_currentTime;

    bool m_isObserving = false;
    PointInTime m_lastPresentation; ///< at first so long ago that it holds nothing back
    Subscription m_observer;
};

} // namespace orvanta
