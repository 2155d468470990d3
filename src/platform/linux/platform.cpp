#include "platform/platform.h"

#include "platform/linux/browser_named_applications.h"
#include "platform/linux/desktop_application_directory.h"
#include "platform/linux/desktop_application_folders.h"
#include "platform/linux/desktop_colour_scheme.h"
#include "platform/linux/desktop_idle_source.h"
#include "platform/linux/desktop_motion_preference.h"
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
};

} // namespace

Result<void> preparePlatform()
{
    // On a Wayland desktop our windows go through XWayland: the cover has to stand above everything, which Wayland's
    // ordinary windows cannot.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    if (!qEnvironmentVariable("QT_QPA_PLATFORM").startsWith(QStringLiteral("xcb")))
        return std::unexpected(PlatformError { QStringLiteral("Orvanta Focus works on an X11 desktop; QT_QPA_PLATFORM asks for something else") });
    // Qt would abort where there is no X server; asked first, we can say it.
    if (const auto connection = X11Connection::open(); !connection)
        return std::unexpected(connection.error());
    return {};
}

std::unique_ptr<MotionPreference> makeMotionPreference()
{
    return std::make_unique<DesktopMotionPreference>();
}

MakeActivitySources activitySourcesFactory()
{
    return [own = OwnApplication::current()] {
        auto applications
            = std::make_unique<BrowserNamedApplications>(std::make_unique<X11RunningApplications>(X11RunningApplications::Use::periodic, own));
        auto scripts = std::make_unique<DesktopScriptRunner>(*applications);
        return ActivitySources { .applications = std::move(applications),
            .scripts = std::move(scripts),
            .idle = std::make_unique<DesktopIdleSource>(),
            .processes = std::make_unique<ProcProcessLister>() };
    };
}

Platform makePlatform(OverlayContentFactory& contents)
{
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND") && !hasGraphicsHardware())
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);

    auto shared = std::make_shared<Shared>();
    auto settings = std::make_unique<SettingsFile>();
    auto synced = std::make_unique<SyncedFolderStore>();

    Platform platform;
    for (auto problem : { settings->takeProblem(), synced->takeProblem() })
        if (problem)
            platform.notices << *problem;
    platform.defaults = std::move(settings);
    platform.cloudStore = std::move(synced);
    platform.secrets = std::make_unique<SecretService>();
    platform.screens = std::make_unique<QtScreens>();
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    platform.overlayPanels = std::make_unique<X11OverlayPanels>(contents, x11->connection(), shared->panelWindows);
    platform.runningApplications = std::make_unique<X11RunningApplications>();
    platform.activationMonitor = std::make_unique<X11ActivationMonitor>(shared->panelWindows);
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
