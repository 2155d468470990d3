#include "platform/macos/intents_system_focus.h"

#include "platform/macos/foundation_values.h"

#import <Intents/Intents.h>
#import <UserNotifications/UserNotifications.h>

namespace orvanta {

namespace {

FocusAuthorisation toAuthorisation(INFocusStatusAuthorizationStatus status)
{
    switch (status) {
    case INFocusStatusAuthorizationStatusRestricted:
        return FocusAuthorisation::restricted;
    case INFocusStatusAuthorizationStatusDenied:
        return FocusAuthorisation::denied;
    case INFocusStatusAuthorizationStatusAuthorized:
        return FocusAuthorisation::authorised;
    case INFocusStatusAuthorizationStatusNotDetermined:
        break;
    }
    return FocusAuthorisation::notDetermined;
}

} // namespace

void IntentsSystemFocus::requestNotificationPermission(Callback<const Result<bool>&> answered)
{
    @autoreleasepool {
        const auto hop = m_owner.hop();
        const auto answer = std::make_shared<Callback<const Result<bool>&>>(std::move(answered));
        [UNUserNotificationCenter.currentNotificationCenter
            requestAuthorizationWithOptions:UNAuthorizationOptionAlert
                          completionHandler:^(BOOL granted, NSError* error) {
                              const Result<bool> result = error ? Result<bool>(std::unexpected(toPlatformError(error))) : Result<bool>(granted);
                              hop([answer, result] { (*answer)(result); });
                          }];
    }
}

void IntentsSystemFocus::requestAuthorisation(Callback<FocusAuthorisation> answered)
{
    @autoreleasepool {
        const auto hop = m_owner.hop();
        const auto answer = std::make_shared<Callback<FocusAuthorisation>>(std::move(answered));
        [INFocusStatusCenter.defaultCenter requestAuthorizationWithCompletionHandler:^(
            INFocusStatusAuthorizationStatus status) { hop([answer, status] { (*answer)(toAuthorisation(status)); }); }];
    }
}

FocusAuthorisation IntentsSystemFocus::authorisation() const
{
    @autoreleasepool {
        return toAuthorisation(INFocusStatusCenter.defaultCenter.authorizationStatus);
    }
}

std::optional<bool> IntentsSystemFocus::isFocused() const
{
    @autoreleasepool {
        NSNumber* isFocused = INFocusStatusCenter.defaultCenter.focusStatus.isFocused;
        return isFocused ? std::optional<bool>(isFocused.boolValue) : std::nullopt;
    }
}

} // namespace orvanta
