#include "platform/macos/workspace_url_opener.h"

#include "platform/macos/foundation_values.h"

#import <AppKit/AppKit.h>

namespace orvanta {

void WorkspaceUrlOpener::open(const QUrl& url)
{
    @autoreleasepool {
        if (NSURL* address = toNSURL(url))
            [NSWorkspace.sharedWorkspace openURL:address];
    }
}

} // namespace orvanta
