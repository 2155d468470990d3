#pragma once

#include "filter/core/bytes.h"

#include <array>
#include <optional>

namespace orvanta::filter {

enum class Transport : std::uint8_t { tcp = 6, udp = 17 };

/// Which flow a packet belongs to. Addresses of the fourth version stand in the first four bytes, the rest is zero.
struct FlowKey {
    std::array<std::byte, 16> source {};
    std::array<std::byte, 16> destination {};
    std::uint16_t sourcePort = 0;
    std::uint16_t destinationPort = 0;
    std::uint8_t version = 0;
    Transport transport = Transport::tcp;

    auto operator<=>(const FlowKey&) const = default;
};

/// What the headers of a packet say, and where its payload is.
struct Packet {
    FlowKey flow;
    std::uint32_t sequence = 0; ///< of TCP
    bool isSyn = false;
    bool isReset = false;
    std::size_t transportAt = 0; ///< where the header of the transport begins
    Bytes payload;
};

/// Absent if the packet is no TCP or UDP over IP, is cut short, or is a fragment other than the first.
[[nodiscard]] std::optional<Packet> readPacket(Bytes bytes);

} // namespace orvanta::filter
