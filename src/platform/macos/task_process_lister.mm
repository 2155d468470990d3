#include "platform/macos/task_process_lister.h"

#include "platform/macos/foundation_values.h"

#import <Foundation/Foundation.h>

namespace orvanta {

std::optional<QByteArray> TaskProcessLister::list(double /*leastCpuPercent*/)
{
    @autoreleasepool {
        NSPipe* output = [NSPipe pipe];
        NSTask* task = [[NSTask alloc] init];
        task.executableURL = [NSURL fileURLWithPath:@"/bin/ps"];
        task.arguments = @[ @"-axo", @"pcpu=,command=" ];
        task.standardOutput = output;
        if (![task launchAndReturnError:nullptr])
            return std::nullopt;
        // To its end before the exit is waited for: a full pipe would hold it up.
        NSData* listing = [output.fileHandleForReading readDataToEndOfFile];
        [task waitUntilExit];
        if (task.terminationStatus != 0)
            return std::nullopt;
        return toQByteArray(listing);
    }
}

} // namespace orvanta
