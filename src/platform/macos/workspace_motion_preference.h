#pragma once

#include "platform/macos/observations.h"
#include "platform/motion_preference.h"

namespace orvanta {

/// "Reduce motion" of the accessibility settings. The system tells only that some display option has changed.
class WorkspaceMotionPreference : public MotionPreference {
public:
    [[nodiscard]] bool reduceMotion() const override;
    [[nodiscard]] Subscription observe(Callback<bool> changed) override;

private:
    Observations m_observations;
};

} // namespace orvanta
