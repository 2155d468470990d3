#include "platform/platform.h"

#include "platform/linux/desktop_motion_preference.h"
#include "platform/linux/graphics_hardware.h"
#include "platform/linux/qt_screens.h"
#include "platform/linux/secret_service.h"
#include "platform/linux/settings_file.h"
#include "platform/linux/synced_folder_store.h"
#include "platform/linux/x11_activation_monitor.h"
#include "platform/linux/x11_overlay_panels.h"
#include "platform/linux/x11_panel_windows.h"
#include "platform/linux/x11_running_applications.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QQuickWindow>

namespace orvanta {

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

Platform makePlatform(OverlayContentFactory& contents)
{
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND") && !hasGraphicsHardware())
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);

    auto panelWindows = std::make_shared<PanelWindows>();
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
    platform.overlayPanels = std::make_unique<X11OverlayPanels>(contents, x11->connection(), *panelWindows);
    platform.runningApplications = std::make_unique<X11RunningApplications>();
    platform.activationMonitor = std::make_unique<X11ActivationMonitor>(*panelWindows);
    platform.shared = std::move(panelWindows);
    return platform;
}

} // namespace orvanta
