// What any program on the machine may send to the receiver's port: in pieces it is the same as whole, and what is accepted
// lies within what came.

#include "harness/lifecycle_connection.h"

#include <cstdint>
#include <cstdlib>

using namespace orvanta;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::size_t pieceSize = 1 + data[0] % 64;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    LifecycleConnection connection;
    for (std::size_t place = 0; place < bytes.size(); place += pieceSize) {
        const std::string_view piece = bytes.substr(place, pieceSize);
        const bool isAccepted = connection.take(piece) == LifecycleConnection::Verdict::accepted;
        const auto whole = parseLifecycleRequest(bytes.substr(0, place + piece.size()));
        require(isAccepted == whole.has_value());
        if (isAccepted) {
            require(connection.harness() == whole->harness && connection.body() == whole->body);
            require(whole->body.empty() || (whole->body.data() >= bytes.data() && whole->body.size() <= bytes.size()));
            break;
        }
    }
    return 0;
}
