#pragma once

#include "platform/cloud_store.h"
#include "platform/macos/observations.h"

namespace orvanta {

/// The user's ubiquitous key-value store, which the system carries between machines when it likes.
class UbiquitousCloudStore : public CloudStore {
public:
    [[nodiscard]] std::optional<StoredValue> value(const QString& key) override;
    Result<void> setValue(const QString& key, const StoredValue& value) override;
    Result<void> remove(const QString& key) override;
    void synchronise() override;
    [[nodiscard]] Subscription observeExternalChanges(Callback<> changed) override;

private:
    Observations m_observations;
};

} // namespace orvanta
