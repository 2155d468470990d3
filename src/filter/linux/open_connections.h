#pragma once

#include "filter/core/packet.h"

#include <cstdint>
#include <map>
#include <string_view>

namespace orvanta::filter {

/// Which of this machine's sockets is at which end of a connection, as the kernel lists it in /proc/net. A socket has a
/// number of its own, so that one that took over another's ports can be told from it.
class OpenConnections {
public:
    OpenConnections() = default;

    /// Those of this moment.
    [[nodiscard]] static OpenConnections read();

    /// Adds what one of the lists says. Lines that make no sense count for nothing.
    void add(std::string_view list, Transport transport);

    /// Whether the connection is still what it was `before`. One that neither knows is of another machine, whose
    /// packets we only forward, and taken for the same.
    [[nodiscard]] bool isTheSame(const FlowKey& key, const OpenConnections& before) const;

private:
    using Sockets = std::map<FlowKey, std::uint64_t>;

    Sockets m_sockets;
};

} // namespace orvanta::filter
