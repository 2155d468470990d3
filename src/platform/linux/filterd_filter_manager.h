#pragma once

#include "platform/filter_manager.h"

#include <QObject>

namespace orvanta {

/// The preferences that orvanta-filterd keeps. Answers on the main thread.
class FilterdFilterManager : public FilterManager {
public:
    void load(Callback<Result<FilterConfiguration>> loaded) override;
    void save(const FilterConfiguration& configuration, Callback<Result<void>> saved) override;

private:
    bool m_wasThere = false; ///< the daemon has answered once
    QObject m_context;       ///< ends what is still to be answered
};

/// The preferences as they travel on the bus, and back. A record that is not of that form is an error.
[[nodiscard]] QVariantMap toRecord(const FilterConfiguration& configuration);
[[nodiscard]] Result<FilterConfiguration> fromRecord(const QVariantMap& record);

} // namespace orvanta
