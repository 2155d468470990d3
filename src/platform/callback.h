#pragma once

#include "platform/move_only_function.h"

namespace orvanta {

/// What a platform operation calls back with. Move-only, so that it may own what it needs.
template <typename... A>
using Callback = MoveOnlyFunction<void(A...)>;

} // namespace orvanta
