#include "platform/linux/x11_panel_windows.h"

#include "platform/linux/x11_connection.h"

#include <cstdint>
#include <string_view>

namespace orvanta {

void markPanelWindow(xcb_connection_t* connection, xcb_window_t window)
{
    constexpr std::string_view name = "_ORVANTA_PANEL";
    const XcbPtr<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    if (!atom)
        return;
    const std::uint32_t mark = 1;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_CARDINAL, 32, 1, &mark);
    xcb_flush(connection);
}

} // namespace orvanta
