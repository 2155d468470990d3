#pragma once

#include <cstdint>
#include <expected>
#include <string>

namespace orvanta::filter {

/// Appends the older NFQUEUE target to a chain of an inet table, for kernels without nftables' own queue expression. With
/// nobody at the queue, packets pass.
[[nodiscard]] std::expected<void, std::string> addQueueTarget(const std::string& table, const std::string& chain, std::uint16_t queue);

} // namespace orvanta::filter
