#include "platform/linux/x11_cover_protocol.h"

#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_panel_windows.h"

#include <array>
#include <cstring>

namespace orvanta {

namespace {

// Values of the Extended Window Manager Hints.
constexpr std::uint32_t everyDesktop = 0xFFFFFFFF; // _NET_WM_DESKTOP
constexpr std::uint32_t addState = 1;              // _NET_WM_STATE
constexpr std::uint32_t fromPager = 2;             // source indication: a tool that the user works the desktop with

constexpr std::array<const char*, 7> names { "_NET_WM_DESKTOP", "_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER",
    "_NET_WM_STATE_ABOVE", "_NET_WM_STATE_FULLSCREEN", "_NET_ACTIVE_WINDOW" };

} // namespace

X11CoverProtocol::X11CoverProtocol(xcb_connection_t* connection)
    : m_connection(connection)
    , m_root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root)
{
    std::array<xcb_intern_atom_cookie_t, names.size()> cookies {};
    for (std::size_t index = 0; index < names.size(); ++index)
        cookies[index] = xcb_intern_atom(connection, /*only_if_exists=*/0, static_cast<std::uint16_t>(std::strlen(names[index])), names[index]);
    const std::array<xcb_atom_t*, names.size()> atoms { &m_desktop, &m_state, &m_skipTaskbar, &m_skipPager, &m_above, &m_fullScreen,
        &m_activeWindow };
    for (std::size_t index = 0; index < names.size(); ++index) {
        const XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookies[index], nullptr));
        *atoms[index] = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }
}

void X11CoverProtocol::mark(xcb_window_t cover) const
{
    markPanelWindow(m_connection, cover);
}

void X11CoverProtocol::announce(xcb_window_t cover) const
{
    constexpr std::uint8_t format = 32;
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, cover, m_desktop, XCB_ATOM_CARDINAL, format, 1, &everyDesktop);
    const std::array states { m_skipTaskbar, m_skipPager };
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, cover, m_state, XCB_ATOM_ATOM, format, states.size(), states.data());
}

void X11CoverProtocol::askForFront(xcb_window_t cover) const
{
    tellWindowManager(cover, m_state, addState, m_above, m_fullScreen, fromPager);
    tellWindowManager(cover, m_desktop, everyDesktop, fromPager, 0, 0);
    tellWindowManager(cover, m_activeWindow, fromPager, XCB_CURRENT_TIME, 0, 0);
    xcb_flush(m_connection);
}

void X11CoverProtocol::takeFront(xcb_window_t cover) const
{
    // A window manager that was still putting the window away may have unmapped it once more after we showed it.
    xcb_map_window(m_connection, cover);
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(m_connection, cover, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, cover, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
}

xcb_window_t X11CoverProtocol::activeWindow() const
{
    const auto cookie = xcb_get_property(m_connection, /*_delete=*/0, m_root, m_activeWindow, XCB_ATOM_WINDOW, 0, 1);
    const XcbPtr<xcb_get_property_reply_t> property(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!property || property->format != 32 || property->value_len == 0)
        return XCB_NONE;
    return *static_cast<const xcb_window_t*>(xcb_get_property_value(property.get()));
}

CoverFacts X11CoverProtocol::inspect(xcb_window_t cover) const
{
    return inspectCover(m_connection, m_root, cover);
}

void X11CoverProtocol::tellWindowManager(
    xcb_window_t cover, xcb_atom_t type, std::uint32_t first, std::uint32_t second, std::uint32_t third, std::uint32_t fourth) const
{
    xcb_client_message_event_t message {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = cover;
    message.type = type;
    message.data.data32[0] = first;
    message.data.data32[1] = second;
    message.data.data32[2] = third;
    message.data.data32[3] = fourth;
    xcb_send_event(m_connection, /*propagate=*/0, m_root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char*>(&message));
}

} // namespace orvanta
