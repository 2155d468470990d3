#pragma once

#include "platform/callback.h"
#include "platform/subscription.h"

#include <QString>

#include <optional>

namespace orvanta {

/// Tells which application comes to the front. Main thread only.
class ActivationMonitor {
public:
    virtual ~ActivationMonitor() = default;

    /// Calls `activated` on the main thread, from the event loop, each time an application comes to the front, with
    /// its identifier, or with none when it has none. What is in front when the observation begins is not reported.
    /// Our own panels are never reported; our ordinary window is, like any other application.
    [[nodiscard]] virtual Subscription observe(Callback<std::optional<QString>> activated) = 0;
};

} // namespace orvanta
