#pragma once

#include "platform/secret_store.h"

namespace orvanta {

/// Generic passwords of the login keychain. The keychain itself asks the user before it first shows an item to a program
/// that did not put it there, and lets that program wait.
class KeychainSecretStore : public SecretStore {
public:
    [[nodiscard]] std::optional<QByteArray> read(const QString& service, const QString& account) override;
};

} // namespace orvanta
