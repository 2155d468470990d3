#pragma once

#include "localservice/activity_store.h"

namespace orvanta::localservice {

/// The periods as a table, a line for each application and each page in them, and one for the idle time. Texts are in quotes; one
/// that a spreadsheet would take for a formula has an apostrophe before it.
[[nodiscard]] QByteArray activityCsv(const std::vector<UploadedPeriod>& periods);

/// The periods as an array of what was uploaded.
[[nodiscard]] QByteArray activityJson(const std::vector<UploadedPeriod>& periods);

} // namespace orvanta::localservice
