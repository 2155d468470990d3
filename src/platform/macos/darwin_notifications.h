#pragma once

#include "platform/macos/observations.h"
#include "platform/system_notifications.h"

namespace orvanta {

/// The Darwin notify centre.
class DarwinNotifications : public SystemNotifications {
public:
    [[nodiscard]] Subscription observe(const QString& name, Callback<> delivered) override;

private:
    Observations m_observations;
};

} // namespace orvanta
