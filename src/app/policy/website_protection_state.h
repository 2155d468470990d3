#pragma once

#include <QString>

namespace orvanta {

/// How far website protection is.
enum class WebsiteProtectionState {
    needsActivation, ///< not installed yet
    ready,           ///< installed, and blocking nothing now
    blockingActive,
};

/// The words on website protection's button for each state.
[[nodiscard]] QString websiteProtectionTitle(WebsiteProtectionState state);

} // namespace orvanta
