// A datagram: whatever it is, its header is read within its bounds and its pieces are no longer than it is.

#include "filter/core/quic_initial.h"

#include <cstdlib>

using namespace orvanta::filter;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Bytes datagram(reinterpret_cast<const std::byte*>(data), size);
    const auto destination = initialDestination(datagram);
    if (destination.has_value() != isQuicInitial(datagram))
        std::abort();
    if (!destination)
        return 0;
    if (const auto pieces = openClientInitials(datagram, *destination))
        for (const CryptoPiece& piece : *pieces)
            if (piece.bytes.size() > size)
                std::abort();
    return 0;
}
