#pragma once

#include "filter/core/bytes.h"
#include "filter/core/domain_table.h"
#include "filter/core/packet.h"

#include <optional>
#include <vector>

namespace orvanta::filter {

/// What an answer of the name service is to become, if it is to be another one: to the name by which browsers ask whether
/// they may use a name service of their own, "no such name"; to the question for a blocked host's HTTPS record, "no such
/// record", since that record would hide the host's name from us. `message` is the answer without the headers below it.
[[nodiscard]] std::optional<std::vector<std::byte>> rewrittenAnswer(Bytes message, const DomainTable& blocked);

/// Whether a packet comes from a name service, by its port. What goes to port 443 from that port is a client's.
[[nodiscard]] bool isFromNameService(const Packet& packet);

/// The packet that takes the place of one from a name service, if another one has to.
[[nodiscard]] std::optional<std::vector<std::byte>> rewrittenAnswerPacket(Bytes bytes, const DomainTable& blocked);

} // namespace orvanta::filter
