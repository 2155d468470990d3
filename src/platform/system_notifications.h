#pragma once

#include "platform/callback.h"
#include "platform/subscription.h"

#include <QString>

namespace orvanta {

/// Notifications that processes post to the whole system, by name and without any payload: the Darwin notify centre on
/// macOS, a signal of the system bus on Linux.
class SystemNotifications {
public:
    virtual ~SystemNotifications() = default;

    /// Calls `delivered` for each notification named `name`, exactly, that is posted from now on: at once, never held
    /// back, on the main thread. Ends with the subscription. Only what orvanta-filterd posts is delivered on Linux.
    [[nodiscard]] virtual Subscription observe(const QString& name, Callback<> delivered) = 0;
};

} // namespace orvanta
