#pragma once

#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

/// One kind of notification service that a session may have, and its Do Not Disturb. Owned by the DesktopSystemFocus;
/// main thread only.
class FocusSource {
public:
    virtual ~FocusSource() = default;

    /// The last state that it told of; absent while there is no such service.
    [[nodiscard]] virtual std::optional<bool> isFocused() const = 0;
};

/// One of each kind that there is: GNOME Shell, KDE Plasma, XFCE, dunst and Sway's notification centre. Each follows its
/// service as it comes and goes, and starts none.
[[nodiscard]] std::vector<std::unique_ptr<FocusSource>> makeFocusSources();

} // namespace orvanta
