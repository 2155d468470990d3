#pragma once

// What the macOS layer uses of Security, declared from what is publicly documented.

#include <CoreFoundation/CoreFoundation.h>

#include <stdint.h>

typedef int32_t OSStatus;

enum : OSStatus {
    errSecSuccess = 0,
    errSecItemNotFound = -25300,
    errSecInteractionNotAllowed = -25308,
};

#ifdef __cplusplus
extern "C" {
#endif

extern const CFStringRef _Nonnull kSecClass;
extern const CFStringRef _Nonnull kSecClassGenericPassword;
extern const CFStringRef _Nonnull kSecAttrService;
extern const CFStringRef _Nonnull kSecAttrAccount;
extern const CFStringRef _Nonnull kSecReturnData;
extern const CFStringRef _Nonnull kSecMatchLimit;
extern const CFStringRef _Nonnull kSecMatchLimitOne;

OSStatus SecItemCopyMatching(CFDictionaryRef _Nonnull query, CFTypeRef _Nullable* _Nullable result);

#ifdef __cplusplus
}
#endif
