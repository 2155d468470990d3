#pragma once

#include <QLatin1StringView>

namespace orvanta::FilterExtension {

/// The extension that filters: in requests, as the filter's data provider, and where a saved configuration is recognised.
inline constexpr QLatin1StringView identifier { "com.orvanta.focus.OrvantaFocusDNSProxy" };

/// What it posts, system-wide and without payload, when it refuses a connection to a blocked domain.
inline constexpr QLatin1StringView blockedDomainAttempt { "com.orvanta.focus.blocked-domain-attempt" };

/// The key of the vendor configuration from which it reads the list of blocked domains.
inline constexpr QLatin1StringView blockedDomainsKey { "blockedDomains" };

} // namespace orvanta::FilterExtension
