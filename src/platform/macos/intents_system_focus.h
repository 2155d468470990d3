#pragma once

#include "platform/macos/main_queue.h"
#include "platform/system_focus.h"

namespace orvanta {

/// The Focus as the system shares it with applications that the user allowed to know it.
class IntentsSystemFocus : public SystemFocus {
public:
    void requestNotificationPermission(Callback<const Result<bool>&> answered) override;
    void requestAuthorisation(Callback<FocusAuthorisation> answered) override;
    [[nodiscard]] FocusAuthorisation authorisation() const override;
    [[nodiscard]] std::optional<bool> isFocused() const override;

private:
    MainQueueOwner m_owner;
};

} // namespace orvanta
