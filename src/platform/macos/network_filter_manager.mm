#include "platform/macos/network_filter_manager.h"

#include "platform/macos/foundation_values.h"

#import <NetworkExtension/NetworkExtension.h>

namespace orvanta {

namespace {

FilterConfiguration read(NEFilterManager* manager)
{
    FilterConfiguration configuration;
    configuration.localizedDescription = toText(manager.localizedDescription);
    configuration.isEnabled = manager.isEnabled;
    NEFilterProviderConfiguration* provider = manager.providerConfiguration;
    if (!provider)
        return configuration; // nothing is saved; a manager has a grade all the same
    configuration.providerConfiguration = FilterProviderConfiguration { .filterSockets = static_cast<bool>(provider.filterSockets),
        .filterDataProviderBundleIdentifier = toText(provider.filterDataProviderBundleIdentifier),
        .vendorConfiguration = toQVariantMap(provider.vendorConfiguration) };
    configuration.grade = manager.grade == NEFilterManagerGradeFirewall ? FilterGrade::firewall : FilterGrade::inspector;
    return configuration;
}

/// What the manager has already is changed in place.
NEFilterProviderConfiguration* changed(NEFilterProviderConfiguration* existing, const FilterProviderConfiguration& wanted)
{
    NEFilterProviderConfiguration* provider = existing ? existing : [[NEFilterProviderConfiguration alloc] init];
    provider.filterSockets = wanted.filterSockets;
    provider.filterDataProviderBundleIdentifier = toOptionalNSString(wanted.filterDataProviderBundleIdentifier);
    provider.vendorConfiguration = toNSDictionary(wanted.vendorConfiguration);
    return provider;
}

void write(const FilterConfiguration& configuration, NEFilterManager* manager)
{
    const auto& provider = configuration.providerConfiguration;
    manager.providerConfiguration = provider ? changed(manager.providerConfiguration, *provider) : nil; // what it had may have been a copy
    manager.localizedDescription = toOptionalNSString(configuration.localizedDescription);
    manager.grade = configuration.grade == FilterGrade::firewall ? NEFilterManagerGradeFirewall : NEFilterManagerGradeInspector;
    manager.enabled = configuration.isEnabled;
}

} // namespace

void NetworkFilterManager::load(Callback<Result<FilterConfiguration>> loaded)
{
    @autoreleasepool {
        const auto hop = m_owner.hop();
        const auto answer = std::make_shared<Callback<Result<FilterConfiguration>>>(std::move(loaded));
        [NEFilterManager.sharedManager loadFromPreferencesWithCompletionHandler:^(NSError* error) {
            hop([answer, result = toResult(error)] {
                @autoreleasepool {
                    if (result)
                        (*answer)(read(NEFilterManager.sharedManager));
                    else
                        (*answer)(std::unexpected(result.error()));
                }
            });
        }];
    }
}

void NetworkFilterManager::save(const FilterConfiguration& configuration, Callback<Result<void>> saved)
{
    @autoreleasepool {
        const auto hop = m_owner.hop();
        const auto answer = std::make_shared<Callback<Result<void>>>(std::move(saved));
        NEFilterManager* manager = NEFilterManager.sharedManager;
        write(configuration, manager);
        [manager saveToPreferencesWithCompletionHandler:^(NSError* error) { hop([answer, result = toResult(error)] { (*answer)(result); }); }];
    }
}

} // namespace orvanta
