#pragma once

#include "platform/callback.h"
#include "platform/subscription.h"

namespace orvanta {

/// The accessibility setting by which a user asks for less motion. Main thread only.
class MotionPreference {
public:
    virtual ~MotionPreference() = default;

    /// True when motion is to be reduced; false when the system has no such setting.
    [[nodiscard]] virtual bool reduceMotion() const = 0;

    /// Calls `changed` on the main thread with the new value after each change.
    [[nodiscard]] virtual Subscription observe(Callback<bool> changed) = 0;
};

} // namespace orvanta
