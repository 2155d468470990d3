#pragma once

#include "platform/dns_proxy_manager.h"
#include "platform/macos/main_queue.h"

namespace orvanta {

/// The shared DNS-proxy manager.
class NetworkDnsProxyManager : public DnsProxyManager {
public:
    void load(Callback<Result<DnsProxyConfiguration>> loaded) override;
    void remove(Callback<Result<void>> removed) override;

private:
    MainQueueOwner m_owner;
};

} // namespace orvanta
