#pragma once

#include "platform/macos/main_queue.h"
#include "platform/macos/observations.h"

#include <variant>

#import <Foundation/Foundation.h>

namespace orvanta {

/// Calls `tell` on the main queue with what `read` took from each notification `name` of `object` (nil: anybody's). The
/// notification itself does not cross: it is read where it is delivered.
template <typename Value>
Subscription observeNotification(Observations& observations, NSNotificationCenter* center, NSNotificationName name, id object,
    Value (*read)(NSNotification*), Callback<Value> tell)
{
    auto told = std::make_shared<Callback<Value>>(std::move(tell));
    const std::weak_ptr<Callback<Value>> observer = told;
    id token = [center addObserverForName:name
                                   object:object
                                    queue:NSOperationQueue.mainQueue
                               usingBlock:^(NSNotification* notification) {
                                   onMainQueue([observer, value = read(notification)] {
                                       if (const auto active = observer.lock())
                                           (*active)(value);
                                   });
                               }];
    return observations.endWith([center, token, told = std::move(told)]() mutable {
        [center removeObserver:token];
        told.reset();
    });
}

/// The same where a notification says all by itself.
inline Subscription observeNotification(Observations& observations, NSNotificationCenter* center, NSNotificationName name, id object, Callback<> tell)
{
    constexpr auto nothing = [](NSNotification*) { return std::monostate(); };
    return observeNotification<std::monostate>(
        observations, center, name, object, nothing, [tell = std::move(tell)](std::monostate) mutable { tell(); });
}

} // namespace orvanta
