#include "platform/platform.h"

#include "platform/macos/appkit_overlay_panels.h"
#include "platform/macos/appkit_screens.h"
#include "platform/macos/apple_script_runner.h"
#include "platform/macos/bundle_application_folders.h"
#include "platform/macos/darwin_notifications.h"
#include "platform/macos/event_idle_source.h"
#include "platform/macos/intents_system_focus.h"
#include "platform/macos/keychain_secret_store.h"
#include "platform/macos/network_dns_proxy_manager.h"
#include "platform/macos/network_filter_manager.h"
#include "platform/macos/system_extension_manager.h"
#include "platform/macos/task_process_lister.h"
#include "platform/macos/ubiquitous_cloud_store.h"
#include "platform/macos/user_defaults_store.h"
#include "platform/macos/workspace_activation_monitor.h"
#include "platform/macos/workspace_application_directory.h"
#include "platform/macos/workspace_motion_preference.h"
#include "platform/macos/workspace_running_applications.h"
#include "platform/macos/workspace_url_opener.h"

namespace orvanta {

Result<void> preparePlatform()
{
    return {};
}

DesktopDiagnosis diagnoseDesktop()
{
    return { .sources = { QStringLiteral("Applications, covers, idle time and Focus: macOS itself") }, .missing = {} };
}

std::unique_ptr<MotionPreference> makeMotionPreference()
{
    return std::make_unique<WorkspaceMotionPreference>();
}

MakeActivitySources activitySourcesFactory()
{
    return [] {
        return ActivitySources { .applications = std::make_unique<WorkspaceRunningApplications>(),
            .scripts = std::make_unique<AppleScriptRunner>(),
            .idle = std::make_unique<EventIdleSource>(),
            .processes = std::make_unique<TaskProcessLister>() };
    };
}

Platform makePlatform(OverlayContentFactory& contents)
{
    Platform platform;
    platform.defaults = std::make_unique<UserDefaultsStore>();
    platform.cloudStore = std::make_unique<UbiquitousCloudStore>();
    platform.secrets = std::make_unique<KeychainSecretStore>();
    platform.screens = std::make_unique<AppKitScreens>();
    platform.overlayPanels = std::make_unique<AppKitOverlayPanels>(contents);
    platform.runningApplications = std::make_unique<WorkspaceRunningApplications>();
    platform.activationMonitor = std::make_unique<WorkspaceActivationMonitor>();
    platform.extensionManager = std::make_unique<SystemExtensionManager>();
    platform.filterManager = std::make_unique<NetworkFilterManager>();
    platform.dnsProxyManager = std::make_unique<NetworkDnsProxyManager>();
    platform.systemNotifications = std::make_unique<DarwinNotifications>();
    platform.urlOpener = std::make_unique<WorkspaceUrlOpener>();
    platform.systemFocus = std::make_unique<IntentsSystemFocus>();
    platform.applicationFolders = std::make_unique<BundleApplicationFolders>();
    platform.applicationDirectory = std::make_unique<WorkspaceApplicationDirectory>();
    platform.activitySources = activitySourcesFactory();
    return platform;
}

} // namespace orvanta
