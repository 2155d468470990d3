#pragma once

#include "platform/dns_proxy_manager.h"
#include "platform/filter_manager.h"

namespace orvanta::testing::mac {

// The content-filter preferences. Each setter, load and save is recorded; loads and saves end when a test says so, of each kind
// the oldest first.

void releaseFilterLoad();
void failFilterLoad(const QString& description);
void releaseFilterSave();
void failFilterSave(const QString& description);

/// Ends all that is pending, in the order in which it was asked for; the saves in `failure`, if there is one.
void settleFilter(const std::optional<QString>& failure = {});

/// Whether the managers hand out copies of what they hold, which macOS may do.
void copyWhatIsHandedOut();

/// What is saved: the texts of "blockedDomains" alone stand for the vendor configuration.
struct SavedFilter {
    bool hasProvider = false;
    bool filterSockets = false;
    bool filterPackets = false;
    QString dataProvider;
    QStringList vendorKeys;
    QStringList blockedDomains;
    QString description;
    int grade = 0;
    bool isEnabled = false;
};
[[nodiscard]] SavedFilter savedFilter();

/// Somebody saved a configuration before: with a provider of that identifier, which filters packets.
void saveForeignFilter(const QString& dataProvider);

// The DNS-proxy preferences, in the same way.

void saveDnsProxy(const std::optional<DnsProxyProviderProtocol>& protocol);
void releaseDnsLoad();
void failDnsLoad(const QString& description);
void releaseDnsRemoval();
void failDnsRemoval(const QString& description);
void settleDnsProxy();
[[nodiscard]] bool isDnsProxySaved();

} // namespace orvanta::testing::mac
