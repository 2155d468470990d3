#include "macos/gnustep/fakes/fake_network_extension.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/object_state.h"
#include "platform/macos/foundation_values.h"

#include <algorithm>
#include <deque>

#include <Block.h>

#import <NetworkExtension/NetworkExtension.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

typedef void (^Completion)(NSError*);

namespace {

struct Provider {
    bool filterSockets = false;
    bool filterPackets = false;
    std::optional<QString> dataProvider;
    std::optional<QVariantMap> vendor;
};

struct Filter {
    std::optional<Provider> provider;
    std::optional<QString> description;
    NEFilterManagerGrade grade = NEFilterManagerGradeFirewall;
    bool isEnabled = false;
};

enum class Operation { load, saveOrRemoval };

struct Save {
    Filter filter;
    Completion completion;
};

Filter filterOnDisk;
Filter filterInMemory; ///< the manager's, apart from the provider
NEFilterProviderConfiguration* filterProvider = nil;
bool isCopied = false;
std::deque<Completion> filterLoads;
std::deque<Save> filterSaves;
std::deque<Operation> filterOperations; ///< of both kinds, in the order in which they were asked for

std::optional<DnsProxyProviderProtocol> dnsOnDisk;
std::optional<DnsProxyProviderProtocol> dnsInMemory;
std::deque<Completion> dnsLoads;
std::deque<Completion> dnsRemovals;
std::deque<Operation> dnsOperations;

const ResetAtBegin resetAtBegin([] {
    filterOnDisk = filterInMemory = {};
    keep<NEFilterProviderConfiguration>(filterProvider, nil);
    isCopied = false;
    filterLoads.clear();
    filterSaves.clear();
    filterOperations.clear();
    dnsOnDisk = dnsInMemory = std::nullopt;
    dnsLoads.clear();
    dnsRemovals.clear();
    dnsOperations.clear();
});

template <typename Pending>
Pending take(std::deque<Pending>& all)
{
    Pending oldest = all.front();
    all.pop_front();
    return oldest;
}

/// The oldest of one kind, which is no longer pending.
template <typename Pending>
Pending take(std::deque<Pending>& all, std::deque<Operation>& operations, Operation kind)
{
    operations.erase(std::ranges::find(operations, kind));
    return take(all);
}

void end(Completion completion, const std::optional<QString>& failure)
{
    onAnotherThread([&] {
        NSError* error = failure ? [NSError errorWithDomain:@"NEFilterErrorDomain"
                                                       code:1
                                                   userInfo:[NSDictionary dictionaryWithObject:toNSString(*failure) forKey:NSLocalizedDescriptionKey]]
                                 : nil;
        completion(error);
    });
    Block_release(completion);
}

QString truth(bool value)
{
    return value ? QStringLiteral("YES") : QStringLiteral("NO");
}

} // namespace

@implementation NEFilterProviderConfiguration

- (BOOL)filterSockets
{
    return stateOf<Provider>(self).filterSockets;
}
- (void)setFilterSockets:(BOOL)filterSockets
{
    record(QStringLiteral("provider.filterSockets = ") + truth(filterSockets));
    stateOf<Provider>(self).filterSockets = filterSockets;
}
- (BOOL)filterPackets
{
    return stateOf<Provider>(self).filterPackets;
}
- (void)setFilterPackets:(BOOL)filterPackets
{
    record(QStringLiteral("provider.filterPackets = ") + truth(filterPackets));
    stateOf<Provider>(self).filterPackets = filterPackets;
}
- (NSString*)filterDataProviderBundleIdentifier
{
    const auto& identifier = stateOf<Provider>(self).dataProvider;
    return identifier ? toNSString(*identifier) : nil;
}
- (void)setFilterDataProviderBundleIdentifier:(NSString*)identifier
{
    record(QStringLiteral("provider.filterDataProviderBundleIdentifier = ") + toQString(identifier));
    stateOf<Provider>(self).dataProvider = toText(identifier);
}
- (NSDictionary*)vendorConfiguration
{
    const auto& vendor = stateOf<Provider>(self).vendor;
    return vendor ? toNSDictionary(*vendor) : nil;
}
- (void)setVendorConfiguration:(NSDictionary*)vendor
{
    record(QStringLiteral("provider.vendorConfiguration = ") + QStringList(toQVariantMap(vendor).keys()).join(u' '));
    stateOf<Provider>(self).vendor = vendor ? std::optional(toQVariantMap(vendor)) : std::nullopt;
}

@end

@implementation NEFilterManager

+ (NEFilterManager*)sharedManager
{
    static NEFilterManager* manager = [[NEFilterManager alloc] init];
    return manager;
}
- (NSString*)localizedDescription
{
    return filterInMemory.description ? toNSString(*filterInMemory.description) : nil;
}
- (void)setLocalizedDescription:(NSString*)description
{
    record(QStringLiteral("localizedDescription = ") + toQString(description));
    filterInMemory.description = toText(description);
}
- (NEFilterProviderConfiguration*)providerConfiguration
{
    if (!isCopied || !filterProvider)
        return filterProvider;
    NEFilterProviderConfiguration* copy = [[[NEFilterProviderConfiguration alloc] init] autorelease];
    stateOf<Provider>(copy) = stateOf<Provider>(filterProvider);
    return copy;
}
- (void)setProviderConfiguration:(NEFilterProviderConfiguration*)provider
{
    record(QStringLiteral("providerConfiguration = ") + (provider ? QStringLiteral("one") : QStringLiteral("none")));
    keep(filterProvider, provider);
}
- (BOOL)isEnabled
{
    return filterInMemory.isEnabled;
}
- (void)setEnabled:(BOOL)enabled
{
    record(QStringLiteral("enabled = ") + truth(enabled));
    filterInMemory.isEnabled = enabled;
}
- (NEFilterManagerGrade)grade
{
    return filterInMemory.grade;
}
- (void)setGrade:(NEFilterManagerGrade)grade
{
    record(QStringLiteral("grade = %1").arg(static_cast<int>(grade)));
    filterInMemory.grade = grade;
}
- (void)loadFromPreferencesWithCompletionHandler:(Completion)completion
{
    record(QStringLiteral("loadFromPreferences"));
    filterLoads.push_back(Block_copy(completion));
    filterOperations.push_back(Operation::load);
}
- (void)saveToPreferencesWithCompletionHandler:(Completion)completion
{
    record(QStringLiteral("saveToPreferences"));
    Filter filter = filterInMemory;
    if (filterProvider)
        filter.provider = stateOf<Provider>(filterProvider);
    filterSaves.push_back({ .filter = filter, .completion = Block_copy(completion) });
    filterOperations.push_back(Operation::saveOrRemoval);
}

@end

@implementation NEDNSProxyProviderProtocol

- (NSString*)providerBundleIdentifier
{
    const auto& identifier = dnsInMemory->providerBundleIdentifier;
    return identifier ? toNSString(*identifier) : nil;
}
- (void)setProviderBundleIdentifier:(NSString*)identifier
{
    record(QStringLiteral("providerBundleIdentifier = ") + toQString(identifier));
}

@end

@implementation NEDNSProxyManager

+ (NEDNSProxyManager*)sharedManager
{
    static NEDNSProxyManager* manager = [[NEDNSProxyManager alloc] init];
    return manager;
}
- (NEDNSProxyProviderProtocol*)providerProtocol
{
    return dnsInMemory ? [[[NEDNSProxyProviderProtocol alloc] init] autorelease] : nil;
}
- (void)setProviderProtocol:(NEDNSProxyProviderProtocol*)protocol
{
    record(QStringLiteral("providerProtocol = ") + (protocol ? QStringLiteral("one") : QStringLiteral("none")));
}
- (void)loadFromPreferencesWithCompletionHandler:(Completion)completion
{
    record(QStringLiteral("dns loadFromPreferences"));
    dnsLoads.push_back(Block_copy(completion));
    dnsOperations.push_back(Operation::load);
}
- (void)removeFromPreferencesWithCompletionHandler:(Completion)completion
{
    record(QStringLiteral("dns removeFromPreferences"));
    dnsRemovals.push_back(Block_copy(completion));
    dnsOperations.push_back(Operation::saveOrRemoval);
}

@end

namespace orvanta::testing::mac {

void releaseFilterLoad()
{
    @autoreleasepool {
        filterInMemory = filterOnDisk;
        NEFilterProviderConfiguration* provider = nil;
        if (filterOnDisk.provider) {
            provider = [[[NEFilterProviderConfiguration alloc] init] autorelease];
            stateOf<Provider>(provider) = *filterOnDisk.provider;
        }
        keep(filterProvider, provider);
        end(take(filterLoads, filterOperations, Operation::load), std::nullopt);
    }
}

void failFilterLoad(const QString& description)
{
    @autoreleasepool {
        end(take(filterLoads, filterOperations, Operation::load), description);
    }
}

void releaseFilterSave()
{
    @autoreleasepool {
        const Save oldest = take(filterSaves, filterOperations, Operation::saveOrRemoval);
        filterOnDisk = oldest.filter;
        end(oldest.completion, std::nullopt);
    }
}

void failFilterSave(const QString& description)
{
    @autoreleasepool {
        end(take(filterSaves, filterOperations, Operation::saveOrRemoval).completion, description);
    }
}

void settleFilter(const std::optional<QString>& failure)
{
    while (!filterOperations.empty()) {
        if (filterOperations.front() == Operation::load)
            releaseFilterLoad();
        else if (failure)
            failFilterSave(*failure);
        else
            releaseFilterSave();
    }
}

void copyWhatIsHandedOut()
{
    isCopied = true;
}

SavedFilter savedFilter()
{
    const Provider provider = filterOnDisk.provider.value_or(Provider());
    const QVariantMap vendor = provider.vendor.value_or(QVariantMap());
    return { .hasProvider = filterOnDisk.provider.has_value(),
        .filterSockets = provider.filterSockets,
        .filterPackets = provider.filterPackets,
        .dataProvider = provider.dataProvider.value_or(QString()),
        .vendorKeys = vendor.keys(),
        .blockedDomains = vendor.value(QStringLiteral("blockedDomains")).toStringList(),
        .description = filterOnDisk.description.value_or(QString()),
        .grade = static_cast<int>(filterOnDisk.grade),
        .isEnabled = filterOnDisk.isEnabled };
}

void saveForeignFilter(const QString& dataProvider)
{
    filterOnDisk = { .provider = Provider { .filterSockets = false, .filterPackets = true, .dataProvider = dataProvider, .vendor = {} },
        .description = QStringLiteral("Somebody else's"),
        .grade = NEFilterManagerGradeInspector,
        .isEnabled = true };
}

void saveDnsProxy(const std::optional<DnsProxyProviderProtocol>& protocol)
{
    dnsOnDisk = protocol;
}

void releaseDnsLoad()
{
    @autoreleasepool {
        dnsInMemory = dnsOnDisk;
        end(take(dnsLoads, dnsOperations, Operation::load), std::nullopt);
    }
}

void failDnsLoad(const QString& description)
{
    @autoreleasepool {
        end(take(dnsLoads, dnsOperations, Operation::load), description);
    }
}

void releaseDnsRemoval()
{
    @autoreleasepool {
        dnsOnDisk = std::nullopt;
        end(take(dnsRemovals, dnsOperations, Operation::saveOrRemoval), std::nullopt);
    }
}

void failDnsRemoval(const QString& description)
{
    @autoreleasepool {
        end(take(dnsRemovals, dnsOperations, Operation::saveOrRemoval), description);
    }
}

void settleDnsProxy()
{
    while (!dnsOperations.empty()) {
        if (dnsOperations.front() == Operation::load)
            releaseDnsLoad();
        else
            releaseDnsRemoval();
    }
}

bool isDnsProxySaved()
{
    return dnsOnDisk.has_value();
}

} // namespace orvanta::testing::mac
