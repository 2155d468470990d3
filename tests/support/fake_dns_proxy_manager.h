#pragma once

#include "platform/dns_proxy_manager.h"
#include "support/call_log.h"

#include <deque>

namespace orvanta::testing {

/// A saved DNS-proxy configuration. Loading and removing end when the test says so.
class FakeDnsProxyManager : public DnsProxyManager {
public:
    explicit FakeDnsProxyManager(CallLog& log) : m_log(log) { }

    void load(Callback<Result<DnsProxyConfiguration>> loaded) override
    {
        m_log.add(QStringLiteral("dnsProxy.load"));
        m_loads.push_back(std::move(loaded));
    }

    void remove(Callback<Result<void>> removed) override
    {
        m_log.add(QStringLiteral("dnsProxy.remove"));
        m_removals.push_back(std::move(removed));
    }

    void releaseLoad() { take(m_loads)(saved); }
    void failLoad(const QString& description) { take(m_loads)(std::unexpected(PlatformError { description })); }
    void releaseRemoval()
    {
        saved = {};
        take(m_removals)({});
    }
    void failRemoval(const QString& description) { take(m_removals)(std::unexpected(PlatformError { description })); }

    DnsProxyConfiguration saved;

private:
    template <typename Operation>
    static Operation take(std::deque<Operation>& operations)
    {
        Operation oldest = std::move(operations.front());
        operations.pop_front();
        return oldest;
    }

    CallLog& m_log;
    std::deque<Callback<Result<DnsProxyConfiguration>>> m_loads;
    std::deque<Callback<Result<void>>> m_removals;
};

} // namespace orvanta::testing
