#pragma once

#include "activity/aggregated_activity.h"

#include <stop_token>

namespace orvanta {

/// Takes finished periods and uploads them. Used by the tracker's thread alone.
class ActivitySending {
public:
    virtual ~ActivitySending() = default;

    /// Remembers the activity for the next upload; never blocks on the network.
    virtual void queue(AggregatedActivity activity) = 0;

    /// Tries to upload everything remembered, and waits for it; true when there was nothing to send or the upload succeeded.
    /// Gives up at once when `stop` is requested.
    [[nodiscard]] virtual bool sendPending(const std::stop_token& stop = {}) = 0;
};

} // namespace orvanta
