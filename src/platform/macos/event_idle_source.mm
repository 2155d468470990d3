#include "platform/macos/event_idle_source.h"

#include <CoreGraphics/CoreGraphics.h>

namespace orvanta {

std::vector<double> EventIdleSource::secondsSinceLastEvents()
{
    std::vector<double> seconds;
    for (const CGEventType type : { kCGEventMouseMoved, kCGEventLeftMouseDown, kCGEventRightMouseDown, kCGEventKeyDown, kCGEventScrollWheel })
        seconds.push_back(CGEventSourceSecondsSinceLastEventType(kCGEventSourceStateHIDSystemState, type));
    return seconds;
}

} // namespace orvanta
