#pragma once

namespace orvanta {

class DnsProxyManager;

/// Takes away the DNS-proxy configuration that earlier versions saved under the extension's identifier, before website
/// protection became a content filter.
namespace LegacyDNSProxyRemoval {

/// Works on after it has returned, and tells nobody how it went. `dnsProxyManager` outlives its own answers. Any
/// thread.
void run(DnsProxyManager& dnsProxyManager);

} // namespace LegacyDNSProxyRemoval

} // namespace orvanta
