#include "platform/macos/apple_script_runner.h"

#include "platform/macos/foundation_values.h"

#import <Foundation/Foundation.h>

namespace orvanta {

std::optional<QString> AppleScriptRunner::run(const Script& script)
{
    @autoreleasepool {
        NSAppleScript* compiled = [[NSAppleScript alloc] initWithSource:toNSString(script.source)];
        NSDictionary* error = nil;
        NSAppleEventDescriptor* answer = [compiled executeAndReturnError:&error];
        if (error)
            return std::nullopt;
        return toText(answer.stringValue);
    }
}

} // namespace orvanta
