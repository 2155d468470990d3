#pragma once

#include "platform/activation_monitor.h"
#include "platform/activity_sources.h"
#include "platform/application_directory.h"
#include "platform/application_folders.h"
#include "platform/cloud_store.h"
#include "platform/desktop_notices.h"
#include "platform/dns_proxy_manager.h"
#include "platform/extension_manager.h"
#include "platform/filter_manager.h"
#include "platform/key_value_store.h"
#include "platform/motion_preference.h"
#include "platform/overlay_panels.h"
#include "platform/running_applications.h"
#include "platform/screens.h"
#include "platform/secret_store.h"
#include "platform/system_focus.h"
#include "platform/system_notifications.h"
#include "platform/url_opener.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace orvanta {

/// What the program asks of the system. Made once, by main, which alone sees the whole: every class takes references to
/// just the interfaces that it uses.
struct Platform {
    std::shared_ptr<void> shared; ///< what the implementations have in common; destroyed last

    std::unique_ptr<KeyValueStore> defaults;
    std::unique_ptr<CloudStore> cloudStore;
    std::unique_ptr<SecretStore> secrets;
    std::unique_ptr<Screens> screens;
    std::unique_ptr<OverlayPanels> overlayPanels;
    std::unique_ptr<RunningApplications> runningApplications;
    std::unique_ptr<ActivationMonitor> activationMonitor;
    std::unique_ptr<ExtensionManager> extensionManager;
    std::unique_ptr<FilterManager> filterManager;
    std::unique_ptr<DnsProxyManager> dnsProxyManager;
    std::unique_ptr<SystemNotifications> systemNotifications;
    std::unique_ptr<UrlOpener> urlOpener;
    std::unique_ptr<SystemFocus> systemFocus;
    std::unique_ptr<ApplicationFolders> applicationFolders;
    std::unique_ptr<ApplicationDirectory> applicationDirectory;
    MakeActivitySources activitySources;
    /// Words to stand beside a status text that users of this system would not understand by itself; empty for others.
    std::function<QString(const QString& status)> statusHint;
    std::unique_ptr<DesktopNotices> desktopNotices; ///< null where the desktop lacks nothing

    /// What the user should be told about how the system was found: a damaged settings file, say.
    QStringList notices;
};

/// What has to be settled before the application object exists: the window system. An error, in a line for the user, if
/// there is none that the program can work on. Call first thing in main.
[[nodiscard]] Result<void> preparePlatform();

/// What the program works with on this desktop and what it lacks there, in lines for the user. May take a few seconds. Call before
/// the application object exists.
struct DesktopDiagnosis {
    QStringList sources;
    QStringList missing; ///< each with what can be done about it
};
[[nodiscard]] DesktopDiagnosis diagnoseDesktop();

/// Apart from the rest, since what the panels show needs it. Call after the application object exists.
[[nodiscard]] std::unique_ptr<MotionPreference> makeMotionPreference();

/// What a sample of the user's activity is taken from, for the threads that take one. Call after the application object
/// exists, on the main thread; the result may be called on any thread.
[[nodiscard]] MakeActivitySources activitySourcesFactory();

/// The rest, with panels that show what `contents` makes; `contents` outlives the platform. Chooses how windows are
/// drawn as well, so call it before the first window, on the main thread.
[[nodiscard]] Platform makePlatform(OverlayContentFactory& contents);

} // namespace orvanta
