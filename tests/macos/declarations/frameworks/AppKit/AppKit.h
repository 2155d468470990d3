#pragma once

// What the macOS layer uses of AppKit, declared from what is publicly documented.

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef NS_ENUM(NSInteger, NSApplicationActivationPolicy) {
    NSApplicationActivationPolicyRegular,
    NSApplicationActivationPolicyAccessory,
    NSApplicationActivationPolicyProhibited,
};

@interface NSRunningApplication : NSObject
@property (nullable, readonly, copy) NSString* bundleIdentifier;
@property (nullable, readonly, copy) NSString* localizedName;
@property (readonly) NSApplicationActivationPolicy activationPolicy;
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)bundleIdentifier;
- (BOOL)hide;
@end

extern NSNotificationName const NSWorkspaceDidActivateApplicationNotification;
extern NSNotificationName const NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification;
extern NSString* const NSWorkspaceApplicationKey;

@interface NSImageRep : NSObject
@property NSInteger pixelsWide;
@property NSInteger pixelsHigh;
@end

@class NSGraphicsContext;

@interface NSImage : NSObject
@property (readonly, copy) NSArray<NSImageRep*>* representations;
- (nullable CGImageRef)CGImageForProposedRect:(nullable NSRect*)proposedDestRect
                                      context:(nullable NSGraphicsContext*)referenceContext
                                        hints:(nullable NSDictionary*)hints;
@end

@interface NSWorkspace : NSObject
@property (class, readonly, strong) NSWorkspace* sharedWorkspace;
@property (readonly, strong) NSNotificationCenter* notificationCenter;
@property (nullable, readonly, strong) NSRunningApplication* frontmostApplication;
@property (readonly, copy) NSArray<NSRunningApplication*>* runningApplications;
@property (readonly) BOOL accessibilityDisplayShouldReduceMotion;
- (nullable NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)bundleIdentifier;
- (NSImage*)iconForFile:(NSString*)fullPath;
- (BOOL)openURL:(NSURL*)url;
@end

@interface NSScreen : NSObject
@property (class, readonly, copy) NSArray<NSScreen*>* screens;
@property (class, nullable, readonly, strong) NSScreen* mainScreen;
@property (readonly) NSRect frame;
@property (readonly, copy) NSDictionary<NSString*, id>* deviceDescription;
@end

@interface NSResponder : NSObject
@end

typedef NS_OPTIONS(NSUInteger, NSAutoresizingMaskOptions) {
    NSViewWidthSizable = 2,
    NSViewHeightSizable = 16,
};

@interface NSView : NSResponder
@property NSRect frame;
@property (readonly) NSRect bounds;
@property NSAutoresizingMaskOptions autoresizingMask;
- (instancetype)initWithFrame:(NSRect)frameRect __attribute__((objc_designated_initializer));
- (void)addSubview:(NSView*)view;
@end

typedef NS_OPTIONS(NSUInteger, NSWindowStyleMask) {
    NSWindowStyleMaskBorderless = 0,
    NSWindowStyleMaskNonactivatingPanel = 1 << 7,
};

typedef NS_OPTIONS(NSUInteger, NSWindowCollectionBehavior) {
    NSWindowCollectionBehaviorCanJoinAllSpaces = 1 << 0,
    NSWindowCollectionBehaviorFullScreenAuxiliary = 1 << 8,
};

typedef NS_ENUM(NSUInteger, NSBackingStoreType) {
    NSBackingStoreBuffered = 2,
};

typedef NSInteger NSWindowLevel;
static const NSWindowLevel NSFloatingWindowLevel = 3;
static const NSWindowLevel NSScreenSaverWindowLevel = 1000;

@interface NSWindow : NSResponder
@property NSWindowLevel level;
@property NSWindowCollectionBehavior collectionBehavior;
@property (getter=isOpaque) BOOL opaque;
@property BOOL hasShadow;
@property BOOL hidesOnDeactivate;
@property (getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property (readonly) BOOL canBecomeKeyWindow;
@property (readonly) NSRect frame;
@property (nullable, strong) __kindof NSView* contentView;
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag __attribute__((objc_designated_initializer));
- (void)setFrame:(NSRect)frameRect display:(BOOL)flag;
- (BOOL)makeFirstResponder:(nullable NSResponder*)responder;
- (void)makeKeyAndOrderFront:(nullable id)sender;
- (void)orderOut:(nullable id)sender;
@end

@interface NSPanel : NSWindow
@property BOOL becomesKeyOnlyIfNeeded;
@end

#pragma clang assume_nonnull end
