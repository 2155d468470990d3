#pragma once

// What the macOS layer uses of Core Foundation, declared from what is publicly documented.

typedef const void* CFTypeRef;
typedef unsigned long CFTypeID;
typedef long CFIndex;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFDictionary* CFDictionaryRef;

#ifdef __cplusplus
extern "C" {
#endif

CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFBooleanGetTypeID(void);

typedef struct __CFNotificationCenter* CFNotificationCenterRef;
typedef CFStringRef CFNotificationName;
typedef void (*CFNotificationCallback)(
    CFNotificationCenterRef center, void* observer, CFNotificationName name, const void* object, CFDictionaryRef userInfo);

enum CFNotificationSuspensionBehavior : CFIndex {
    CFNotificationSuspensionBehaviorDrop = 1,
    CFNotificationSuspensionBehaviorCoalesce = 2,
    CFNotificationSuspensionBehaviorHold = 3,
    CFNotificationSuspensionBehaviorDeliverImmediately = 4,
};

CFNotificationCenterRef CFNotificationCenterGetDarwinNotifyCenter(void);
void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer, CFNotificationCallback callBack, CFStringRef name,
    const void* object, CFNotificationSuspensionBehavior suspensionBehavior);
void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer);

#ifdef __cplusplus
}
#endif

#ifdef __OBJC__
#if __has_feature(objc_arc)
/// Hands a value that we own over to ARC.
static inline id _Nullable CFBridgingRelease(CFTypeRef __attribute__((cf_consumed)) _Nullable value)
{
    return (__bridge_transfer id)value;
}
#else
static inline id CFBridgingRelease(CFTypeRef value)
{
    return (id)value;
}
#endif
#endif
