#include "macos/gnustep/fakes/fake_workspace.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/object_state.h"
#include "platform/macos/appkit_geometry.h"
#include "platform/macos/foundation_values.h"

#include <map>

#import <AppKit/AppKit.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

NSNotificationName const NSWorkspaceDidActivateApplicationNotification = @"NSWorkspaceDidActivateApplicationNotification";
NSNotificationName const NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification = @"NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification";
NSString* const NSWorkspaceApplicationKey = @"NSWorkspaceApplicationKey";

namespace {

struct Application {
    FakeApplication application;
    bool isHidden = false;
};

NSMutableArray* applications = nil;
NSRunningApplication* front = nil;
NSNotificationCenter* center = nil;
bool reducesMotion = false;
std::map<QString, QString> bundles;
std::vector<FakeScreen> connected;
std::size_t keyScreen = 0;

const ResetAtBegin resetAtBegin([] {
    keep(applications, [NSMutableArray array]);
    front = nil;
    reducesMotion = false;
    bundles.clear();
    connected.clear();
    keyScreen = 0;
});

void post(NSString* name, NSDictionary* userInfo)
{
    onAnotherThread([&] {
        [[[NSWorkspace sharedWorkspace] notificationCenter] postNotificationName:name object:[NSWorkspace sharedWorkspace] userInfo:userInfo];
    });
}

NSString* text(const std::optional<QString>& value)
{
    return value ? toNSString(*value) : nil;
}

NSScreen* makeScreen(const FakeScreen& screen)
{
    NSScreen* made = [[[NSScreen alloc] init] autorelease];
    stateOf<FakeScreen>(made) = screen;
    return made;
}

} // namespace

@implementation NSRunningApplication

+ (NSArray*)runningApplicationsWithBundleIdentifier:(NSString*)identifier
{
    record(QStringLiteral("runningApplicationsWithBundleIdentifier ") + toQString(identifier));
    NSMutableArray* found = [NSMutableArray array];
    for (NSRunningApplication* application in applications) {
        if ([application.bundleIdentifier isEqualToString:identifier])
            [found addObject:application];
    }
    return found;
}
- (NSString*)bundleIdentifier
{
    return text(stateOf<Application>(self).application.identifier);
}
- (NSString*)localizedName
{
    return text(stateOf<Application>(self).application.name);
}
- (NSApplicationActivationPolicy)activationPolicy
{
    return static_cast<NSApplicationActivationPolicy>(stateOf<Application>(self).application.policy);
}
- (BOOL)hide
{
    record(QStringLiteral("hide ") + stateOf<Application>(self).application.name.value_or(QString()));
    stateOf<Application>(self).isHidden = true;
    if (front == self)
        front = nil;
    return YES;
}

@end

@implementation NSWorkspace

+ (NSWorkspace*)sharedWorkspace
{
    static NSWorkspace* workspace = [[NSWorkspace alloc] init];
    return workspace;
}
- (NSNotificationCenter*)notificationCenter
{
    if (!center)
        center = [[NSNotificationCenter alloc] init];
    return center;
}
- (NSRunningApplication*)frontmostApplication
{
    return front;
}
- (NSArray*)runningApplications
{
    return applications;
}
- (BOOL)accessibilityDisplayShouldReduceMotion
{
    return reducesMotion;
}
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier
{
    const auto bundle = bundles.find(toQString(identifier));
    return bundle == bundles.end() ? nil : [NSURL fileURLWithPath:toNSString(bundle->second)];
}
- (NSImage*)iconForFile:(NSString*)path
{
    record(QStringLiteral("iconForFile ") + toQString(path));
    return nil;
}
- (BOOL)openURL:(NSURL*)url
{
    record(QStringLiteral("openURL ") + toQString([url absoluteString]));
    return YES;
}

@end

@implementation NSScreen

+ (NSArray*)screens
{
    NSMutableArray* all = [NSMutableArray array];
    for (const FakeScreen& screen : connected)
        [all addObject:makeScreen(screen)];
    return all;
}
+ (NSScreen*)mainScreen
{
    if (connected.empty())
        return nil;
    return makeScreen(connected[keyScreen < connected.size() ? keyScreen : 0]);
}
- (NSRect)frame
{
    return toNSRect(stateOf<FakeScreen>(self).frame);
}
- (NSDictionary*)deviceDescription
{
    const auto& number = stateOf<FakeScreen>(self).number;
    return number ? [NSDictionary dictionaryWithObject:[NSNumber numberWithUnsignedInt:*number] forKey:@"NSScreenNumber"] : [NSDictionary dictionary];
}

@end

namespace orvanta::testing::mac {

void startApplication(const FakeApplication& application)
{
    @autoreleasepool {
        NSRunningApplication* started = [[[NSRunningApplication alloc] init] autorelease];
        stateOf<Application>(started) = { .application = application };
        [applications addObject:started];
    }
}

void activateApplication(std::size_t index)
{
    @autoreleasepool {
        front = [applications objectAtIndex:index];
        stateOf<Application>(front).isHidden = false;
        post(NSWorkspaceDidActivateApplicationNotification, [NSDictionary dictionaryWithObject:front forKey:NSWorkspaceApplicationKey]);
    }
}

void activateNobody()
{
    @autoreleasepool {
        post(NSWorkspaceDidActivateApplicationNotification, nil);
    }
}

void activateSomethingElse()
{
    @autoreleasepool {
        post(NSWorkspaceDidActivateApplicationNotification, [NSDictionary dictionaryWithObject:@"a text" forKey:NSWorkspaceApplicationKey]);
    }
}

void leaveNoApplicationInFront()
{
    front = nil;
}

bool isApplicationHidden(std::size_t index)
{
    return stateOf<Application>([applications objectAtIndex:index]).isHidden;
}

void turnReduceMotion(bool on)
{
    @autoreleasepool {
        reducesMotion = on;
        post(NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification, nil);
    }
}

void turnAnotherDisplayOption()
{
    @autoreleasepool {
        post(NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification, nil);
    }
}

void installBundle(const QString& identifier, const QString& path)
{
    bundles[identifier] = path;
}

void connectScreens(const std::vector<FakeScreen>& screens)
{
    connected = screens;
}

void putKeyWindowOnScreen(std::size_t index)
{
    keyScreen = index;
}

} // namespace orvanta::testing::mac
