#include "macos/gnustep/fakes/fake_network_extension.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/object_state.h"
#include "platform/macos/foundation_values.h"

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

std::optional<DnsProxyProviderProtocol> dnsOnDisk;
std::optional<DnsProxyProviderProtocol> dnsInMemory;
std::deque<Completion> dnsLoads;
std::deque<Completion> dnsRemovals;

const ResetAtBegin resetAtBegin([] {
    filterOnDisk = filterInMemory = {};
    keep<NEFilterProviderConfiguration>(filterProvider, nil);
    isCopied = false;
    filterLoads.clear();
    filterSaves.clear();
    dnsOnDisk = dnsInMemory = std::nullopt;
    dnsLoads.clear();
    dnsRemovals.clear();
});

template <typename Operation>
Operation take(std::deque<Operation>& operations)
{
    Operation oldest = operations.front();
    operations.pop_front();
    return oldest;
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
}
- (void)saveToPreferencesWithCompletionHandler:(Completion)completion
{
    record(QStringLiteral("saveToPreferences"));
    Filter filter = filterInMemory;
    if (filterProvider)
        filter.provider = stateOf<Provider>(filterProvider);
    filterSaves.push_back({ .filter = filter, .completion = Block_copy(completion) });
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
}
- (void)removeFromPreferencesWithCompletionHandler:(Completion)completion
{
    record(QStringLiteral("dns removeFromPreferences"));
    dnsRemovals.push_back(Block_copy(completion));
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
        end(take(filterLoads), std::nullopt);
    }
}

void failFilterLoad(const QString& description)
{
    @autoreleasepool {
        end(take(filterLoads), description);
    }
}

void releaseFilterSave()
{
    @autoreleasepool {
        const Save oldest = take(filterSaves);
        filterOnDisk = oldest.filter;
        end(oldest.completion, std::nullopt);
    }
}

void failFilterSave(const QString& description)
{
    @autoreleasepool {
        end(take(filterSaves).completion, description);
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
        end(take(dnsLoads), std::nullopt);
    }
}

void failDnsLoad(const QString& description)
{
    @autoreleasepool {
        end(take(dnsLoads), description);
    }
}

void releaseDnsRemoval()
{
    @autoreleasepool {
        dnsOnDisk = std::nullopt;
        end(take(dnsRemovals), std::nullopt);
    }
}

void failDnsRemoval(const QString& description)
{
    @autoreleasepool {
        end(take(dnsRemovals), description);
    }
}

bool isDnsProxySaved()
{
    return dnsOnDisk.has_value();
}

} // namespace orvanta::testing::mac
