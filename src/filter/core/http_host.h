#pragma once

#include "filter/core/name_search.h"

namespace orvanta::filter {

/// Looks for the host in what a client sent first over a connection of version 1 of HTTP: in an absolute target, else in
/// the Host line. `stream` is everything since the connection began.
[[nodiscard]] NameSearch findHttpHost(Bytes stream);

} // namespace orvanta::filter
