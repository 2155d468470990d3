#pragma once

#include "platform/callback.h"

#include <QRect>

#include <memory>
#include <optional>

class QQuickItem;

namespace orvanta {

/// What a panel shows: one fresh blocking screen. The blocking folder makes it, the platform hosts it.
class OverlayContent {
public:
    virtual ~OverlayContent() = default;

    /// The root item. The host parents it to its window and keeps it as large as the window.
    [[nodiscard]] virtual QQuickItem& item() = 0;

    /// Gives the screen its button, which runs `acknowledge`; without one the screen has no button. Called once,
    /// before the content is first shown.
    virtual void setAcknowledge(std::optional<Callback<>> acknowledge) = 0;
};

/// Makes the contents. A platform may call it ahead of need, so that a panel is on screen within a frame.
class OverlayContentFactory {
public:
    virtual ~OverlayContentFactory() = default;

    [[nodiscard]] virtual std::unique_ptr<OverlayContent> make() = 0;
};

/// A borderless window above everything else, full-screen windows included, on every virtual desktop; it can take
/// the keyboard, and it stays up while another application is active. It cannot be closed by the user.
class OverlayPanel {
public:
    virtual ~OverlayPanel() = default;

    /// Where the panel stands: the frame of one of the displays of Screens, in logical pixels. Redisplays at once.
    virtual void setFrame(const QRect& frame) = 0;

    /// Replaces what the panel shows by a fresh screen, with a button exactly if `acknowledge` is present.
    virtual void setContent(std::optional<Callback<>> acknowledge) = 0;

    /// Shows the panel above everything and gives it the keyboard, also when it is shown already. Returns before
    /// the window system has finished; what it then finds wrong it mends, and what it cannot mend it reports on
    /// standard error.
    virtual void orderFront() = 0;

    /// Hides the panel. Hiding a hidden panel does nothing.
    virtual void orderOut() = 0;
};

/// Makes panels: InteractiveBlockingPanel on macOS, a full-screen window above all on Linux. Main thread only.
class OverlayPanels {
public:
    virtual ~OverlayPanels() = default;

    /// A new panel, hidden, without a frame and without content.
    [[nodiscard]] virtual std::unique_ptr<OverlayPanel> make() = 0;
};

} // namespace orvanta
