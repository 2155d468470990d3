#pragma once

#include "platform/callback.h"
#include "platform/subscription.h"

#include <QStringList>

namespace orvanta {

/// What the program lacks on this desktop, and what the user can do about it, as it comes and goes. Main thread only.
class DesktopNotices {
public:
    virtual ~DesktopNotices() = default;

    /// Calls `changed` from the event loop with all that is to be said now: soon after the start if there is anything, and after
    /// each change. What a desktop only lacks while it is still starting is not said.
    [[nodiscard]] virtual Subscription observe(Callback<QStringList> changed) = 0;
};

} // namespace orvanta
