#pragma once

#include <vector>

namespace orvanta {

/// When the user last touched an input device. Each thread that needs it has an instance of its own.
class IdleSource {
public:
    virtual ~IdleSource() = default;

    /// Seconds since the last event, for each kind of event that the system tells apart: on macOS mouse moved, left and
    /// right button, key and scroll wheel, on X11 all input together. Empty if it is not known.
    [[nodiscard]] virtual std::vector<double> secondsSinceLastEvents() = 0;
};

} // namespace orvanta
