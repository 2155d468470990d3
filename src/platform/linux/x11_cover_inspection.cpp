#include "platform/linux/x11_cover_inspection.h"

#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_panel_windows.h"

#include <algorithm>
#include <cstring>

namespace orvanta {

namespace {

struct WindowCookies {
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t position;
};

struct WindowFacts {
    bool isViewable = false;
    bool isOverrideRedirect = false;
    QRect frame;
};

WindowCookies ask(xcb_connection_t* connection, xcb_window_t root, xcb_window_t window)
{
    return { xcb_get_window_attributes(connection, window), xcb_get_geometry(connection, window),
        xcb_translate_coordinates(connection, window, root, 0, 0) };
}

/// A window that died in between reads as one that is not viewable.
WindowFacts read(xcb_connection_t* connection, const WindowCookies& cookies)
{
    const XcbPtr<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(connection, cookies.attributes, nullptr));
    const XcbPtr<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(connection, cookies.geometry, nullptr));
    const XcbPtr<xcb_translate_coordinates_reply_t> position(xcb_translate_coordinates_reply(connection, cookies.position, nullptr));
    WindowFacts facts;
    if (!attributes || !geometry || !position)
        return facts;
    facts.isViewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
    facts.isOverrideRedirect = attributes->override_redirect != 0;
    facts.frame = QRect(position->dst_x, position->dst_y, geometry->width, geometry->height);
    return facts;
}

std::vector<xcb_window_t> windowProperty(xcb_connection_t* connection, xcb_window_t root, const char* name)
{
    const auto atomCookie = xcb_intern_atom(connection, /*only_if_exists=*/1, static_cast<std::uint16_t>(std::strlen(name)), name);
    const XcbPtr<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, atomCookie, nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return {};
    constexpr std::uint32_t longest = 4096; // windows
    const auto cookie = xcb_get_property(connection, /*_delete=*/0, root, atom->atom, XCB_ATOM_WINDOW, 0, longest);
    const XcbPtr<xcb_get_property_reply_t> property(xcb_get_property_reply(connection, cookie, nullptr));
    if (!property || property->format != 32)
        return {};
    const auto* windows = static_cast<const xcb_window_t*>(xcb_get_property_value(property.get()));
    return { windows, windows + xcb_get_property_value_length(property.get()) / static_cast<int>(sizeof(xcb_window_t)) };
}

/// The ancestor of each window that is a child of the root: the window itself, or what the window manager wrapped
/// around it. XCB_NONE for a window that died. One round trip a level of wrapping.
std::vector<xcb_window_t> topLevels(xcb_connection_t* connection, xcb_window_t root, std::vector<xcb_window_t> windows)
{
    constexpr int deepestWrapping = 6;
    std::vector<bool> arrived(windows.size());
    for (int level = 0; level < deepestWrapping; ++level) {
        std::vector<xcb_query_tree_cookie_t> cookies;
        cookies.reserve(windows.size());
        for (const xcb_window_t window : windows)
            cookies.push_back(xcb_query_tree(connection, window));
        bool allArrived = true;
        for (std::size_t index = 0; index < windows.size(); ++index) {
            const XcbPtr<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection, cookies[index], nullptr));
            if (arrived[index])
                continue;
            if (!tree || tree->parent == root || tree->parent == XCB_NONE) {
                windows[index] = tree ? windows[index] : XCB_NONE;
                arrived[index] = true;
                continue;
            }
            windows[index] = tree->parent;
            allArrived = false;
        }
        if (allArrived)
            break;
    }
    return windows;
}

std::vector<xcb_window_t> childrenOf(xcb_connection_t* connection, xcb_window_t window)
{
    const XcbPtr<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    if (!tree)
        return {};
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    return { children, children + xcb_query_tree_children_length(tree.get()) };
}

} // namespace

std::optional<CoverDefect> coverDefect(const CoverFacts& facts, const QRect& frame, const PanelWindows& panels)
{
    if (!facts.isViewable)
        return CoverDefect::notMapped;
    if (facts.frame != frame)
        return CoverDefect::wrongFrame;
    const bool isBeneath = std::ranges::any_of(
        facts.windowsAbove, [&](const StackedWindow& above) { return above.frame.intersects(frame) && !panels.contains(above.window); });
    if (isBeneath)
        return CoverDefect::beneathAWindow;
    if (!facts.hasKeyboard && !panels.contains(facts.keyboard))
        return CoverDefect::noKeyboard;
    return std::nullopt;
}

QString coverDefectText(CoverDefect defect)
{
    switch (defect) {
    case CoverDefect::notMapped:
        return QStringLiteral("the window manager does not show the cover");
    case CoverDefect::wrongFrame:
        return QStringLiteral("the cover does not fill the display");
    case CoverDefect::beneathAWindow:
        return QStringLiteral("another window stands above the cover");
    case CoverDefect::noKeyboard:
        return QStringLiteral("the cover does not get the keyboard");
    }
    Q_UNREACHABLE();
}

CoverFacts inspectCover(xcb_connection_t* connection, xcb_window_t root, xcb_window_t cover)
{
    const auto focusCookie = xcb_get_input_focus(connection);
    const WindowFacts coverWindow = read(connection, ask(connection, root, cover));
    const XcbPtr<xcb_get_input_focus_reply_t> focus(xcb_get_input_focus_reply(connection, focusCookie, nullptr));

    CoverFacts facts;
    facts.isViewable = coverWindow.isViewable;
    facts.frame = coverWindow.frame;
    const std::vector<xcb_window_t> inside = childrenOf(connection, cover);
    facts.keyboard = focus ? focus->focus : static_cast<xcb_window_t>(XCB_NONE);
    facts.hasKeyboard = focus && (focus->focus == cover || std::ranges::find(inside, focus->focus) != inside.end());

    const std::vector<xcb_window_t> active = windowProperty(connection, root, "_NET_ACTIVE_WINDOW");
    facts.active = active.empty() ? XCB_NONE : active.front();

    // The clients are those that the window manager names; where there is none, every window that asks to be managed.
    // (Frames, menus, tooltips and notifications do not ask.)
    const std::vector<xcb_window_t> stack = childrenOf(connection, root);
    std::vector<xcb_window_t> clients = windowProperty(connection, root, "_NET_CLIENT_LIST");
    const bool hasWindowManager = !clients.empty();
    if (!hasWindowManager)
        clients = stack;
    std::erase(clients, cover);
    clients.push_back(cover);
    const std::vector<xcb_window_t> tops = topLevels(connection, root, clients);
    const auto height = [&stack](xcb_window_t top) { return std::ranges::find(stack, top); };
    const auto coverHeight = height(tops.back());

    std::vector<WindowCookies> cookies;
    cookies.reserve(clients.size());
    for (const xcb_window_t client : clients)
        cookies.push_back(ask(connection, root, client));
    for (std::size_t index = 0; index < clients.size(); ++index) {
        const WindowFacts client = read(connection, cookies[index]);
        const auto clientHeight = height(tops[index]);
        if (client.isViewable && (hasWindowManager || !client.isOverrideRedirect) && clientHeight != stack.end() && clientHeight > coverHeight)
            facts.windowsAbove.push_back({ clients[index], client.frame });
    }
    return facts;
}

} // namespace orvanta
