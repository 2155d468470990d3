#pragma once

#include "platform/cloud_store.h"
#include "platform/portable/observers.h"
#include "support/fake_key_value_store.h"

namespace orvanta::testing {

/// A cloud store in memory. What other machines write is on its way until the test delivers it or the program
/// synchronises.
class FakeCloudStore : public CloudStore {
public:
    [[nodiscard]] std::optional<StoredValue> value(const QString& key) override { return local.value(key); }
    Result<void> setValue(const QString& key, const StoredValue& value) override { return local.setValue(key, value); }
    Result<void> remove(const QString& key) override { return local.remove(key); }
    [[nodiscard]] std::optional<QString> takeProblem() override { return local.takeProblem(); }

    void synchronise() override
    {
        local.calls.push_back({ StoreCall::Operation::synchronise, {}, {} });
        takeIn();
    }

    [[nodiscard]] Subscription observeExternalChanges(Callback<> changed) override { return m_observers.add(std::move(changed)); }

    /// Another machine puts `value` under `key`, or takes the key away; nothing is seen of it yet.
    void sendFromElsewhere(const QString& key, std::optional<StoredValue> value) { m_onTheWay.insert_or_assign(key, std::move(value)); }

    /// What is on its way arrives: the values change, and then the observers are told once, if anything did change.
    void deliver()
    {
        takeIn();
        if (std::exchange(m_isChangeUntold, false))
            m_observers.notify();
    }

    [[nodiscard]] bool isObserved() const { return !m_observers.isEmpty(); }

    FakeKeyValueStore local; ///< what this machine sees, with the calls, in order

private:
    void takeIn()
    {
        const auto before = local.values;
        for (auto& [key, value] : m_onTheWay) {
            if (value)
                local.values.insert_or_assign(key, std::move(*value));
            else
                local.values.erase(key);
        }
        m_onTheWay.clear();
        if (local.values != before && isObserved())
            m_isChangeUntold = true;
    }

    std::map<QString, std::optional<StoredValue>> m_onTheWay;
    bool m_isChangeUntold = false; ///< synchronise() takes in at once, and the observers hear of it later
    Observers<> m_observers;
};

} // namespace orvanta::testing
