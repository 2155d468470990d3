#include "platform/macos/ubiquitous_cloud_store.h"

#include "platform/macos/foundation_values.h"
#include "platform/macos/notification_observation.h"
#include "platform/macos/stored_values.h"

namespace orvanta {

std::optional<StoredValue> UbiquitousCloudStore::value(const QString& key)
{
    @autoreleasepool {
        NSUbiquitousKeyValueStore* store = NSUbiquitousKeyValueStore.defaultStore;
        NSString* name = toNSString(key);
        if (NSArray* array = [store arrayForKey:name])
            return toStoredValue(array);
        if (NSData* data = [store dataForKey:name])
            return StoredValue(toQByteArray(data));
        return [store objectForKey:name] ? std::optional<StoredValue>(ForeignValue()) : std::nullopt;
    }
}

Result<void> UbiquitousCloudStore::setValue(const QString& key, const StoredValue& value)
{
    @autoreleasepool {
        NSUbiquitousKeyValueStore* store = NSUbiquitousKeyValueStore.defaultStore;
        NSString* name = toNSString(key);
        if (const auto* texts = std::get_if<QStringList>(&value))
            [store setArray:toNSArray(*texts) forKey:name];
        else if (const auto* bytes = std::get_if<QByteArray>(&value))
            [store setData:toNSData(*bytes) forKey:name];
        else
            return std::unexpected(foreignValueError());
        return {};
    }
}

Result<void> UbiquitousCloudStore::remove(const QString& key)
{
    @autoreleasepool {
        [NSUbiquitousKeyValueStore.defaultStore removeObjectForKey:toNSString(key)];
        return {};
    }
}

void UbiquitousCloudStore::synchronise()
{
    @autoreleasepool {
        [NSUbiquitousKeyValueStore.defaultStore synchronize];
    }
}

Subscription UbiquitousCloudStore::observeExternalChanges(Callback<> changed)
{
    @autoreleasepool {
        return observeNotification(m_observations, NSNotificationCenter.defaultCenter, NSUbiquitousKeyValueStoreDidChangeExternallyNotification,
            NSUbiquitousKeyValueStore.defaultStore, std::move(changed));
    }
}

} // namespace orvanta
