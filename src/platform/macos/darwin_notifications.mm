#include "platform/macos/darwin_notifications.h"

#include "platform/macos/foundation_values.h"
#include "platform/macos/main_queue.h"

#include <CoreFoundation/CoreFoundation.h>

namespace orvanta {

namespace {

/// One registration. The centre knows it by its address alone, so it takes itself out before it goes.
class DarwinObserver : public std::enable_shared_from_this<DarwinObserver> {
public:
    explicit DarwinObserver(Callback<> delivered) : m_delivered(std::move(delivered)) { }
    DarwinObserver(const DarwinObserver&) = delete;
    DarwinObserver& operator=(const DarwinObserver&) = delete;
    ~DarwinObserver() { CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetDarwinNotifyCenter(), this); }

    void start(const QString& name)
    {
        CFNotificationCenterAddObserver(CFNotificationCenterGetDarwinNotifyCenter(), this, take, (__bridge CFStringRef)toNSString(name), nullptr,
            CFNotificationSuspensionBehaviorDeliverImmediately);
    }

private:
    static void take(
        CFNotificationCenterRef /*center*/, void* observer, CFNotificationName /*name*/, const void* /*object*/, CFDictionaryRef /*userInfo*/)
    {
        if (!observer)
            return;
        onMainQueue([weak = static_cast<DarwinObserver*>(observer)->weak_from_this()] {
            if (const auto self = weak.lock())
                self->m_delivered();
        });
    }

    Callback<> m_delivered;
};

} // namespace

Subscription DarwinNotifications::observe(const QString& name, Callback<> delivered)
{
    @autoreleasepool {
        auto observer = std::make_shared<DarwinObserver>(std::move(delivered));
        observer->start(name);
        return m_observations.endWith([observer = std::move(observer)]() mutable { observer.reset(); });
    }
}

} // namespace orvanta
