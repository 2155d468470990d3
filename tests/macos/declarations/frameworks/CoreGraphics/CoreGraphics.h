#pragma once

// What the macOS layer uses of Core Graphics, declared from what is publicly documented.

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CGGeometry.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum CGEventType : uint32_t {
    kCGEventLeftMouseDown = 1,
    kCGEventLeftMouseUp = 2,
    kCGEventRightMouseDown = 3,
    kCGEventRightMouseUp = 4,
    kCGEventMouseMoved = 5,
    kCGEventKeyDown = 10,
    kCGEventKeyUp = 11,
    kCGEventScrollWheel = 22,
};

enum CGEventSourceStateID : int32_t {
    kCGEventSourceStatePrivate = -1,
    kCGEventSourceStateCombinedSessionState = 0,
    kCGEventSourceStateHIDSystemState = 1,
};

typedef double CFTimeInterval;
CFTimeInterval CGEventSourceSecondsSinceLastEventType(CGEventSourceStateID stateID, CGEventType eventType);

typedef struct CGImage* CGImageRef;
typedef struct CGContext* CGContextRef;
typedef struct CGColorSpace* CGColorSpaceRef;

typedef uint32_t CGBitmapInfo;
enum : CGBitmapInfo { kCGBitmapByteOrder32Little = 2 << 12 };
enum CGImageAlphaInfo : uint32_t { kCGImageAlphaPremultipliedFirst = 2 };

extern const CFStringRef kCGColorSpaceSRGB;
CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name);
void CGColorSpaceRelease(CGColorSpaceRef space);
CGContextRef CGBitmapContextCreate(
    void* data, size_t width, size_t height, size_t bitsPerComponent, size_t bytesPerRow, CGColorSpaceRef space, CGBitmapInfo bitmapInfo);
void CGContextDrawImage(CGContextRef c, CGRect rect, CGImageRef image);
void CGContextRelease(CGContextRef c);

static inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height)
{
    CGRect rect;
    rect.origin.x = x;
    rect.origin.y = y;
    rect.size.width = width;
    rect.size.height = height;
    return rect;
}

#ifdef __cplusplus
}
#endif
