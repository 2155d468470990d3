#include "platform/linux/wayland_desktop_notices.h"

#include "platform/linux/desktop_report.h"

#include <chrono>

namespace orvanta {

namespace {

/// How long a helper may be away, as when the screen is locked or the session begins, before that is said.
constexpr std::chrono::seconds untilMissed { 3 };

} // namespace

WaylandDesktopNotices::WaylandDesktopNotices(CompositorWindows& windows) : m_windows(windows)
{
    m_settling.setSingleShot(true);
    m_settling.setInterval(untilMissed);
    QObject::connect(&m_settling, &QTimer::timeout, &m_settling, [this] { tell(); });
    m_windows.onSourceChange([this] { m_settling.start(m_windows.source() == WindowSource::none ? untilMissed : std::chrono::seconds(0)); });
    m_settling.start();
}

WaylandDesktopNotices::~WaylandDesktopNotices()
{
    m_windows.onSourceChange({});
}

void WaylandDesktopNotices::tell()
{
    QStringList missing = whatIsMissing(findDesktop(m_windows.source()));
    if (missing == m_told)
        return;
    m_told = std::move(missing);
    m_observers.notify(m_told);
}

} // namespace orvanta
