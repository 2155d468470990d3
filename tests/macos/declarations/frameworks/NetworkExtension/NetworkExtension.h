#pragma once

// What the macOS layer uses of Network Extension, declared from what is publicly documented.

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef NS_ENUM(NSInteger, NEFilterManagerGrade) {
    NEFilterManagerGradeFirewall = 1,
    NEFilterManagerGradeInspector = 2,
};

@interface NEFilterProviderConfiguration : NSObject
@property BOOL filterSockets;
@property BOOL filterPackets;
@property (nullable, copy) NSString* filterDataProviderBundleIdentifier;
@property (nullable, copy) NSDictionary<NSString*, id>* vendorConfiguration;
@end

@interface NEFilterManager : NSObject
@property (nullable, copy) NSString* localizedDescription;
@property (nullable, strong) NEFilterProviderConfiguration* providerConfiguration;
@property (getter=isEnabled) BOOL enabled;
@property NEFilterManagerGrade grade;
+ (NEFilterManager*)sharedManager;
- (void)loadFromPreferencesWithCompletionHandler:(void (^)(NSError* _Nullable error))completionHandler;
- (void)saveToPreferencesWithCompletionHandler:(void (^)(NSError* _Nullable error))completionHandler;
@end

@interface NEDNSProxyProviderProtocol : NSObject
@property (nullable, copy) NSString* providerBundleIdentifier;
@end

@interface NEDNSProxyManager : NSObject
@property (nullable, strong) NEDNSProxyProviderProtocol* providerProtocol;
+ (NEDNSProxyManager*)sharedManager;
- (void)loadFromPreferencesWithCompletionHandler:(void (^)(NSError* _Nullable error))completionHandler;
- (void)removeFromPreferencesWithCompletionHandler:(void (^)(NSError* _Nullable error))completionHandler;
@end

#pragma clang assume_nonnull end
