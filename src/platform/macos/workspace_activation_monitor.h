#pragma once

#include "platform/activation_monitor.h"
#include "platform/macos/observations.h"

namespace orvanta {

/// Hears from the shared workspace which application became active. Our panels do not activate the application.
class WorkspaceActivationMonitor : public ActivationMonitor {
public:
    [[nodiscard]] Subscription observe(Callback<std::optional<QString>> activated) override;

private:
    Observations m_observations;
};

} // namespace orvanta
