#pragma once

#include "platform/dns_proxy_manager.h"

#include <QObject>

namespace orvanta {

/// The DNS-proxy configuration that orvanta-filterd keeps from earlier versions. Answers on the main thread.
class FilterdDnsProxyManager : public DnsProxyManager {
public:
    void load(Callback<Result<DnsProxyConfiguration>> loaded) override;
    void remove(Callback<Result<void>> removed) override;

private:
    QObject m_context; ///< ends what is still to be answered
};

} // namespace orvanta
