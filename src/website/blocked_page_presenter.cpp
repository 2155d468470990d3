#include "website/blocked_page_presenter.h"

#include "platform/running_applications.h"
#include "platform/system_notifications.h"
#include "platform/url_opener.h"
#include "website/filter_extension.h"

#include <QPointer>

#include <algorithm>
#include <array>

namespace orvanta {

namespace {

/// Half of what the clock can hold, so that no difference to it overflows.
constexpr BlockedPagePresenter::PointInTime distantPast { BlockedPagePresenter::Clock::duration::min() / 2 };

constexpr std::array<QLatin1StringView, 7> browsers {
    QLatin1StringView("app.zen-browser.zen"),
    QLatin1StringView("com.apple.Safari"),
    QLatin1StringView("com.brave.Browser"),
    QLatin1StringView("com.google.Chrome"),
    QLatin1StringView("com.microsoft.edgemac"),
    QLatin1StringView("company.thebrowser.Browser"),
    QLatin1StringView("org.mozilla.firefox"),
};

} // namespace

BlockedPagePresenter::BlockedPagePresenter(SystemNotifications& notifications, RunningApplications& runningApplications, UrlOpener& urlOpener,
    QUrl blockedPage, std::function<PointInTime()> currentTime)
    : m_notifications(notifications)
    , m_runningApplications(runningApplications)
    , m_urlOpener(urlOpener)
    , m_blockedPage(std::move(blockedPage))
    , m_currentTime(std::move(currentTime))
    , m_lastPresentation(distantPast)
{
}

BlockedPagePresenter::~BlockedPagePresenter() = default;

void BlockedPagePresenter::startObserving()
{
    if (m_isObserving)
        return;
    m_isObserving = true;
    m_observer = m_notifications.observe(FilterExtension::blockedDomainAttempt, [self = QPointer(this)] {
        if (self)
            QMetaObject::invokeMethod(self, [self] { self->present(self->m_currentTime()); }, Qt::QueuedConnection);
    });
}

void BlockedPagePresenter::present(PointInTime now)
{
    if (now - m_lastPresentation < minimumSpacing)
        return;
    const auto front = m_runningApplications.frontmost();
    if (!front || !front->bundleIdentifier || std::ranges::find(browsers, *front->bundleIdentifier) == browsers.end())
        return;
    m_lastPresentation = now;
    m_urlOpener.open(m_blockedPage);
}

} // namespace orvanta
