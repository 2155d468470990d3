#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvanta::filter {

/// The numbers under which the kernel keeps the rules of an inet table, in its order; none if there is no such table.
/// They are never given twice, so that equal lists mean untouched rules. (To have nft list the rules instead makes it
/// look for a description of the older queue target, which it has not.)
[[nodiscard]] std::vector<std::uint64_t> ruleHandles(const std::string& table);

} // namespace orvanta::filter
