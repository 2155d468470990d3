#pragma once

#include <functional>

namespace orvanta {

/// What a platform operation calls back with. Move-only, so that it may own what it needs.
template <typename... A>
using Callback = std::move_only_function<void(A...)>;

} // namespace orvanta
