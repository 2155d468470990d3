#include "platform/linux/x11_running_applications.h"

#include "platform/linux/application_groups.h"

#include <algorithm>
#include <array>
#include <ranges>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

/// What "on every virtual desktop" is written as.
constexpr std::uint32_t everyDesktop = 0xFFFFFFFF;

bool showsItself(const X11Window& window)
{
    return !window.isDesktopOrDock && !window.skipsTaskbar;
}

/// Whether the window is a dialog of one of `windows`: the window manager takes it along with that one. Windows that say
/// they are each other's dialogs are none.
bool goesWithAnother(const X11Window& window, const std::vector<X11Window>& windows)
{
    const X11Window* owner = &window;
    for (std::size_t steps = 0; steps < windows.size(); ++steps) {
        const auto next = std::ranges::find(windows, owner->transientFor, &X11Window::id);
        if (next == windows.end())
            return owner != &window;
        owner = &*next;
    }
    return false;
}

} // namespace

X11RunningApplications::X11RunningApplications(Use use, OwnApplication own)
    : m_session(use == Use::periodic ? X11Windows::Memory::followed : X11Windows::Memory::none)
    , m_identity(std::move(own))
{
}

std::optional<RunningApplication> X11RunningApplications::frontmost()
{
    X11Windows* windows = m_session.windows();
    if (!windows)
        return std::nullopt;
    m_identity.refresh();
    const X11Desktop desktop = windows->desktop();
    if (desktop.activeWindow == XCB_NONE)
        return windows->isUnmanagedPanelShown() ? uppermost(*windows, desktop) : std::nullopt;
    const std::vector<X11Window> active = windows->describe(std::array { desktop.activeWindow });
    if (active.empty())
        return std::nullopt;
    return active.front().isPanel ? uppermost(*windows, desktop) : std::optional(application(active.front()));
}

std::optional<RunningApplication> X11RunningApplications::uppermost(X11Windows& windows, const X11Desktop& desktop)
{
    const std::vector<X11Window> stacking = windows.describe(desktop.stacking);
    for (const X11Window& window : stacking | std::views::reverse) {
        const bool isHere = !window.desktop || *window.desktop == everyDesktop || *window.desktop == desktop.currentDesktop;
        if (isHere && !window.isPanel && !window.isHidden && !window.isDesktopOrDock)
            return application(window);
    }
    return std::nullopt;
}

std::vector<RunningApplication> X11RunningApplications::all()
{
    X11Windows* windows = m_session.windows();
    if (!windows)
        return {};
    m_identity.refresh();
    const std::vector<X11Window> clients = windows->describe(windows->desktop().clients);
    m_identity.forgetAllBut(clients);

    ApplicationGroups groups;
    for (const X11Window& window : clients) {
        if (!window.isPanel)
            groups.add(application(window), window.process, window.id);
    }
    return groups.take();
}

void X11RunningApplications::hide(const QString& bundleIdentifier)
{
    X11Windows* windows = m_session.windows();
    if (!windows)
        return;
    m_identity.refresh();
    std::vector<X11Window> own = windows->describe(windows->desktop().clients);
    std::erase_if(own, [this, &bundleIdentifier](const X11Window& window) {
        return window.isPanel || window.isDesktopOrDock || m_identity.of(window).identifier != bundleIdentifier;
    });

    std::vector<xcb_window_t> wanted;
    for (const X11Window& window : own) {
        if (!goesWithAnother(window, own))
            wanted.push_back(window.id);
    }
    if (!wanted.empty())
        windows->iconify(wanted);
}

RunningApplication X11RunningApplications::application(const X11Window& window)
{
    const ApplicationIdentity::Application& identity = m_identity.of(window);
    return { .bundleIdentifier = identity.identifier,
        .localizedName = identity.name,
        .activationPolicy = showsItself(window) ? ActivationPolicy::regular : ActivationPolicy::accessory };
}

} // namespace orvanta
