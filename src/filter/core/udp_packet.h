#pragma once

#include "filter/core/bytes.h"
#include "filter/core/packet.h"

#include <vector>

namespace orvanta::filter {

/// The bytes of a UDP packet with `payload` in place of its own: the lengths and the checksums in its headers fit again.
/// `packet` is what readPacket() made of `bytes`.
[[nodiscard]] std::vector<std::byte> withPayload(Bytes bytes, const Packet& packet, Bytes payload);

} // namespace orvanta::filter
