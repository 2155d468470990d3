#pragma once

#include "platform/secret_store.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace orvanta::testing {

/// A secret store in memory: what it holds, whether it answers, and what was asked of it.
class FakeSecretStore : public SecretStore {
public:
    using Item = std::pair<QString, QString>; ///< service and account

    [[nodiscard]] std::optional<QByteArray> read(const QString& service, const QString& account) override
    {
        reads.emplace_back(service, account);
        const auto item = items.find({ service, account });
        if (availability != Availability::unlocked || item == items.end())
            return std::nullopt;
        return item->second;
    }

    enum class Availability : std::uint8_t { unlocked, locked, unreachable };

    std::map<Item, QByteArray> items;
    Availability availability = Availability::unlocked;
    std::vector<Item> reads; ///< every look-up, in order
};

} // namespace orvanta::testing
