#pragma once

// What the macOS layer uses of Intents, declared from what is publicly documented.

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef NS_ENUM(NSInteger, INFocusStatusAuthorizationStatus) {
    INFocusStatusAuthorizationStatusNotDetermined = 0,
    INFocusStatusAuthorizationStatusRestricted,
    INFocusStatusAuthorizationStatusDenied,
    INFocusStatusAuthorizationStatusAuthorized,
};

@interface INFocusStatus : NSObject
@property (nullable, readonly, copy) NSNumber* isFocused;
@end

@interface INFocusStatusCenter : NSObject
@property (class, readonly, strong) INFocusStatusCenter* defaultCenter;
@property (readonly, strong) INFocusStatus* focusStatus;
@property (readonly) INFocusStatusAuthorizationStatus authorizationStatus;
- (void)requestAuthorizationWithCompletionHandler:(nullable void (^)(INFocusStatusAuthorizationStatus status))completionHandler;
@end

#pragma clang assume_nonnull end
