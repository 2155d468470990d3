#pragma once

#include "blocking/blocked_target.h"

#include <cstdint>

namespace orvanta {

/// The cover, as the application blocker sees it: the BlockingCoordinator, or a recording double in tests.
class OverlayPresenting {
public:
    virtual ~OverlayPresenting() = default;

    /// Covers the display with that number; 0 stands for no display in particular, and then the main one is taken.
    virtual void present(const BlockedTarget& target, std::uint32_t screenNumber) = 0;

    /// Takes every cover away.
    virtual void dismiss() = 0;
};

} // namespace orvanta
