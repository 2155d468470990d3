#pragma once

#include "platform/activity_sources.h"

#include <cstdio>

namespace orvanta {

/// Takes one sample of the user's activity and writes it to `output` as indented JSON: what the tracker would see, now. False
/// if it could not be written.
[[nodiscard]] bool printActivity(ActivitySources sources, std::FILE* output);

} // namespace orvanta
