#pragma once

#include "platform/key_value_store.h"

#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace orvanta::testing {

/// One call that a fake store received.
struct StoreCall {
    enum class Operation : std::uint8_t { value, setValue, remove, synchronise };

    Operation operation;
    QString key;
    std::optional<StoredValue> value; ///< what setValue was given

    bool operator==(const StoreCall&) const = default;
};

/// Settings in memory: what they hold, what was asked of them, and an error that writes are to end with.
class FakeKeyValueStore : public KeyValueStore {
public:
    [[nodiscard]] std::optional<StoredValue> value(const QString& key) override
    {
        calls.push_back({ StoreCall::Operation::value, key, {} });
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }

    Result<void> setValue(const QString& key, const StoredValue& value) override
    {
        calls.push_back({ StoreCall::Operation::setValue, key, value });
        if (writeFailure)
            return std::unexpected(*writeFailure);
        if (std::holds_alternative<ForeignValue>(value))
            return std::unexpected(PlatformError { QStringLiteral("A value of a foreign type cannot be saved.") });
        values.insert_or_assign(key, value);
        return {};
    }

    Result<void> remove(const QString& key) override
    {
        calls.push_back({ StoreCall::Operation::remove, key, {} });
        if (writeFailure)
            return std::unexpected(*writeFailure);
        values.erase(key);
        return {};
    }

    [[nodiscard]] std::optional<QString> takeProblem() override { return std::exchange(problem, std::nullopt); }

    std::map<QString, StoredValue> values;
    std::optional<QString> problem;            ///< what happened and was not asked for yet
    std::optional<PlatformError> writeFailure; ///< as long as it is there, every write fails with it
    std::vector<StoreCall> calls;              ///< in order
};

} // namespace orvanta::testing
