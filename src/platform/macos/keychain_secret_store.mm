#include "platform/macos/keychain_secret_store.h"

#include "platform/macos/foundation_values.h"

#import <Security/Security.h>

namespace orvanta {

std::optional<QByteArray> KeychainSecretStore::read(const QString& service, const QString& account)
{
    @autoreleasepool {
        NSDictionary* query = @ {
            (__bridge id)kSecClass : (__bridge id)kSecClassGenericPassword,
            (__bridge id)kSecAttrService : toNSString(service),
            (__bridge id)kSecAttrAccount : toNSString(account),
            (__bridge id)kSecReturnData : [NSNumber numberWithBool:YES],
            (__bridge id)kSecMatchLimit : (__bridge id)kSecMatchLimitOne,
        };
        CFTypeRef found = nullptr;
        const OSStatus status = SecItemCopyMatching((__bridge CFDictionaryRef)query, &found);
        id item = CFBridgingRelease(found);
        if (status != errSecSuccess || ![item isKindOfClass:NSData.class])
            return std::nullopt;
        return toQByteArray(static_cast<NSData*>(item));
    }
}

} // namespace orvanta
