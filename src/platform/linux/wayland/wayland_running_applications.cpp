#include "platform/linux/wayland/wayland_running_applications.h"

#include "platform/linux/application_groups.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <unordered_set>

namespace orvanta {

ApplicationIdentity::Application applicationOf(ApplicationIdentity& identity, const DesktopWindow& window)
{
    if (!window.desktopEntry.isEmpty()) {
        if (const auto found = identity.ofDesktopEntry(window.desktopEntry))
            return *found;
    }
    return identity.of(window.number, window.traits);
}

WaylandRunningApplications::WaylandRunningApplications(std::shared_ptr<CompositorWindows> windows, OwnApplication own)
    : m_windows(std::move(windows))
    , m_identity(std::move(own))
{
}

std::optional<RunningApplication> WaylandRunningApplications::frontmost()
{
    WindowFeed* feed = m_windows->feed();
    const auto window = feed ? feed->front() : std::nullopt;
    if (!window)
        return std::nullopt;
    m_identity.refresh();
    return application(*window);
}

std::vector<RunningApplication> WaylandRunningApplications::all()
{
    WindowFeed* feed = m_windows->feed();
    if (!feed)
        return {};
    m_identity.refresh();
    const std::vector<DesktopWindow> windows = feed->windows();
    std::unordered_set<std::uint64_t> present;
    ApplicationGroups groups;
    for (const DesktopWindow& window : windows) {
        present.insert(window.number);
        groups.add(application(window), window.traits.process, window.number);
    }
    m_identity.forgetAllBut(present);
    return groups.take();
}

void WaylandRunningApplications::hide(const QString& bundleIdentifier)
{
    WindowFeed* feed = m_windows->feed();
    if (!feed)
        return;
    m_identity.refresh();
    std::vector<DesktopWindow> own = feed->windows();
    std::erase_if(own, [&](const DesktopWindow& window) { return applicationOf(m_identity, window).identifier != bundleIdentifier; });
    if (!own.empty())
        feed->hide(own);
}

RunningApplication WaylandRunningApplications::application(const DesktopWindow& window)
{
    const ApplicationIdentity::Application identity = applicationOf(m_identity, window);
    return { .bundleIdentifier = identity.identifier,
        .localizedName = identity.name,
        .activationPolicy = window.skipsTaskbar ? ActivationPolicy::accessory : ActivationPolicy::regular };
}

KeyWindowGeometry waylandKeyWindowGeometry(std::shared_ptr<CompositorWindows> windows)
{
    return [windows = std::move(windows)]() -> std::optional<QRect> {
        WindowFeed* feed = windows->feed();
        const auto front = feed ? feed->front() : std::nullopt;
        if (!front)
            return std::nullopt;
        if (!front->frame.isEmpty())
            return front->frame;
        const auto screens = QGuiApplication::screens();
        const auto display = std::ranges::find(screens, front->output, &QScreen::name);
        return display == screens.end() ? std::nullopt : std::optional((*display)->geometry());
    };
}

} // namespace orvanta
