#include "platform/macos/workspace_activation_monitor.h"

#include "platform/macos/foundation_values.h"
#include "platform/macos/notification_observation.h"

#import <AppKit/AppKit.h>

namespace orvanta {

namespace {

std::optional<QString> activatedApplication(NSNotification* notification)
{
    id application = [notification.userInfo objectForKey:NSWorkspaceApplicationKey];
    if (![application isKindOfClass:NSRunningApplication.class])
        return std::nullopt;
    return toText(static_cast<NSRunningApplication*>(application).bundleIdentifier);
}

} // namespace

Subscription WorkspaceActivationMonitor::observe(Callback<std::optional<QString>> activated)
{
    @autoreleasepool {
        return observeNotification<std::optional<QString>>(m_observations, NSWorkspace.sharedWorkspace.notificationCenter,
            NSWorkspaceDidActivateApplicationNotification, nil, activatedApplication, std::move(activated));
    }
}

} // namespace orvanta
