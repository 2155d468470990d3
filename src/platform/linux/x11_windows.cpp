#include "platform/linux/x11_windows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <unistd.h>
#include <unordered_set>
#include <utility>
#include <xcb/res.h>

namespace orvanta {

namespace {

/// Bounds of what is read of one property, in units of four bytes. Longer ones were not written in good faith.
constexpr std::uint32_t shortProperty = 256;
constexpr std::uint32_t windowListProperty = 65'536;

/// The state that the convention for window managers calls iconic.
constexpr std::uint32_t iconicState = 3;

xcb_get_property_cookie_t askProperty(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property, std::uint32_t length = shortProperty)
{
    return xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, length);
}

using PropertyReply = XcbPtr<xcb_get_property_reply_t>;

PropertyReply property(xcb_connection_t* connection, xcb_get_property_cookie_t cookie)
{
    return PropertyReply(xcb_get_property_reply(connection, cookie, nullptr));
}

/// The numbers of a property of 32 bits; none if it has another format.
std::span<const std::uint32_t> numbers(const PropertyReply& reply)
{
    if (!reply || reply->format != 32)
        return {};
    return { static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get())), reply->value_len };
}

std::optional<std::uint32_t> number(const PropertyReply& reply)
{
    const auto values = numbers(reply);
    return values.empty() ? std::nullopt : std::optional(values.front());
}

std::vector<xcb_window_t> windowList(const PropertyReply& reply)
{
    const auto values = numbers(reply);
    return { values.begin(), values.end() };
}

bool contains(const PropertyReply& reply, xcb_atom_t atom)
{
    return std::ranges::find(numbers(reply), atom) != numbers(reply).end();
}

QByteArray bytes(const PropertyReply& reply)
{
    if (!reply || reply->format != 8)
        return {};
    return { static_cast<const char*>(xcb_get_property_value(reply.get())), static_cast<qsizetype>(reply->value_len) };
}

/// The text up to its first NUL, which some clients write after it and some do not.
QByteArray firstText(const QByteArray& value)
{
    return value.first(std::min(value.size(), value.indexOf('\0') < 0 ? value.size() : value.indexOf('\0')));
}

QByteArray machineName()
{
    std::array<char, 256> name {};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? QByteArray(name.data()) : QByteArray();
}

struct WindowRequests {
    xcb_window_t window = XCB_NONE;
    xcb_get_property_cookie_t windowClass {};
    xcb_get_property_cookie_t gtkApplicationId {};
    xcb_get_property_cookie_t process {};
    xcb_get_property_cookie_t machine {};
    xcb_get_property_cookie_t transientFor {};
    xcb_get_property_cookie_t desktop {};
    xcb_get_property_cookie_t type {};
    xcb_get_property_cookie_t state {};
    xcb_get_property_cookie_t panel {};
};

WindowRequests askAll(const X11Connection& connection, xcb_window_t window)
{
    const X11Atoms& atoms = connection.atoms();
    const auto ask = [&connection, window](xcb_atom_t atom) { return askProperty(connection.raw(), window, atom); };
    return { .window = window,
        .windowClass = ask(XCB_ATOM_WM_CLASS),
        .gtkApplicationId = ask(atoms.gtkApplicationId),
        .process = ask(atoms.netWmPid),
        .machine = ask(XCB_ATOM_WM_CLIENT_MACHINE),
        .transientFor = ask(XCB_ATOM_WM_TRANSIENT_FOR),
        .desktop = ask(atoms.netWmDesktop),
        .type = ask(atoms.netWmWindowType),
        .state = ask(atoms.netWmState),
        .panel = ask(atoms.orvantaPanel) };
}

/// Reads every answer, so that none is left in xcb's hands; nothing if the window was gone at any of them.
std::optional<X11Window> readAll(const X11Connection& connection, const WindowRequests& requests, const QByteArray& thisMachine)
{
    const X11Atoms& atoms = connection.atoms();
    const auto read = [&connection](xcb_get_property_cookie_t cookie) { return property(connection.raw(), cookie); };
    const PropertyReply windowClass = read(requests.windowClass);
    const PropertyReply gtkApplicationId = read(requests.gtkApplicationId);
    const PropertyReply process = read(requests.process);
    const PropertyReply machine = read(requests.machine);
    const PropertyReply transientFor = read(requests.transientFor);
    const PropertyReply desktop = read(requests.desktop);
    const PropertyReply type = read(requests.type);
    const PropertyReply state = read(requests.state);
    const PropertyReply panel = read(requests.panel);
    for (const PropertyReply* reply : { &windowClass, &gtkApplicationId, &process, &machine, &transientFor, &desktop, &type, &state, &panel }) {
        if (!*reply)
            return std::nullopt;
    }

    X11Window window;
    window.id = requests.window;
    const QByteArray names = bytes(windowClass);
    window.instanceName = firstText(names);
    window.className = firstText(names.sliced(std::min(names.size(), window.instanceName.size() + 1)));
    window.gtkApplicationId = firstText(bytes(gtkApplicationId));
    // What a client says of its own process is true on its own machine only, and not even there if it is contained.
    if (!connection.knowsProcesses() && firstText(bytes(machine)) == thisMachine)
        window.process = static_cast<pid_t>(number(process).value_or(0));
    window.transientFor = number(transientFor).value_or(XCB_NONE);
    window.desktop = number(desktop);
    window.isDesktopOrDock = contains(type, atoms.netWmWindowTypeDesktop) || contains(type, atoms.netWmWindowTypeDock);
    window.isHidden = contains(state, atoms.netWmStateHidden);
    window.skipsTaskbar = contains(state, atoms.netWmStateSkipTaskbar);
    window.isPanel = number(panel).has_value();
    return window;
}

/// The clients of some windows, each once.
class ProcessRequest {
public:
    ProcessRequest(const X11Connection& connection, std::span<const xcb_window_t> windows) : m_connection(connection)
    {
        if (!connection.knowsProcesses())
            return;
        std::unordered_set<std::uint32_t> clients;
        std::vector<xcb_res_client_id_spec_t> specs;
        for (const xcb_window_t window : windows) {
            if (const std::uint32_t client = clientOf(window); clients.insert(client).second)
                specs.push_back({ .client = client, .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID });
        }
        m_cookie = xcb_res_query_client_ids(connection.raw(), static_cast<std::uint32_t>(specs.size()), specs.data());
        m_isAsked = true;
    }

    void answer(std::vector<X11Window>& windows) const
    {
        if (!m_isAsked)
            return;
        const XcbPtr<xcb_res_query_client_ids_reply_t> reply(xcb_res_query_client_ids_reply(m_connection.raw(), m_cookie, nullptr));
        if (!reply)
            return;
        std::unordered_map<std::uint32_t, pid_t> processes;
        for (auto id = xcb_res_query_client_ids_ids_iterator(reply.get()); id.rem > 0; xcb_res_client_id_value_next(&id)) {
            if ((id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 && xcb_res_client_id_value_value_length(id.data) > 0)
                processes[clientOf(id.data->spec.client)] = static_cast<pid_t>(*xcb_res_client_id_value_value(id.data));
        }
        for (X11Window& window : windows) {
            if (const auto process = processes.find(clientOf(window.id)); process != processes.end())
                window.process = process->second;
        }
    }

private:
    [[nodiscard]] std::uint32_t clientOf(xcb_window_t window) const { return window & ~m_connection.windowMask(); }

    const X11Connection& m_connection;
    xcb_res_query_client_ids_cookie_t m_cookie {};
    bool m_isAsked = false;
};

} // namespace

xcb_window_t X11Windows::activeWindow()
{
    ++m_roundTrips;
    const auto cookie = askProperty(m_connection.raw(), m_connection.root(), m_connection.atoms().netActiveWindow, 1);
    return number(property(m_connection.raw(), cookie)).value_or(XCB_NONE);
}

xcb_window_t X11Windows::focusWindow()
{
    ++m_roundTrips;
    const XcbPtr<xcb_get_input_focus_reply_t> focus(xcb_get_input_focus_reply(m_connection.raw(), xcb_get_input_focus(m_connection.raw()), nullptr));
    if (!focus || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT || focus->focus == m_connection.root())
        return XCB_NONE;
    return focus->focus;
}

X11Desktop X11Windows::desktop()
{
    if (m_memory == Memory::none)
        return fetchDesktop();
    takeEvents();
    if (m_desktop)
        return *m_desktop;
    if (!std::exchange(m_isRootFollowed, true)) {
        // Before the properties are asked for, so that no change falls between.
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_connection.raw(), m_connection.root(), XCB_CW_EVENT_MASK, &events);
    }
    X11Desktop desktop = fetchDesktop();
    forgetAllBut(desktop);
    if (!m_connection.isLost())
        m_desktop = desktop;
    return desktop;
}

X11Desktop X11Windows::fetchDesktop()
{
    ++m_roundTrips;
    const X11Atoms& atoms = m_connection.atoms();
    xcb_connection_t* connection = m_connection.raw();
    const auto active = askProperty(connection, m_connection.root(), atoms.netActiveWindow, 1);
    const auto current = askProperty(connection, m_connection.root(), atoms.netCurrentDesktop, 1);
    const auto clients = askProperty(connection, m_connection.root(), atoms.netClientList, windowListProperty);
    const auto stacking = askProperty(connection, m_connection.root(), atoms.netClientListStacking, windowListProperty);

    X11Desktop desktop;
    desktop.activeWindow = number(property(connection, active)).value_or(XCB_NONE);
    desktop.currentDesktop = number(property(connection, current)).value_or(0);
    desktop.clients = windowList(property(connection, clients));
    desktop.stacking = windowList(property(connection, stacking));
    return desktop;
}

std::vector<X11Window> X11Windows::describe(std::span<const xcb_window_t> windows)
{
    takeEvents();
    std::vector<xcb_window_t> unknown;
    for (const xcb_window_t window : windows) {
        if (!m_remembered.contains(window))
            unknown.push_back(window);
    }
    std::unordered_map<xcb_window_t, X11Window> fetched;
    if (!unknown.empty()) {
        for (X11Window& window : fetch(unknown, m_memory))
            fetched.insert_or_assign(window.id, std::move(window));
    }
    if (m_memory == Memory::followed)
        m_remembered.merge(fetched);

    const auto& known = m_memory == Memory::followed ? m_remembered : fetched;
    std::vector<X11Window> result;
    result.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        if (const auto found = known.find(window); found != known.end())
            result.push_back(found->second);
    }
    return result;
}

std::vector<X11Window> X11Windows::fetch(std::span<const xcb_window_t> windows, Memory memory)
{
    if (windows.empty())
        return {};
    static const QByteArray thisMachine = machineName();
    ++m_roundTrips;
    std::vector<WindowRequests> requests;
    requests.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        if (memory == Memory::followed) {
            // Before the properties are asked for, so that no change falls between.
            const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
            xcb_change_window_attributes(m_connection.raw(), window, XCB_CW_EVENT_MASK, &events);
        }
        requests.push_back(askAll(m_connection, window));
    }
    const ProcessRequest processes(m_connection, windows);

    std::vector<X11Window> result;
    result.reserve(windows.size());
    for (const WindowRequests& request : requests) {
        if (auto window = readAll(m_connection, request, thisMachine))
            result.push_back(*std::move(window));
    }
    processes.answer(result);
    for (X11Window& window : result)
        window.isPanel = window.isPanel && (window.process == ::getpid() || !m_connection.knowsProcesses());
    return result;
}

void X11Windows::takeEvents()
{
    const X11Atoms& atoms = m_connection.atoms();
    const std::array described { xcb_atom_t { XCB_ATOM_WM_CLASS }, atoms.gtkApplicationId, atoms.netWmPid, xcb_atom_t { XCB_ATOM_WM_CLIENT_MACHINE },
        xcb_atom_t { XCB_ATOM_WM_TRANSIENT_FOR }, atoms.netWmDesktop, atoms.netWmWindowType, atoms.netWmState, atoms.orvantaPanel };
    const std::array ofDesktop { atoms.netActiveWindow, atoms.netCurrentDesktop, atoms.netClientList, atoms.netClientListStacking };
    while (const X11Event event = m_connection.nextEvent()) {
        const auto type = event->response_type & 0x7f;
        if (type == XCB_PROPERTY_NOTIFY) {
            const auto* notify = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
            if (notify->window == m_connection.root()) {
                if (std::ranges::find(ofDesktop, notify->atom) != ofDesktop.end())
                    m_desktop.reset();
            } else if (std::ranges::find(described, notify->atom) != described.end()) {
                m_remembered.erase(notify->window);
            }
        } else if (type == XCB_DESTROY_NOTIFY) {
            m_remembered.erase(reinterpret_cast<const xcb_destroy_notify_event_t*>(event.get())->window);
        }
    }
    if (m_connection.isLost())
        m_desktop.reset();
}

void X11Windows::forgetAllBut(const X11Desktop& desktop)
{
    std::unordered_set<xcb_window_t> present(desktop.clients.begin(), desktop.clients.end());
    present.insert(desktop.activeWindow);
    std::erase_if(m_remembered, [this, &present](const auto& entry) {
        if (present.contains(entry.first))
            return false;
        const std::uint32_t events = XCB_EVENT_MASK_NO_EVENT;
        xcb_change_window_attributes(m_connection.raw(), entry.first, XCB_CW_EVENT_MASK, &events);
        return true;
    });
}

void X11Windows::iconify(std::span<const xcb_window_t> windows)
{
    for (const xcb_window_t window : windows) {
        xcb_client_message_event_t message {};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = m_connection.atoms().wmChangeState;
        message.data.data32[0] = iconicState;
        // A message on the wire is 32 bytes, as long as this is.
        static_assert(sizeof(message) == 32);
        xcb_send_event(m_connection.raw(), 0, m_connection.root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
            reinterpret_cast<const char*>(&message));
    }
    ++m_roundTrips;
    m_connection.roundTrip();
}

std::optional<QRect> X11Windows::geometry(xcb_window_t window)
{
    ++m_roundTrips;
    xcb_connection_t* connection = m_connection.raw();
    const auto sizeCookie = xcb_get_geometry(connection, window);
    const auto placeCookie = xcb_translate_coordinates(connection, window, m_connection.root(), 0, 0);
    const XcbPtr<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(connection, sizeCookie, nullptr));
    const XcbPtr<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(connection, placeCookie, nullptr));
    if (!size || !place)
        return std::nullopt;
    return QRect(place->dst_x, place->dst_y, size->width, size->height);
}

std::vector<xcb_window_t> X11Windows::rootChildren()
{
    ++m_roundTrips;
    const XcbPtr<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection.raw(), xcb_query_tree(m_connection.raw(), m_connection.root()), nullptr));
    if (!tree)
        return {};
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    return { children, children + xcb_query_tree_children_length(tree.get()) };
}

std::optional<xcb_window_t> X11Windows::topLevelOf(xcb_window_t window)
{
    while (true) {
        ++m_roundTrips;
        const XcbPtr<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_connection.raw(), xcb_query_tree(m_connection.raw(), window), nullptr));
        if (!tree || tree->parent == XCB_NONE)
            return std::nullopt;
        if (tree->parent == m_connection.root())
            return window;
        window = tree->parent;
    }
}

bool X11Windows::isUnmanagedPanelShown()
{
    const std::vector<xcb_window_t> children = rootChildren();
    std::vector<xcb_get_window_attributes_cookie_t> cookies;
    cookies.reserve(children.size());
    for (const xcb_window_t child : children)
        cookies.push_back(xcb_get_window_attributes(m_connection.raw(), child));
    ++m_roundTrips;
    std::vector<xcb_window_t> candidates;
    for (std::size_t i = 0; i < children.size(); ++i) {
        const XcbPtr<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(m_connection.raw(), cookies[i], nullptr));
        if (attributes && attributes->override_redirect && attributes->map_state == XCB_MAP_STATE_VIEWABLE)
            candidates.push_back(children[i]);
    }
    const std::vector<X11Window> windows = fetch(candidates, Memory::none);
    return std::ranges::any_of(windows, [](const X11Window& window) { return window.isPanel; });
}

} // namespace orvanta
