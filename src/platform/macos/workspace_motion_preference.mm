#include "platform/macos/workspace_motion_preference.h"

#include "platform/macos/notification_observation.h"

#import <AppKit/AppKit.h>

namespace orvanta {

namespace {

bool isMotionReduced()
{
    return NSWorkspace.sharedWorkspace.accessibilityDisplayShouldReduceMotion;
}

} // namespace

bool WorkspaceMotionPreference::reduceMotion() const
{
    @autoreleasepool {
        return isMotionReduced();
    }
}

Subscription WorkspaceMotionPreference::observe(Callback<bool> changed)
{
    @autoreleasepool {
        auto told = [last = isMotionReduced(), changed = std::move(changed)]() mutable {
            if (const bool now = isMotionReduced(); std::exchange(last, now) != now)
                changed(now);
        };
        return observeNotification(m_observations, NSWorkspace.sharedWorkspace.notificationCenter,
            NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification, nil, std::move(told));
    }
}

} // namespace orvanta
