#pragma once

#include <QRect>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

namespace orvanta {

class PanelWindows;

/// One window as the window manager stacks it.
struct StackedWindow {
    xcb_window_t window = XCB_NONE;
    QRect frame; ///< on the root, in native pixels
};

/// What the X server says of a cover, read in one go.
struct CoverFacts {
    bool isViewable = false;
    QRect frame;                             ///< on the root, in native pixels
    bool hasKeyboard = false;                ///< the input focus is in it
    xcb_window_t keyboard = XCB_NONE;        ///< where the input focus is
    xcb_window_t active = XCB_NONE;          ///< what the window manager calls active
    std::vector<StackedWindow> windowsAbove; ///< viewable client windows stacked above it
};

/// What keeps a window from being a cover.
enum class CoverDefect { notMapped, wrongFrame, beneathAWindow, noKeyboard };

/// The first defect of a cover that should stand at `frame`, in native pixels; absent when it covers. Other covers,
/// `panels`, may stand above and may have the keyboard.
[[nodiscard]] std::optional<CoverDefect> coverDefect(const CoverFacts& facts, const QRect& frame, const PanelWindows& panels);

/// The defect in words, for standard error.
[[nodiscard]] QString coverDefectText(CoverDefect defect);

/// Reads the facts about `cover`. Blocks for two round trips.
[[nodiscard]] CoverFacts inspectCover(xcb_connection_t* connection, xcb_window_t root, xcb_window_t cover);

} // namespace orvanta
