#pragma once

#include <QRect>

#import <Foundation/Foundation.h>

namespace orvanta {

// Frames keep AppKit's coordinates; screens and panels stand on whole points.

[[nodiscard]] inline QRect toQRect(NSRect rect)
{
    return { qRound(rect.origin.x), qRound(rect.origin.y), qRound(rect.size.width), qRound(rect.size.height) };
}

[[nodiscard]] inline NSRect toNSRect(const QRect& rect)
{
    return NSMakeRect(rect.x(), rect.y(), rect.width(), rect.height());
}

} // namespace orvanta
