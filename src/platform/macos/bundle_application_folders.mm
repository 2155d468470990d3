#include "platform/macos/bundle_application_folders.h"

#include "platform/macos/foundation_values.h"

#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

namespace orvanta {

namespace {

constexpr NSDirectoryEnumerationOptions enumeration = NSDirectoryEnumerationSkipsPackageDescendants | NSDirectoryEnumerationSkipsHiddenFiles;

NSURL* fileUrl(const QUrl& url)
{
    return [NSURL fileURLWithPath:toNSString(url.toLocalFile())];
}

/// Absent for anything but a truth value, a number included.
std::optional<bool> toTruth(id value)
{
    if (!value || CFGetTypeID((__bridge CFTypeRef)value) != CFBooleanGetTypeID())
        return std::nullopt;
    return [static_cast<NSNumber*>(value) boolValue];
}

std::optional<ApplicationRecord> recordOf(NSURL* url)
{
    NSBundle* bundle = [[NSBundle alloc] initWithURL:url];
    if (!bundle)
        return std::nullopt;
    NSDictionary* information = bundle.infoDictionary;
    return ApplicationRecord { .applicationURL = toFileUrl(url),
        .bundleIdentifier = toText(bundle.bundleIdentifier),
        .uiElement = toTruth([information objectForKey:@"LSUIElement"]),
        .backgroundOnly = toTruth([information objectForKey:@"LSBackgroundOnly"]),
        .bundleDisplayName = toText([information objectForKey:@"CFBundleDisplayName"]),
        .bundleName = toText([information objectForKey:@"CFBundleName"]) };
}

} // namespace

std::vector<QUrl> BundleApplicationFolders::defaults() const
{
    @autoreleasepool {
        NSURL* home = NSFileManager.defaultManager.homeDirectoryForCurrentUser;
        return { QUrl::fromLocalFile(QStringLiteral("/Applications")), QUrl::fromLocalFile(QStringLiteral("/System/Applications")),
            toFileUrl([home URLByAppendingPathComponent:@"Applications"]) };
    }
}

std::vector<ApplicationRecord> BundleApplicationFolders::records(const QUrl& folder) const
{
    @autoreleasepool {
        std::vector<ApplicationRecord> records;
        NSDirectoryEnumerator* items = [NSFileManager.defaultManager enumeratorAtURL:fileUrl(folder)
                                                          includingPropertiesForKeys:nil
                                                                             options:enumeration
                                                                        errorHandler:nil];
        for (id item in items) {
            @autoreleasepool {
                if (![item isKindOfClass:NSURL.class])
                    continue;
                NSURL* url = static_cast<NSURL*>(item);
                if (![url.pathExtension.lowercaseString isEqualToString:@"app"])
                    continue;
                if (auto record = recordOf(url))
                    records.push_back(*std::move(record));
            }
        }
        return records;
    }
}

std::optional<ApplicationRecord> BundleApplicationFolders::record(const QUrl& applicationURL) const
{
    @autoreleasepool {
        return recordOf(fileUrl(applicationURL));
    }
}

std::optional<QString> BundleApplicationFolders::ownBundleIdentifier() const
{
    @autoreleasepool {
        return toText(NSBundle.mainBundle.bundleIdentifier);
    }
}

} // namespace orvanta
