#include "platform/macos/workspace_running_applications.h"

#include "platform/macos/foundation_values.h"

#import <AppKit/AppKit.h>

namespace orvanta {

namespace {

RunningApplication toRunningApplication(NSRunningApplication* application)
{
    return { .bundleIdentifier = toText(application.bundleIdentifier),
        .localizedName = toText(application.localizedName),
        .activationPolicy
        = application.activationPolicy == NSApplicationActivationPolicyRegular ? ActivationPolicy::regular : ActivationPolicy::accessory };
}

} // namespace

std::optional<RunningApplication> WorkspaceRunningApplications::frontmost()
{
    @autoreleasepool {
        NSRunningApplication* application = NSWorkspace.sharedWorkspace.frontmostApplication;
        return application ? std::optional(toRunningApplication(application)) : std::nullopt;
    }
}

std::vector<RunningApplication> WorkspaceRunningApplications::all()
{
    @autoreleasepool {
        std::vector<RunningApplication> applications;
        for (NSRunningApplication* application in NSWorkspace.sharedWorkspace.runningApplications)
            applications.push_back(toRunningApplication(application));
        return applications;
    }
}

void WorkspaceRunningApplications::hide(const QString& bundleIdentifier)
{
    @autoreleasepool {
        for (NSRunningApplication* application in [NSRunningApplication runningApplicationsWithBundleIdentifier:toNSString(bundleIdentifier)])
            [application hide];
    }
}

} // namespace orvanta
