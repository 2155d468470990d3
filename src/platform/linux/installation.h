#pragma once

#include <QString>

namespace orvanta {

/// Where the program at `executable` counts as installed. `cmake --install` leaves a file with the prefix's own path
/// under that prefix; a program in the bin folder of such a prefix is reported as the bundle that users of the other
/// platform have in /Applications. Every other copy - in a build folder, or in a prefix that was moved - is where it is.
[[nodiscard]] QString installedBundlePath(const QString& executable);

} // namespace orvanta
