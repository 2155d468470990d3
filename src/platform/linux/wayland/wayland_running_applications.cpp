#include "platform/linux/wayland/wayland_running_applications.h"

#include "platform/linux/application_groups.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cstddef>
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

std::vector<ApplicationIdentity::Application> applicationsOf(ApplicationIdentity& identity, std::span<const DesktopWindow> windows)
{
    std::unordered_set<std::uint64_t> present;
    for (const DesktopWindow& window : windows)
        present.insert(window.number);
    identity.forgetAllBut(present);
    std::vector<ApplicationIdentity::Application> applications;
    for (const DesktopWindow& window : windows)
        applications.push_back(applicationOf(identity, window));
    return applications;
}

namespace {

RunningApplication running(const ApplicationIdentity::Application& application, const DesktopWindow& window)
{
    return { .bundleIdentifier = application.identifier,
        .localizedName = application.name,
        .activationPolicy = window.skipsTaskbar ? ActivationPolicy::accessory : ActivationPolicy::regular };
}

} // namespace

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
    return running(applicationOf(m_identity, *window), *window);
}

std::vector<RunningApplication> WaylandRunningApplications::all()
{
    WindowFeed* feed = m_windows->feed();
    if (!feed)
        return {};
    m_identity.refresh();
    const std::vector<DesktopWindow> windows = feed->windows();
    const auto applications = applicationsOf(m_identity, windows);
    ApplicationGroups groups;
    for (std::size_t place = 0; place < windows.size(); ++place)
        groups.add(running(applications[place], windows[place]), windows[place].traits.process, windows[place].number);
    return groups.take();
}

void WaylandRunningApplications::hide(const QString& bundleIdentifier)
{
    WindowFeed* feed = m_windows->feed();
    if (!feed)
        return;
    m_identity.refresh();
    const std::vector<DesktopWindow> windows = feed->windows();
    const auto applications = applicationsOf(m_identity, windows);
    std::vector<DesktopWindow> own;
    for (std::size_t place = 0; place < windows.size(); ++place) {
        if (applications[place].identifier == bundleIdentifier)
            own.push_back(windows[place]);
    }
    if (!own.empty())
        feed->hide(own);
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
