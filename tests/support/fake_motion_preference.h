#pragma once

#include "platform/motion_preference.h"
#include "platform/portable/observers.h"

namespace orvanta::testing {

/// A desktop's motion setting that the test turns.
class FakeMotionPreference : public MotionPreference {
public:
    explicit FakeMotionPreference(bool reduceMotion = false) : m_reduceMotion(reduceMotion) { }

    [[nodiscard]] bool reduceMotion() const override { return m_reduceMotion; }
    [[nodiscard]] Subscription observe(Callback<bool> changed) override { return m_observers.add(std::move(changed)); }

    /// Turns the setting and tells the observers at once; setting it to what it is tells nobody.
    void setReduceMotion(bool reduceMotion)
    {
        if (std::exchange(m_reduceMotion, reduceMotion) != reduceMotion)
            m_observers.notify(reduceMotion);
    }

    [[nodiscard]] bool isObserved() const { return !m_observers.isEmpty(); }

private:
    bool m_reduceMotion;
    Observers<bool> m_observers;
};

} // namespace orvanta::testing
