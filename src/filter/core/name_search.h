#pragma once

#include "filter/core/bytes.h"

#include <string>

namespace orvanta::filter {

/// How far the search for a server's name in a client's first bytes has come.
struct NameSearch {
    enum class Outcome {
        incomplete, ///< it may still come; not before `needed` bytes are there
        found,      ///< it is `name`, comparable
        absent,     ///< the protocol is the right one, and it names no server
        foreign,    ///< this is not the beginning of that protocol
    };

    Outcome outcome = Outcome::foreign;
    std::string name {};
    std::size_t needed = 0;

    bool operator==(const NameSearch&) const = default;
};

/// More than a client may send before it has named its server. Header lines and key shares are far below.
inline constexpr std::size_t longestSearch = 16 * 1024;

} // namespace orvanta::filter
