#pragma once

#include "platform/screens.h"

namespace orvanta {

/// The displays as AppKit numbers and arranges them: the frames' origin is the lower left corner of the primary display, as
/// the panels that stand there take it.
class AppKitScreens : public Screens {
public:
    [[nodiscard]] std::vector<Screen> all() const override;
    [[nodiscard]] std::optional<Screen> main() const override;
};

} // namespace orvanta
