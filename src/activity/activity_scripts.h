#pragma once

#include "platform/script_runner.h"

#include <array>

namespace orvanta {

/// The name of the application process that is in front.
[[nodiscard]] const Script& frontProcessScript();

/// A browser whose tabs are known.
struct KnownBrowser {
    QString bundleIdentifier;
    QString shortName;
    Script tabScript; ///< gives the address of the front window's tab, a line feed, and its title
};

/// In the order in which they are tried.
[[nodiscard]] const std::array<KnownBrowser, 5>& knownBrowsers();

} // namespace orvanta
