#include "website/legacy_dns_proxy_removal.h"

#include "platform/dns_proxy_manager.h"
#include "website/filter_extension.h"

namespace orvanta {

void LegacyDNSProxyRemoval::run(DnsProxyManager& dnsProxyManager)
{
    dnsProxyManager.load([&dnsProxyManager](const Result<DnsProxyConfiguration>& loaded) {
        if (!loaded || !loaded->providerProtocol || !loaded->providerProtocol->providerBundleIdentifier)
            return;
        if (*loaded->providerProtocol->providerBundleIdentifier != FilterExtension::identifier)
            return;
        dnsProxyManager.remove([](const Result<void>&) { });
    });
}

} // namespace orvanta
