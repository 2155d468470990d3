#pragma once

#include "filter/core/bytes.h"

#include <optional>
#include <vector>

namespace orvanta::filter {

/// One piece of the handshake that an Initial packet carries.
struct CryptoPiece {
    std::uint64_t offset = 0;
    std::vector<std::byte> bytes {};
};

/// Whether a datagram begins with an Initial packet of version 1 or 2 of QUIC.
[[nodiscard]] bool isQuicInitial(Bytes datagram);

/// The connection id that a client's Initial is sent to, from which the keys of the connection's first packets follow.
[[nodiscard]] std::optional<Bytes> initialDestination(Bytes datagram);

/// The handshake pieces of every Initial packet of a client's datagram that opens with the keys of `destination`. Absent
/// if the first one does not: it is damaged, not a client's, or of another connection.
[[nodiscard]] std::optional<std::vector<CryptoPiece>> openClientInitials(Bytes datagram, Bytes destination);

} // namespace orvanta::filter
