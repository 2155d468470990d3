#pragma once

#include "platform/secret_store.h"

namespace orvanta {

/// The desktop's Secret Service (gnome-keyring, KWallet, KeePassXC), asked over the session bus: the item with the
/// attributes `service` and `account`. A locked keyring stays locked. Any thread.
class SecretService : public SecretStore {
public:
    [[nodiscard]] std::optional<QByteArray> read(const QString& service, const QString& account) override;
};

} // namespace orvanta
