#pragma once

#include "platform/callback.h"
#include "platform/platform_error.h"

#include <QString>

#include <optional>

namespace orvanta {

/// Whom a saved DNS-proxy configuration hands name look-ups to.
struct DnsProxyProviderProtocol {
    std::optional<QString> providerBundleIdentifier;

    bool operator==(const DnsProxyProviderProtocol&) const = default;
};

/// The DNS-proxy configuration that is saved, as far as it matters here.
struct DnsProxyConfiguration {
    std::optional<DnsProxyProviderProtocol> providerProtocol;

    bool operator==(const DnsProxyConfiguration&) const = default;
};

/// The system's DNS-proxy preferences. Each operation calls back once, after it has returned, on any thread; a manager
/// that is destroyed does not call back any more.
class DnsProxyManager {
public:
    virtual ~DnsProxyManager() = default;

    /// What is saved; a configuration without a provider when nothing is.
    virtual void load(Callback<Result<DnsProxyConfiguration>> loaded) = 0;

    /// Removes what is saved. Nothing saved is no error. May be called from within load()'s callback.
    virtual void remove(Callback<Result<void>> removed) = 0;
};

} // namespace orvanta
