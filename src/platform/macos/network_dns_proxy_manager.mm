#include "platform/macos/network_dns_proxy_manager.h"

#include "platform/macos/foundation_values.h"

#import <NetworkExtension/NetworkExtension.h>

namespace orvanta {

namespace {

DnsProxyConfiguration read(NEDNSProxyManager* manager)
{
    NEDNSProxyProviderProtocol* protocol = manager.providerProtocol;
    if (!protocol)
        return {};
    return { .providerProtocol = DnsProxyProviderProtocol { .providerBundleIdentifier = toText(protocol.providerBundleIdentifier) } };
}

} // namespace

void NetworkDnsProxyManager::load(Callback<Result<DnsProxyConfiguration>> loaded)
{
    @autoreleasepool {
        const auto hop = m_owner.hop();
        const auto answer = std::make_shared<Callback<Result<DnsProxyConfiguration>>>(std::move(loaded));
        [NEDNSProxyManager.sharedManager loadFromPreferencesWithCompletionHandler:^(NSError* error) {
            hop([answer, result = toResult(error)] {
                @autoreleasepool {
                    if (result)
                        (*answer)(read(NEDNSProxyManager.sharedManager));
                    else
                        (*answer)(std::unexpected(result.error()));
                }
            });
        }];
    }
}

void NetworkDnsProxyManager::remove(Callback<Result<void>> removed)
{
    @autoreleasepool {
        const auto hop = m_owner.hop();
        const auto answer = std::make_shared<Callback<Result<void>>>(std::move(removed));
        [NEDNSProxyManager.sharedManager
            removeFromPreferencesWithCompletionHandler:^(NSError* error) { hop([answer, result = toResult(error)] { (*answer)(result); }); }];
    }
}

} // namespace orvanta
