#pragma once

#include <unordered_set>
#include <xcb/xcb.h>

namespace orvanta {

/// The windows of our own panels, which are not applications: the cover must not take itself for one. Shared between
/// whoever makes the panels and whoever watches activations, on the main thread; owned by the platform.
class PanelWindows {
public:
    /// To be called before the window is mapped for the first time.
    void add(xcb_window_t window) { m_windows.insert(window); }

    /// To be called after the window is destroyed.
    void remove(xcb_window_t window) { m_windows.erase(window); }

    [[nodiscard]] bool contains(xcb_window_t window) const { return m_windows.contains(window); }

private:
    std::unordered_set<xcb_window_t> m_windows;
};

/// The WM_WINDOW_ROLE of our panels, for compositors that tell of windows by such things.
inline constexpr auto panelWindowRole = "orvanta-panel";

/// Marks `window` as one of our panels for those who cannot see PanelWindows because they stand on another thread. To be
/// called before it is mapped, on the connection that made it. Waits for one answer of the server.
void markPanelWindow(xcb_connection_t* connection, xcb_window_t window);

} // namespace orvanta
