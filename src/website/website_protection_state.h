#pragma once

#include "app/policy/website_protection_state.h"

namespace orvanta {

/// The state that follows from what is known about the extension, its configuration and focus.
[[nodiscard]] constexpr WebsiteProtectionState websiteProtectionState(bool isInstalled, bool configurationEnabled, bool focusActive)
{
    if (!isInstalled)
        return WebsiteProtectionState::needsActivation;
    return configurationEnabled && focusActive ? WebsiteProtectionState::blockingActive : WebsiteProtectionState::ready;
}

} // namespace orvanta
