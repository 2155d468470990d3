#include "platform/linux/filterd_dns_proxy_manager.h"

#include "platform/linux/filterd_connection.h"

namespace orvanta {

using namespace Qt::StringLiterals;

void FilterdDnsProxyManager::load(Callback<Result<DnsProxyConfiguration>> loaded)
{
    Filterd::call(m_context, "LoadDnsProxy"_L1, {}, Filterd::Start::ifNeeded, Filterd::Interaction::never,
        [loaded = std::move(loaded)](const QDBusMessage& answer) mutable {
            if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != "s"_L1) {
                loaded(std::unexpected(Filterd::errorOf(answer)));
                return;
            }
            DnsProxyConfiguration configuration;
            if (const QString identifier = answer.arguments().constFirst().toString(); !identifier.isEmpty())
                configuration.providerProtocol = DnsProxyProviderProtocol { identifier };
            loaded(configuration);
        });
}

void FilterdDnsProxyManager::remove(Callback<Result<void>> removed)
{
    Filterd::call(m_context, "RemoveDnsProxy"_L1, {}, Filterd::Start::ifNeeded, Filterd::Interaction::never,
        [removed = std::move(removed)](const QDBusMessage& answer) mutable {
            if (answer.type() == QDBusMessage::ReplyMessage)
                removed({});
            else
                removed(std::unexpected(Filterd::errorOf(answer)));
        });
}

} // namespace orvanta
