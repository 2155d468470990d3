#pragma once

#include "platform/platform.h"

#include <cstdio>

namespace orvanta {

/// Writes what the program works with on this desktop, a line each, and then what is missing. The exit status: 0 if nothing is, 1
/// if something is or could not be written.
[[nodiscard]] int printDiagnosis(const DesktopDiagnosis& diagnosis, std::FILE* output);

} // namespace orvanta
