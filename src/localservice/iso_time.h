#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <string_view>

namespace orvanta::localservice {

/// A moment in UTC, to the millisecond: the resolution of everything that the service stores.
using UtcTime = std::chrono::sys_time<std::chrono::milliseconds>;

/// The moment that an ISO 8601 internet date-time in UTC names ("2025-01-31T14:05:00Z", with or without a fraction of
/// up to nine digits, of which the first three count). Absent for every other form, offsets and leap seconds included.
[[nodiscard]] std::optional<UtcTime> utcTimeFromIso(std::string_view text);

/// The reverse, always with three digits of fraction.
[[nodiscard]] QString isoFromUtcTime(UtcTime time);

} // namespace orvanta::localservice
