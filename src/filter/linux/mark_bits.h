#pragma once

#include <cstdint>

namespace orvanta::filter {

/// The eight bits of packet and connection marks in which a verdict is kept. Other programs use marks as well, so the
/// place of the eight can be chosen.
///
/// In a connection's mark they are 0 while nothing is decided, all ones once it is refused, and else the generation of the
/// list that allowed it: when the list changes, connections of an older generation are asked about again. One number is no
/// generation: it stands for a connection over UDP whose setting up was seen, in a version of QUIC that nobody here reads.
/// In a packet's mark, on its way from the queue to the conclusion, 1 stands for "allowed".
struct MarkBits {
    int shift = 24;

    [[nodiscard]] constexpr std::uint32_t mask() const { return std::uint32_t { 0xff } << shift; }
    [[nodiscard]] constexpr std::uint32_t refused() const { return mask(); }
    [[nodiscard]] constexpr std::uint32_t allowed() const { return std::uint32_t { 1 } << shift; }
    [[nodiscard]] constexpr std::uint32_t unreadable() const { return std::uint32_t { 0xfe } << shift; }
    [[nodiscard]] constexpr std::uint32_t allowedBy(std::uint8_t generation) const { return std::uint32_t { generation } << shift; }
};

inline constexpr std::uint8_t lastGeneration = 0xfd;

/// The generation of a list that comes after one of `generation`.
[[nodiscard]] constexpr std::uint8_t generationAfter(std::uint8_t generation)
{
    return generation >= lastGeneration ? 1 : static_cast<std::uint8_t>(generation + 1);
}

} // namespace orvanta::filter
