#pragma once

// What the macOS layer uses of System Extensions, declared from what is publicly documented.

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#pragma clang assume_nonnull begin

typedef NS_ENUM(NSInteger, OSSystemExtensionReplacementAction) {
    OSSystemExtensionReplacementActionCancel = 0,
    OSSystemExtensionReplacementActionReplace = 1,
};

typedef NS_ENUM(NSInteger, OSSystemExtensionRequestResult) {
    OSSystemExtensionRequestCompleted = 0,
    OSSystemExtensionRequestWillCompleteAfterReboot = 1,
};

@interface OSSystemExtensionProperties : NSObject
@property (readonly) BOOL isEnabled;
@end

@class OSSystemExtensionRequest;

@protocol OSSystemExtensionRequestDelegate <NSObject>
- (OSSystemExtensionReplacementAction)request:(OSSystemExtensionRequest*)request
                  actionForReplacingExtension:(OSSystemExtensionProperties*)existing
                                withExtension:(OSSystemExtensionProperties*)ext;
- (void)requestNeedsUserApproval:(OSSystemExtensionRequest*)request;
- (void)request:(OSSystemExtensionRequest*)request didFinishWithResult:(OSSystemExtensionRequestResult)result;
- (void)request:(OSSystemExtensionRequest*)request didFailWithError:(NSError*)error;
@optional
- (void)request:(OSSystemExtensionRequest*)request foundProperties:(NSArray<OSSystemExtensionProperties*>*)properties;
@end

@interface OSSystemExtensionRequest : NSObject
#if __has_feature(objc_arc)
@property (nullable, weak) id<OSSystemExtensionRequestDelegate> delegate;
#else
@property (nullable, assign) id<OSSystemExtensionRequestDelegate> delegate;
#endif
+ (instancetype)activationRequestForExtension:(NSString*)identifier queue:(dispatch_queue_t)queue;
+ (instancetype)propertiesRequestForExtension:(NSString*)identifier queue:(dispatch_queue_t)queue;
@end

@interface OSSystemExtensionManager : NSObject
@property (class, readonly) OSSystemExtensionManager* sharedManager;
- (void)submitRequest:(OSSystemExtensionRequest*)request;
@end

#pragma clang assume_nonnull end
