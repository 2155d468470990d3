#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvanta {

/// The user's secrets: the login keychain on macOS, the Secret Service on Linux. Read only.
class SecretStore {
public:
    virtual ~SecretStore() = default;

    /// The bytes stored under `service` and `account`, exactly as stored; absent if there is no such item, the
    /// store is locked, or it cannot be reached. Never prompts the user, and returns within two seconds; on macOS the
    /// keychain itself may ask the user the first time, and waits for the answer.
    [[nodiscard]] virtual std::optional<QByteArray> read(const QString& service, const QString& account) = 0;
};

} // namespace orvanta
