#pragma once

#include "harness/lifecycle/ai_harness.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvanta {

// The one form of request that the receiver understands. Pure functions over whatever bytes have come.

/// No request is longer than this, its head included.
inline constexpr std::size_t lifecycleRequestLimit = 1'048'576;

/// What a request begins with: a path with a query or a slash at its end is another path.
inline constexpr std::string_view lifecycleRequestStart = "POST /events ";

/// What ends a request's head.
inline constexpr std::string_view lifecycleHeadEnd = "\r\n\r\n";

struct LifecycleRequestHead {
    AIHarness harness;
    std::uint64_t contentLength;

    bool operator==(const LifecycleRequestHead&) const = default;
};

/// Reads what stands before the first lifecycleHeadEnd. Absent if this can never become a request.
[[nodiscard]] std::optional<LifecycleRequestHead> parseLifecycleRequestHead(std::string_view head);

struct LifecycleRequest {
    AIHarness harness;
    std::string_view body;

    bool operator==(const LifecycleRequest&) const = default;
};

/// Reads a request from the beginning of `buffer`; what stands behind it is ignored. Absent as long as it is incomplete,
/// and for ever if it is no request.
[[nodiscard]] std::optional<LifecycleRequest> parseLifecycleRequest(std::string_view buffer);

} // namespace orvanta
