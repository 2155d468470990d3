#include "platform/macos/workspace_application_directory.h"

#include "platform/macos/foundation_values.h"

#include <algorithm>

#import <AppKit/AppKit.h>

namespace orvanta {

namespace {

/// The largest picture that fits into the square, no larger than the largest that there is.
QSize fittingSize(NSImage* icon, int pixelSize)
{
    QSize largest;
    for (NSImageRep* representation in icon.representations) {
        const QSize size(static_cast<int>(representation.pixelsWide), static_cast<int>(representation.pixelsHigh));
        if (size.width() * size.height() > largest.width() * largest.height())
            largest = size;
    }
    const QSize square(pixelSize, pixelSize);
    const bool fits = largest.width() <= pixelSize && largest.height() <= pixelSize;
    return fits ? largest : largest.scaled(square, Qt::KeepAspectRatio);
}

std::optional<QImage> drawn(NSImage* icon, QSize size)
{
    if (size.isEmpty())
        return std::nullopt;
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    NSRect frame = NSMakeRect(0, 0, size.width(), size.height());
    CGImageRef picture = [icon CGImageForProposedRect:&frame context:nil hints:nil];
    if (!picture)
        return std::nullopt;
    CGColorSpaceRef colours = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
    CGContextRef context = CGBitmapContextCreate(image.bits(), static_cast<size_t>(size.width()), static_cast<size_t>(size.height()), 8,
        static_cast<size_t>(image.bytesPerLine()), colours, kCGBitmapByteOrder32Little | static_cast<CGBitmapInfo>(kCGImageAlphaPremultipliedFirst));
    CGColorSpaceRelease(colours);
    if (!context)
        return std::nullopt;
    CGContextDrawImage(context, CGRectMake(0, 0, size.width(), size.height()), picture);
    CGContextRelease(context);
    return image;
}

} // namespace

std::optional<QUrl> WorkspaceApplicationDirectory::locate(const QString& bundleIdentifier) const
{
    @autoreleasepool {
        NSURL* url = [NSWorkspace.sharedWorkspace URLForApplicationWithBundleIdentifier:toNSString(bundleIdentifier)];
        return url ? std::optional(toFileUrl(url)) : std::nullopt;
    }
}

std::optional<QImage> WorkspaceApplicationDirectory::icon(const QString& path, int pixelSize) const
{
    @autoreleasepool {
        // The workspace has a generic icon for what is not there.
        NSString* file = toNSString(path);
        if (![NSFileManager.defaultManager fileExistsAtPath:file])
            return std::nullopt;
        NSImage* icon = [NSWorkspace.sharedWorkspace iconForFile:file];
        return drawn(icon, fittingSize(icon, pixelSize));
    }
}

} // namespace orvanta
