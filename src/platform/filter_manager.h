#pragma once

#include "platform/callback.h"
#include "platform/platform_error.h"

#include <QString>
#include <QVariantMap>

#include <optional>

namespace orvanta {

/// What the system tells the extension that filters. What we do not set keeps its saved value.
struct FilterProviderConfiguration {
    bool filterSockets = false;
    std::optional<QString> filterDataProviderBundleIdentifier {};
    QVariantMap vendorConfiguration {}; ///< the contract with the extension; the system does not look into it
    QVariantMap otherFields {};         ///< whatever else was saved, carried along untouched

    bool operator==(const FilterProviderConfiguration&) const = default;
};

/// Which of several filters of one machine is asked first. The raw values are the system's.
enum class FilterGrade { firewall = 1, inspector = 2 };

/// The one content-filter configuration that the system keeps for this application.
struct FilterConfiguration {
    std::optional<FilterProviderConfiguration> providerConfiguration {};
    std::optional<QString> localizedDescription {};
    FilterGrade grade = FilterGrade::inspector;
    bool isEnabled = false;

    bool operator==(const FilterConfiguration&) const = default;
};

/// The system's content-filter preferences. Operations are called on the main thread, save() also from within load()'s
/// callback, wherever that stands. Each calls back once, after it has returned, on any thread; a manager that is
/// destroyed does not call back any more. Several operations may be pending; their order is the system's.
class FilterManager {
public:
    virtual ~FilterManager() = default;

    /// What is saved; a default-made configuration when nothing is.
    virtual void load(Callback<Result<FilterConfiguration>> loaded) = 0;

    /// Saves `configuration` whole, in place of what was saved. After a failure what was saved before still holds.
    virtual void save(const FilterConfiguration& configuration, Callback<Result<void>> saved) = 0;
};

} // namespace orvanta
