#include "platform/macos/network_filter_manager.h"

#include "platform/macos/foundation_values.h"

#import <NetworkExtension/NetworkExtension.h>

namespace orvanta {

namespace {

FilterConfiguration read(NEFilterManager* manager)
{
    FilterConfiguration configuration;
    if (NEFilterProviderConfiguration* provider = manager.providerConfiguration) {
        configuration.providerConfiguration = FilterProviderConfiguration { .filterSockets = static_cast<bool>(provider.filterSockets),
            .filterDataProviderBundleIdentifier = toText(provider.filterDataProviderBundleIdentifier),
            .vendorConfiguration = toQVariantMap(provider.vendorConfiguration) };
    }
    configuration.localizedDescription = toText(manager.localizedDescription);
    configuration.grade = manager.grade == NEFilterManagerGradeFirewall ? FilterGrade::firewall : FilterGrade::inspector;
    configuration.isEnabled = manager.isEnabled;
    return configuration;
}

void write(const FilterConfiguration& configuration, NEFilterManager* manager)
{
    if (const auto& wanted = configuration.providerConfiguration) {
        NEFilterProviderConfiguration* provider = manager.providerConfiguration;
        if (!provider)
            provider = [[NEFilterProviderConfiguration alloc] init];
        provider.filterSockets = wanted->filterSockets;
        if (const auto& identifier = wanted->filterDataProviderBundleIdentifier)
            provider.filterDataProviderBundleIdentifier = toNSString(*identifier);
        provider.vendorConfiguration = toNSDictionary(wanted->vendorConfiguration);
        manager.providerConfiguration = provider; // what the manager gave may have been a copy
    }
    if (const auto& description = configuration.localizedDescription)
        manager.localizedDescription = toNSString(*description);
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
