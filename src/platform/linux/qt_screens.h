#pragma once

#include "platform/linux/screen_numbers.h"
#include "platform/screens.h"

#include <QRect>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

/// Where the window with the keyboard stands; nothing if there is none.
using KeyWindowGeometry = std::function<std::optional<QRect>()>;

/// Asks the X server for it, through a connection of its own, opened at the first call; in the server's pixels.
[[nodiscard]] KeyWindowGeometry x11KeyWindowGeometry();

/// The displays as Qt knows them, numbered by their outputs' names. A display's frame begins where the server says, in
/// the server's own pixels, and is as large as logical pixels make it.
class QtScreens : public Screens {
public:
    /// What the geometry of the window with the keyboard is told in.
    enum class Pixels { native, logical };

    explicit QtScreens(KeyWindowGeometry keyWindowGeometry = x11KeyWindowGeometry(), Pixels pixels = Pixels::native);

    [[nodiscard]] std::vector<Screen> all() const override;
    [[nodiscard]] std::optional<Screen> main() const override;

    /// The display with the window that has the keyboard, unlike main() only where that is known.
    [[nodiscard]] std::optional<Screen> ofKeyWindow() const;

private:
    struct Display {
        Screen screen;
        QRect placeOfWindows; ///< the frame in the pixels of the key window's geometry
        bool isPrimary = false;
    };

    [[nodiscard]] std::vector<Display> displays() const;
    [[nodiscard]] std::optional<Screen> ofKeyWindow(const std::vector<Display>& all) const;

    KeyWindowGeometry m_keyWindowGeometry;
    Pixels m_pixels;
    mutable ScreenNumbers m_numbers; ///< grows by what is seen; the answers never change by it
};

/// Whether Qt gives a screen of this name because it needs one while no display is connected. It then calls it by the
/// X display's name (":0.0") or not at all.
[[nodiscard]] bool isPlaceholderScreen(const QString& name);

/// A display's place on the server: Qt scales its size, not its origin.
[[nodiscard]] QRect nativeFrame(const QRect& frame, double devicePixelRatio);

} // namespace orvanta
