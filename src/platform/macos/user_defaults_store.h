#pragma once

#include "platform/key_value_store.h"

namespace orvanta {

/// The standard user defaults. What is written is with the system's own settings service when setValue() returns, and so
/// survives the program; when it reaches the disk is that service's affair.
class UserDefaultsStore : public KeyValueStore {
public:
    [[nodiscard]] std::optional<StoredValue> value(const QString& key) override;
    Result<void> setValue(const QString& key, const StoredValue& value) override;
    Result<void> remove(const QString& key) override;
};

} // namespace orvanta
