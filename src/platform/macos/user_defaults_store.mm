#include "platform/macos/user_defaults_store.h"

#include "platform/macos/foundation_values.h"
#include "platform/macos/stored_values.h"

namespace orvanta {

std::optional<StoredValue> UserDefaultsStore::value(const QString& key)
{
    @autoreleasepool {
        id value = [NSUserDefaults.standardUserDefaults objectForKey:toNSString(key)];
        if (!value)
            return std::nullopt;
        if ([value isKindOfClass:NSArray.class])
            return toStoredValue(static_cast<NSArray*>(value));
        if ([value isKindOfClass:NSData.class])
            return StoredValue(toQByteArray(static_cast<NSData*>(value)));
        return StoredValue(ForeignValue());
    }
}

Result<void> UserDefaultsStore::setValue(const QString& key, const StoredValue& value)
{
    @autoreleasepool {
        NSUserDefaults* defaults = NSUserDefaults.standardUserDefaults;
        if (const auto* texts = std::get_if<QStringList>(&value))
            [defaults setObject:toNSArray(*texts) forKey:toNSString(key)];
        else if (const auto* bytes = std::get_if<QByteArray>(&value))
            [defaults setObject:toNSData(*bytes) forKey:toNSString(key)];
        else
            return std::unexpected(foreignValueError());
        return {};
    }
}

Result<void> UserDefaultsStore::remove(const QString& key)
{
    @autoreleasepool {
        [NSUserDefaults.standardUserDefaults removeObjectForKey:toNSString(key)];
        return {};
    }
}

} // namespace orvanta
