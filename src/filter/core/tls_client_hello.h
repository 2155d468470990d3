#pragma once

#include "filter/core/name_search.h"

namespace orvanta::filter {

/// Looks for the server's name in a TLS handshake that begins with a ClientHello. `handshake` is everything of it so far,
/// out of its records.
[[nodiscard]] NameSearch findServerName(Bytes handshake);

/// The same, in the records that travel over a connection. `stream` is everything since the connection began.
[[nodiscard]] NameSearch findServerNameInRecords(Bytes stream);

/// Whether `segment` begins with a record that carries data, alerts or a change of keys: a connection whose handshake
/// was over before we saw it.
[[nodiscard]] bool isLaterRecord(Bytes segment);

} // namespace orvanta::filter
