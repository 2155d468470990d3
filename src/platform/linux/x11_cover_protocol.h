#pragma once

#include "platform/linux/x11_cover_inspection.h"

#include <xcb/xcb.h>

namespace orvanta {

/// What a cover says to the window manager, on Qt's own connection, so that it arrives in order with what Qt says.
/// Owned by the panels.
class X11CoverProtocol {
public:
    /// `connection` is Qt's.
    explicit X11CoverProtocol(xcb_connection_t* connection);

    /// Once, before the window is mapped for the first time: it is a panel of ours, not an application.
    void mark(xcb_window_t cover) const;

    /// Before the window is mapped: on every virtual desktop, in no task bar and no pager. A window manager forgets this
    /// when a window goes, so it is said before each mapping.
    void announce(xcb_window_t cover) const;

    /// After it is mapped: above, full-screen, active. Asked for as a pager asks, since window managers refuse a
    /// program that gives itself the focus.
    void askForFront(xcb_window_t cover) const;

    /// Without the window manager: to the top of the stack, with the keyboard.
    void takeFront(xcb_window_t cover) const;

    /// What the window manager calls active; XCB_NONE if it says nothing. One round trip.
    [[nodiscard]] xcb_window_t activeWindow() const;

    [[nodiscard]] CoverFacts inspect(xcb_window_t cover) const;

private:
    void tellWindowManager(
        xcb_window_t cover, xcb_atom_t type, std::uint32_t first, std::uint32_t second, std::uint32_t third, std::uint32_t fourth) const;

    xcb_connection_t* m_connection;
    xcb_window_t m_root;
    xcb_atom_t m_desktop, m_state, m_skipTaskbar, m_skipPager, m_above, m_fullScreen, m_activeWindow;
};

} // namespace orvanta
