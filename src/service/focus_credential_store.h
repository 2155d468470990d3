#pragma once

#include "platform/secret_store.h"

namespace orvanta {

/// Reads the user's API key for the service. It never writes: the user puts the key into the secret store by other
/// means. Made on the spot by whoever needs the key; holds nothing.
class FocusCredentialStore {
public:
    explicit FocusCredentialStore(SecretStore& secrets) : m_secrets(secrets) { }

    /// The key, exactly as stored, line breaks and all; an empty one is a key as well. Absent if there is none, if it
    /// cannot be read, or if it is not valid UTF-8.
    [[nodiscard]] std::optional<QString> readAPIKey() const;

private:
    SecretStore& m_secrets;
};

} // namespace orvanta
