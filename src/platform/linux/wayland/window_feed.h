#pragma once

#include "platform/linux/application_identity.h"

#include <QRect>
#include <QString>

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace orvanta {

/// One window as the compositor, or a helper inside it, describes it.
struct DesktopWindow {
    std::uint64_t number = 0; ///< no feed gives one twice
    QString handle;           ///< what the compositor calls it
    WindowTraits traits;
    QString desktopEntry; ///< the application's desktop entry with its suffix, where the compositor knows it
    QString output;       ///< the display it stands on, by its connector's name; empty if it is not known
    QRect frame;          ///< empty if it is not known
    bool isActive = false;
    bool isHidden = false;
    bool skipsTaskbar = false;

    bool operator==(const DesktopWindow&) const = default;
};

/// What tells about the windows of a Wayland desktop, which no client may ask for by itself: one implementation for each
/// kind of helper. Owned by CompositorWindows; used on one thread.
class WindowFeed {
public:
    virtual ~WindowFeed() = default;

    /// Takes in what has been said, without waiting. Attaches, too, where the helper has come since.
    virtual void update() = 0;

    /// Whether the helper is there and has told what there is.
    [[nodiscard]] virtual bool isAttached() const = 0;

    /// The windows without panels of ours, oldest first; none while nothing is attached.
    [[nodiscard]] virtual std::vector<DesktopWindow> windows() = 0;

    /// The window in front, or the one beneath a panel of ours where that is known.
    [[nodiscard]] virtual std::optional<DesktopWindow> front() = 0;

    /// The windows that came to the front since the last call, in that order; what was in front when the helper was attached is
    /// not among them.
    [[nodiscard]] virtual std::vector<DesktopWindow> takeActivations() = 0;

    /// Hides the windows. Waits until the compositor has done so, but no longer than a moment.
    virtual void hide(std::span<const DesktopWindow> windows) = 0;

    /// When update() has something to do even if nothing is said; absent where nothing has to be tried again.
    [[nodiscard]] virtual std::optional<std::chrono::steady_clock::time_point> nextTry() const { return std::nullopt; }
};

} // namespace orvanta
