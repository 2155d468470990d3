#pragma once

#include "filter/core/bytes.h"
#include "filter/core/domain_table.h"

#include <optional>
#include <vector>

namespace orvanta::filter {

/// What an answer of the name service is to become, if it is to be another one: to the name by which browsers ask whether
/// they may use a name service of their own, "no such name"; to the question for a blocked host's HTTPS record, "no such
/// record", since that record would hide the host's name from us. `message` is the answer without the headers below it.
[[nodiscard]] std::optional<std::vector<std::byte>> rewrittenAnswer(Bytes message, const DomainTable& blocked);

} // namespace orvanta::filter
