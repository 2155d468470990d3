#pragma once

#include <QRect>

#include <cstdint>
#include <optional>
#include <vector>

namespace orvanta {

/// One display. `number` is never 0 and stays the same for an output as long as the session lasts, also when it is
/// unplugged and comes back; `frame` is the whole display in logical pixels, panels and docks included.
struct Screen {
    std::uint32_t number = 0;
    QRect frame;

    bool operator==(const Screen&) const = default;
};

/// The connected displays. Main thread only.
class Screens {
public:
    virtual ~Screens() = default;

    /// Every display, in the system's order. Empty when none is connected.
    [[nodiscard]] virtual std::vector<Screen> all() const = 0;

    /// The display that holds the window with the keyboard; with no such window the primary one; absent when no
    /// display is connected.
    [[nodiscard]] virtual std::optional<Screen> main() const = 0;
};

} // namespace orvanta
