#pragma once

#include "platform/activation_monitor.h"
#include "platform/portable/observers.h"

namespace orvanta::testing {

/// A user who brings applications to the front. The observers are told at once: the test stands where the event loop stands.
class FakeActivationMonitor : public ActivationMonitor {
public:
    [[nodiscard]] Subscription observe(Callback<std::optional<QString>> activated) override
    {
        ++m_observations;
        return m_observers.add(std::move(activated));
    }

    /// Brings an application to the front; one without an identifier if there is none.
    void activate(const std::optional<QString>& identifier) { m_observers.notify(identifier); }

    /// How often observe() was called.
    [[nodiscard]] int observations() const { return m_observations; }
    [[nodiscard]] bool isObserved() const { return !m_observers.isEmpty(); }

private:
    Observers<std::optional<QString>> m_observers;
    int m_observations = 0;
};

} // namespace orvanta::testing
