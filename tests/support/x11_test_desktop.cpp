#include "support/x11_test_desktop.h"

#include <QDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xcb/res.h>

namespace orvanta::testing {

namespace {

std::unique_ptr<X11Connection> opened()
{
    auto connection = X11Connection::open();
    if (!connection)
        throw std::runtime_error(connection.error().description.toStdString());
    return std::move(*connection);
}

} // namespace

X11TestClient::X11TestClient()
    : m_connection(opened())
    , m_windows(*m_connection, X11Windows::Memory::none)
    , m_clock(xcb_generate_id(m_connection->raw()))
{
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection->raw(), XCB_COPY_FROM_PARENT, m_clock, m_connection->root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
}

xcb_timestamp_t X11TestClient::serverTime()
{
    setText(m_clock, "WM_NAME", {});
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    while (const X11Event event = m_connection->nextEvent()) {
        if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY)
            time = reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
    }
    return time;
}

xcb_window_t X11TestClient::create(const Look& look)
{
    xcb_connection_t* raw = m_connection->raw();
    const xcb_window_t window = xcb_generate_id(raw);
    const std::uint32_t overrideRedirect = look.isOverrideRedirect ? 1 : 0;
    xcb_create_window(raw, XCB_COPY_FROM_PARENT, window, m_connection->root(), static_cast<std::int16_t>(look.geometry.x()),
        static_cast<std::int16_t>(look.geometry.y()), static_cast<std::uint16_t>(look.geometry.width()),
        static_cast<std::uint16_t>(look.geometry.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
        &overrideRedirect);
    if (!look.instanceName.isEmpty() || !look.className.isEmpty())
        setText(window, "WM_CLASS", look.instanceName + '\0' + look.className + '\0');
    if (look.transientFor != XCB_NONE)
        setProperty(window, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, std::array { look.transientFor });
    // The user's own position and size (bits 0 and 1), so that no window manager places the window elsewhere.
    const std::array<std::uint32_t, 18> hints { 3, static_cast<std::uint32_t>(look.geometry.x()), static_cast<std::uint32_t>(look.geometry.y()) };
    setProperty(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, hints);
    m_made.push_back(window);
    return window;
}

void X11TestClient::map(xcb_window_t window)
{
    xcb_map_window(m_connection->raw(), window);
    m_connection->roundTrip();
}

void X11TestClient::unmap(xcb_window_t window)
{
    xcb_unmap_window(m_connection->raw(), window);
    m_connection->roundTrip();
}

void X11TestClient::destroy(xcb_window_t window)
{
    std::erase(m_made, window);
    xcb_destroy_window(m_connection->raw(), window);
    m_connection->roundTrip();
}

void X11TestClient::destroyAll()
{
    while (!m_made.empty())
        destroy(m_made.back());
}

xcb_window_t X11TestClient::show(const Look& look)
{
    const xcb_window_t window = create(look);
    map(window);
    if (look.isOverrideRedirect)
        return QTest::qWaitFor([this, window] { return isViewable(window); }, patience) ? window : XCB_NONE;
    if (waitForActive(window))
        return window;
    // A window manager that was not yet done with a window that went has given the keyboard to another one.
    activate(window);
    return waitForActive(window) ? window : XCB_NONE;
}

xcb_atom_t X11TestClient::atom(const QByteArray& name)
{
    const XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_connection->raw(), xcb_intern_atom(m_connection->raw(), 0, static_cast<std::uint16_t>(name.size()), name.constData()), nullptr));
    return reply ? reply->atom : xcb_atom_t { XCB_ATOM_NONE };
}

void X11TestClient::setProperty(xcb_window_t window, const QByteArray& property, xcb_atom_t type, std::span<const std::uint32_t> values)
{
    xcb_change_property(
        m_connection->raw(), XCB_PROP_MODE_REPLACE, window, atom(property), type, 32, static_cast<std::uint32_t>(values.size()), values.data());
    m_connection->roundTrip();
}

void X11TestClient::setText(xcb_window_t window, const QByteArray& property, const QByteArray& value)
{
    xcb_change_property(m_connection->raw(), XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_STRING, 8,
        static_cast<std::uint32_t>(value.size()), value.constData());
    m_connection->roundTrip();
}

void X11TestClient::activate(xcb_window_t window)
{
    xcb_client_message_event_t message {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = m_connection->atoms().netActiveWindow;
    message.data.data32[0] = 2; // a taskbar speaks for the user
    // Without its time the server would let an older wish for the keyboard win.
    message.data.data32[1] = serverTime();
    xcb_send_event(m_connection->raw(), 0, m_connection->root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
        reinterpret_cast<const char*>(&message));
    m_connection->roundTrip();
}

void X11TestClient::setInputFocus(xcb_window_t window)
{
    xcb_set_input_focus(m_connection->raw(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    m_connection->roundTrip();
}

bool X11TestClient::isViewable(xcb_window_t window)
{
    const XcbPtr<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection->raw(), xcb_get_window_attributes(m_connection->raw(), window), nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool X11TestClient::hasKeyboard(xcb_window_t window)
{
    xcb_window_t focus = m_windows.focusWindow();
    while (focus != XCB_NONE && focus != window) {
        const XcbPtr<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_connection->raw(), xcb_query_tree(m_connection->raw(), focus), nullptr));
        focus = tree ? tree->parent : XCB_NONE;
    }
    return focus == window;
}

/// A question that window managers answer in its turn, by a property on our window.
bool X11TestClient::waitForWindowManager()
{
    const xcb_atom_t extents = atom("_NET_FRAME_EXTENTS");
    xcb_delete_property(m_connection->raw(), m_clock, extents);
    xcb_client_message_event_t message {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = m_clock;
    message.type = atom("_NET_REQUEST_FRAME_EXTENTS");
    xcb_send_event(m_connection->raw(), 0, m_connection->root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
        reinterpret_cast<const char*>(&message));
    const auto isAnswered = [this, extents] {
        const XcbPtr<xcb_get_property_reply_t> answer(xcb_get_property_reply(
            m_connection->raw(), xcb_get_property(m_connection->raw(), 0, m_clock, extents, XCB_GET_PROPERTY_TYPE_ANY, 0, 4), nullptr));
        return answer && answer->value_len > 0;
    };
    return QTest::qWaitFor(isAnswered, patience);
}

bool X11TestClient::waitForActive(xcb_window_t window)
{
    const auto isActive = [this, window] { return m_windows.activeWindow() == window && hasKeyboard(window); };
    // What the window manager does about one event makes the next: it is done when it changes nothing any more.
    const auto isAtRest = [this, &isActive] {
        for (int i = 0; i < 3; ++i) {
            if (!isActive() || !waitForWindowManager())
                return false;
        }
        return isActive();
    };
    return QTest::qWaitFor(isAtRest, patience);
}

bool X11TestClient::waitForNoActive()
{
    return QTest::qWaitFor([this] { return !m_windows.geometry(m_windows.activeWindow()); }, patience);
}

std::vector<xcb_window_t> X11TestClient::windowsOf(qint64 process)
{
    std::vector<xcb_window_t> result;
    for (const X11Window& window : m_windows.describe(m_windows.desktop().clients)) {
        if (window.process == process)
            result.push_back(window.id);
    }
    return result;
}

std::size_t X11TestClient::clientsOfThisProcess()
{
    const xcb_res_client_id_spec_t everyone { .client = XCB_NONE, .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID };
    const XcbPtr<xcb_res_query_client_ids_reply_t> reply(
        xcb_res_query_client_ids_reply(m_connection->raw(), xcb_res_query_client_ids(m_connection->raw(), 1, &everyone), nullptr));
    std::size_t count = 0;
    if (!reply)
        return count;
    for (auto id = xcb_res_query_client_ids_ids_iterator(reply.get()); id.rem > 0; xcb_res_client_id_value_next(&id)) {
        if (xcb_res_client_id_value_value_length(id.data) > 0 && *xcb_res_client_id_value_value(id.data) == static_cast<std::uint32_t>(::getpid()))
            ++count;
    }
    return count;
}

std::vector<int> OpenSockets::list()
{
    std::vector<int> sockets;
    for (const QString& name : QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        struct stat status {};
        if (const int descriptor = name.toInt(); ::fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode))
            sockets.push_back(descriptor);
    }
    return sockets;
}

std::size_t OpenSockets::cutNewOnes() const
{
    std::size_t cut = 0;
    for (const int descriptor : list()) {
        if (std::ranges::find(m_before, descriptor) == m_before.end() && ::shutdown(descriptor, SHUT_RDWR) == 0)
            ++cut;
    }
    return cut;
}

StartedApplication::StartedApplication(X11TestClient& client, const QString& program, const QStringList& arguments) : m_client(client)
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.start(program, arguments);
}

StartedApplication::~StartedApplication()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool StartedApplication::waitForWindows(std::size_t count)
{
    return QTest::qWaitFor([this, count] { return windows().size() >= count; }, patience);
}

std::vector<xcb_window_t> StartedApplication::windows()
{
    return m_client.windowsOf(m_process.processId());
}

bool StartedApplication::isViewable()
{
    return std::ranges::any_of(windows(), [this](xcb_window_t window) { return m_client.isViewable(window); });
}

bool run(const QString& program, const QStringList& arguments)
{
    return QProcess::execute(program, arguments) == 0;
}

} // namespace orvanta::testing
