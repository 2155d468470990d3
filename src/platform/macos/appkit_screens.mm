#include "platform/macos/appkit_screens.h"

#include "platform/macos/appkit_geometry.h"

#import <AppKit/AppKit.h>

namespace orvanta {

namespace {

/// Absent where the system gives none.
std::optional<std::uint32_t> numberOf(NSScreen* screen)
{
    id number = [screen.deviceDescription objectForKey:@"NSScreenNumber"];
    if (![number isKindOfClass:NSNumber.class])
        return std::nullopt;
    return [static_cast<NSNumber*>(number) unsignedIntValue];
}

} // namespace

std::vector<Screen> AppKitScreens::all() const
{
    @autoreleasepool {
        std::vector<Screen> screens;
        for (NSScreen* screen in NSScreen.screens) {
            if (const auto number = numberOf(screen))
                screens.push_back({ .number = *number, .frame = toQRect(screen.frame) });
        }
        return screens;
    }
}

std::optional<Screen> AppKitScreens::main() const
{
    @autoreleasepool {
        NSScreen* screen = NSScreen.mainScreen;
        if (!screen)
            return std::nullopt;
        return Screen { .number = numberOf(screen).value_or(0), .frame = toQRect(screen.frame) };
    }
}

} // namespace orvanta
