#pragma once

#include "platform/callback.h"
#include "platform/subscription.h"

#include <list>
#include <memory>

namespace orvanta {

/// Registrations with the system that belong to one object: each ends with its Subscription, and what is left with this.
/// Main thread only.
class Observations {
public:
    Observations() = default;
    Observations(const Observations&) = delete;
    Observations& operator=(const Observations&) = delete;
    ~Observations();

    /// Runs `end` once, when the result is destroyed or this is.
    [[nodiscard]] Subscription endWith(Callback<> end);

private:
    std::shared_ptr<std::list<Callback<>>> m_ends = std::make_shared<std::list<Callback<>>>();
};

} // namespace orvanta
