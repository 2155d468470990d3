#pragma once

#include "filter/linux/mark_bits.h"

#include <cstdint>
#include <expected>
#include <string>
#include <vector>

namespace orvanta::filter {

/// The rules in the kernel: one table of our own, loaded and removed whole, so that nobody else's rules are touched.
/// Packets that can decide a flow go to a queue; the verdict comes back in the packet's mark and is kept in the
/// connection's. Without anybody at the queue, everything passes.
class FilterRules {
public:
    explicit FilterRules(MarkBits bits) : m_bits(bits) { }

    /// The rules' own text, without the one that queues.
    [[nodiscard]] std::string text(std::uint8_t generation) const;

    /// Puts the table there, in place of one that an earlier process may have left.
    [[nodiscard]] std::expected<void, std::string> load(std::uint16_t queue, std::uint8_t generation) const;

    /// From now on only connections that `generation` of the list allowed go by without being asked about.
    [[nodiscard]] std::expected<void, std::string> setGeneration(std::uint8_t generation) const;

    /// What tells the rules that are in the kernel now from any that were or will be there; empty if there are none.
    [[nodiscard]] static std::vector<std::uint64_t> identity();

    /// How many packets the table had for the queue since it was loaded.
    [[nodiscard]] static std::uint64_t asked();

    /// Takes the table away. None there is no error.
    [[nodiscard]] static std::expected<void, std::string> remove();

private:
    [[nodiscard]] std::string knownRule(std::uint8_t generation) const;
    [[nodiscard]] std::string rememberRule(std::uint8_t generation) const;

    MarkBits m_bits;
};

} // namespace orvanta::filter
