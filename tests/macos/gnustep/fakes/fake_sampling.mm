#include "macos/gnustep/fakes/fake_sampling.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/object_state.h"
#include "platform/macos/foundation_values.h"

#include <map>

#include <CoreGraphics/CoreGraphics.h>

#import <Foundation/Foundation.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

namespace {

std::map<unsigned int, double> secondsSinceEvents;
ScriptEnd scriptEnd = ScriptEnd::noText;
QString scriptText;

const ResetAtBegin resetAtBegin([] {
    secondsSinceEvents.clear();
    scriptEnd = ScriptEnd::noText;
    scriptText.clear();
});

} // namespace

CFTimeInterval CGEventSourceSecondsSinceLastEventType(CGEventSourceStateID state, CGEventType type)
{
    record(QStringLiteral("seconds since %1 in state %2").arg(static_cast<int>(type)).arg(static_cast<int>(state)));
    const auto found = secondsSinceEvents.find(type);
    return found == secondsSinceEvents.end() ? 1e9 : found->second;
}

@implementation NSAppleEventDescriptor (OfMac)

- (NSString*)stringValue
{
    return scriptEnd == ScriptEnd::text ? toNSString(scriptText) : nil;
}

@end

@implementation NSAppleScript (OfMac)

- (id)initWithSource:(NSString*)source
{
    record(QStringLiteral("script ") + toQString(source));
    return scriptEnd == ScriptEnd::notMade ? nil : self;
}

- (NSAppleEventDescriptor*)executeAndReturnError:(NSDictionary**)error
{
    if (scriptEnd == ScriptEnd::error) {
        *error = [NSDictionary dictionaryWithObject:@"no permission" forKey:@"NSAppleScriptErrorMessage"];
        return nil;
    }
    return [[[NSAppleEventDescriptor alloc] init] autorelease];
}

@end

// By GNUstep's older names: it runs the program.
@implementation NSTask (OfMac)

- (void)setExecutableURL:(NSURL*)url
{
    record(QStringLiteral("task ") + toQString([url path]));
    [self setLaunchPath:[url path]];
}

- (NSURL*)executableURL
{
    return [NSURL fileURLWithPath:[self launchPath]];
}

- (BOOL)launchAndReturnError:(NSError**)error
{
    (void)error;
    record(QStringLiteral("launch with ") + toTexts([self arguments]).value_or(QStringList()).join(u' '));
    @try {
        [self launch];
    } @catch (NSException*) {
        return NO;
    }
    return YES;
}

@end

@implementation NSFileManager (OfMac)

- (NSURL*)homeDirectoryForCurrentUser
{
    return [NSURL fileURLWithPath:@"/Users/somebody"];
}

@end

namespace orvanta::testing::mac {

void setSecondsSinceEvent(unsigned int type, double seconds)
{
    secondsSinceEvents[type] = seconds;
}

void passSeconds(double seconds)
{
    for (auto& [type, since] : secondsSinceEvents)
        since += seconds;
}

void endScripts(ScriptEnd end, const QString& text)
{
    scriptEnd = end;
    scriptText = text;
}

} // namespace orvanta::testing::mac
