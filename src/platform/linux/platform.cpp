#include "platform/platform.h"

#include "platform/linux/absent_overlay_panels.h"
#include "platform/linux/browser_named_applications.h"
#include "platform/linux/desktop_application_directory.h"
#include "platform/linux/desktop_application_folders.h"
#include "platform/linux/desktop_colour_scheme.h"
#include "platform/linux/desktop_idle_source.h"
#include "platform/linux/desktop_motion_preference.h"
#include "platform/linux/desktop_report.h"
#include "platform/linux/desktop_script_runner.h"
#include "platform/linux/desktop_system_focus.h"
#include "platform/linux/desktop_url_opener.h"
#include "platform/linux/filterd_dns_proxy_manager.h"
#include "platform/linux/filterd_extension_manager.h"
#include "platform/linux/filterd_filter_manager.h"
#include "platform/linux/filterd_notifications.h"
#include "platform/linux/graphics_hardware.h"
#include "platform/linux/proc_process_lister.h"
#include "platform/linux/qt_screens.h"
#include "platform/linux/secret_service.h"
#include "platform/linux/settings_file.h"
#include "platform/linux/status_hints.h"
#include "platform/linux/synced_folder_store.h"
#include "platform/linux/wayland/layer_cover_window.h"
#include "platform/linux/wayland/wayland_activation_monitor.h"
#include "platform/linux/wayland/wayland_idle_source.h"
#include "platform/linux/wayland/wayland_running_applications.h"
#include "platform/linux/wayland/wayland_session.h"
#include "platform/linux/wayland_desktop_notices.h"
#include "platform/linux/x11_activation_monitor.h"
#include "platform/linux/x11_overlay_panels.h"
#include "platform/linux/x11_panel_windows.h"
#include "platform/linux/x11_running_applications.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QQuickWindow>

namespace orvanta {

namespace {

/// What nobody asks for by name.
struct Shared {
    PanelWindows panelWindows;
    DesktopColourScheme colourScheme;
    std::shared_ptr<CompositorWindows> compositorWindows; ///< null on an X11 desktop
};

bool isWaylandDesktop()
{
    return WaylandDisplay::open() != nullptr;
}

/// `screens` where they know what is beneath a cover, otherwise null.
std::unique_ptr<OverlayPanels> makeOverlayPanels(
    OverlayContentFactory& contents, PanelWindows& panelWindows, X11CoverWindow::LastResort lastResort, const QtScreens* screens)
{
    std::unique_ptr<CoverPanels> panels;
    if (const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
        panels = std::make_unique<X11OverlayPanels>(contents, x11->connection(), panelWindows, lastResort);
    else if (auto shell = LayerShell::find())
        panels = std::make_unique<LayerOverlayPanels>(contents, std::move(shell));
    else
        return std::make_unique<AbsentOverlayPanels>();
    if (screens)
        panels->goWithWindowInFront([screens]() -> std::optional<QRect> {
            const std::optional<Screen> holder = screens->ofKeyWindow();
            return holder ? std::optional(holder->frame) : std::nullopt;
        });
    return panels;
}

} // namespace

Result<void> preparePlatform()
{
    const QString chosen = qEnvironmentVariable("QT_QPA_PLATFORM");
    if (!chosen.isEmpty() && !chosen.startsWith(QStringLiteral("xcb")) && !chosen.startsWith(QStringLiteral("wayland")))
        return std::unexpected(
            PlatformError { QStringLiteral("Orvanta Focus works on an X11 or Wayland desktop; QT_QPA_PLATFORM asks for something else") });
    const SessionTraits session = findSessionTraits();
    switch (coverManner(session, chosen)) {
    case CoverManner::layerSurface:
        useWaylandWindows(session);
        return {};
    case CoverManner::x11Window:
        qputenv("QT_QPA_PLATFORM", chosen.isEmpty() ? "xcb" : chosen.toUtf8());
        return {};
    case CoverManner::none:
        break;
    }
    // Qt would abort where there is nothing to show a window on; asked first, we can say it.
    if (!session.isWayland || !session.hasQtForWayland || chosen.startsWith(QStringLiteral("xcb")))
        return std::unexpected(PlatformError { session.xServerProblem });
    useWaylandWindows(session); // without covers, but all the rest
    return {};
}

DesktopDiagnosis diagnoseDesktop()
{
    const DesktopFindings found = findDesktop();
    return { .sources = sourcesInUse(found), .missing = whatIsMissing(found) };
}

std::unique_ptr<MotionPreference> makeMotionPreference()
{
    return std::make_unique<DesktopMotionPreference>();
}

MakeActivitySources activitySourcesFactory()
{
    return [own = OwnApplication::current()] {
        const bool isWayland = isWaylandDesktop();
        std::unique_ptr<RunningApplications> windows;
        if (isWayland)
            windows = std::make_unique<WaylandRunningApplications>(std::make_shared<CompositorWindows>(), own);
        else
            windows = std::make_unique<X11RunningApplications>(X11RunningApplications::Use::periodic, own);
        auto applications = std::make_unique<BrowserNamedApplications>(std::move(windows));
        auto scripts = std::make_unique<DesktopScriptRunner>(*applications);
        std::unique_ptr<IdleSource> idle;
        if (isWayland)
            idle = std::make_unique<WaylandIdleSource>();
        else
            idle = std::make_unique<DesktopIdleSource>();
        return ActivitySources { .applications = std::move(applications),
            .scripts = std::move(scripts),
            .idle = std::move(idle),
            .processes = std::make_unique<ProcProcessLister>() };
    };
}

Platform makePlatform(OverlayContentFactory& contents)
{
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND") && !hasGraphicsHardware())
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);

    auto shared = std::make_shared<Shared>();
    auto settings = std::make_unique<SettingsFile>();

    Platform platform;
    if (const auto problem = settings->takeProblem())
        platform.notices << *problem;
    platform.defaults = std::move(settings);
    platform.cloudStore = std::make_unique<SyncedFolderStore>();
    platform.secrets = std::make_unique<SecretService>();
    if (isWaylandDesktop())
        shared->compositorWindows = std::make_shared<CompositorWindows>();
    auto screens = shared->compositorWindows
        ? std::make_unique<QtScreens>(waylandKeyWindowGeometry(shared->compositorWindows), QtScreens::Pixels::logical)
        : std::make_unique<QtScreens>();
    platform.overlayPanels = makeOverlayPanels(contents, shared->panelWindows,
        shared->compositorWindows ? X11CoverWindow::LastResort::none : X11CoverWindow::LastResort::withoutWindowManager,
        shared->compositorWindows ? screens.get() : nullptr);
    platform.screens = std::move(screens);
    if (shared->compositorWindows) {
        platform.runningApplications = std::make_unique<WaylandRunningApplications>(shared->compositorWindows);
        platform.activationMonitor = std::make_unique<WaylandActivationMonitor>(*shared->compositorWindows);
        platform.desktopNotices = std::make_unique<WaylandDesktopNotices>(*shared->compositorWindows);
    } else {
        platform.runningApplications = std::make_unique<X11RunningApplications>();
        platform.activationMonitor = std::make_unique<X11ActivationMonitor>(shared->panelWindows);
    }
    platform.extensionManager = std::make_unique<FilterdExtensionManager>();
    platform.filterManager = std::make_unique<FilterdFilterManager>();
    platform.dnsProxyManager = std::make_unique<FilterdDnsProxyManager>();
    platform.systemNotifications = std::make_unique<FilterdNotifications>();
    platform.urlOpener = std::make_unique<DesktopUrlOpener>();
    platform.systemFocus = std::make_unique<DesktopSystemFocus>();
    platform.applicationFolders = std::make_unique<DesktopApplicationFolders>();
    platform.applicationDirectory = std::make_unique<DesktopApplicationDirectory>();
    platform.statusHint = &desktopStatusHint;
    platform.activitySources = activitySourcesFactory();
    platform.shared = std::move(shared);
    return platform;
}

} // namespace orvanta
