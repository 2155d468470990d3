#pragma once

#include "platform/filter_manager.h"
#include "platform/macos/main_queue.h"

namespace orvanta {

/// The shared filter manager. A saved provider configuration is changed in place, so that what we do not set keeps its
/// value without being read: otherFields stays empty.
class NetworkFilterManager : public FilterManager {
public:
    void load(Callback<Result<FilterConfiguration>> loaded) override;
    void save(const FilterConfiguration& configuration, Callback<Result<void>> saved) override;

private:
    MainQueueOwner m_owner;
};

} // namespace orvanta
