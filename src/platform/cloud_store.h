#pragma once

#include "platform/callback.h"
#include "platform/key_value_store.h"
#include "platform/subscription.h"

namespace orvanta {

/// The key-value store that the user's machines share: the ubiquitous key-value store on macOS, a file in a
/// synced folder on Linux. Main thread only.
class CloudStore : public KeyValueStore {
public:
    /// Takes in what has arrived from elsewhere, and lets what was written go out. Never waits for a network.
    virtual void synchronise() = 0;

    /// Calls `changed` on the main thread after another machine's change has arrived, when value() already gives
    /// the new state. Our own writes are never reported. Which keys changed is not said.
    [[nodiscard]] virtual Subscription observeExternalChanges(Callback<> changed) = 0;
};

} // namespace orvanta
