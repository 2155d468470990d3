#include "platform/linux/x11_panel_windows.h"

#include "platform/linux/x11_connection.h"

#include <cstdint>
#include <string_view>

namespace orvanta {

void markPanelWindow(xcb_connection_t* connection, xcb_window_t window)
{
    constexpr std::string_view name = "_ORVANTA_PANEL";
    constexpr std::string_view roleName = "WM_WINDOW_ROLE";
    const auto ask
        = [connection](std::string_view atom) { return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(atom.size()), atom.data()); };
    const auto markCookie = ask(name);
    const auto roleCookie = ask(roleName);
    const XcbPtr<xcb_intern_atom_reply_t> markAtom(xcb_intern_atom_reply(connection, markCookie, nullptr));
    const XcbPtr<xcb_intern_atom_reply_t> roleAtom(xcb_intern_atom_reply(connection, roleCookie, nullptr));
    if (!markAtom || !roleAtom)
        return;
    const std::uint32_t mark = 1;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, markAtom->atom, XCB_ATOM_CARDINAL, 32, 1, &mark);
    constexpr std::string_view role = panelWindowRole;
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, window, roleAtom->atom, XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(role.size()), role.data());
    xcb_flush(connection);
}

} // namespace orvanta
