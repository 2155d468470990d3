#include "macos/gnustep/fakes/fake_darwin_centre.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "platform/macos/foundation_values.h"

#include <vector>

#include <CoreFoundation/CoreFoundation.h>

#import <Foundation/Foundation.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

struct __CFNotificationCenter {
    struct Registration {
        const void* observer = nullptr;
        CFNotificationCallback callBack = nullptr;
        QString name;
    };
    std::vector<Registration> registrations;
};

namespace {

__CFNotificationCenter centre;

const ResetAtBegin resetAtBegin([] { centre.registrations.clear(); });

} // namespace

CFNotificationCenterRef CFNotificationCenterGetDarwinNotifyCenter()
{
    return &centre;
}

void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer, CFNotificationCallback callBack, CFStringRef name,
    const void* object, CFNotificationSuspensionBehavior suspensionBehavior)
{
    const QString text = toQString((NSString*)name);
    record(QStringLiteral("add observer of %1, object %2, behaviour %3")
            .arg(text, object ? QStringLiteral("one") : QStringLiteral("none"))
            .arg(static_cast<int>(suspensionBehavior)));
    center->registrations.push_back({ .observer = observer, .callBack = callBack, .name = text });
}

void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer)
{
    record(QStringLiteral("remove every observer"));
    std::erase_if(center->registrations, [&](const auto& registration) { return registration.observer == observer; });
}

// Enough of Core Foundation's types to tell truth values from numbers.

CFTypeID CFBooleanGetTypeID()
{
    return 21;
}

CFTypeID CFGetTypeID(CFTypeRef value)
{
    id object = (id)value;
    const bool isTruth = [object isKindOfClass:[NSNumber class]] && object != nil
        && (object == [NSNumber numberWithBool:YES] || object == [NSNumber numberWithBool:NO]);
    return isTruth ? 21 : 1;
}

namespace orvanta::testing::mac {

void postDarwinNotification(const QString& name)
{
    const auto registrations = centre.registrations;
    onAnotherThread([&] {
        for (const auto& registration : registrations) {
            if (registration.name == name)
                registration.callBack(&centre, const_cast<void*>(registration.observer), (CFStringRef)toNSString(name), nullptr, nullptr);
        }
    });
}

int darwinRegistrations()
{
    return static_cast<int>(centre.registrations.size());
}

} // namespace orvanta::testing::mac
