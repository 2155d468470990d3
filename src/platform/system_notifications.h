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

    /// The name of the notification that the extension came, ended, or does no longer what it was asked to do, without our having
    /// asked for that: what ExtensionManager and FilterManager say may have changed. Posted on Linux alone.
    static constexpr QLatin1StringView extensionChanged { "com.orvanta.focus.extension-changed" };

    /// Calls `delivered` for each notification named `name`, exactly, that is posted from now on: at once, never held
    /// back, on the main thread. Ends with the subscription. Only what orvanta-filterd posts is delivered on Linux.
    [[nodiscard]] virtual Subscription observe(const QString& name, Callback<> delivered) = 0;
};

} // namespace orvanta
