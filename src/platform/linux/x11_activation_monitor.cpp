#include "platform/linux/x11_activation_monitor.h"

#include <QTimer>

#include <algorithm>
#include <array>

namespace orvanta {

namespace {

/// How long to wait before a lost connection is opened again, doubled with each failure.
constexpr std::chrono::milliseconds shortestPatience { 250 };
constexpr std::chrono::milliseconds longestPatience { 8000 };

/// The keyboard really came or went: not into the same window's depth, and not for a menu's or a shortcut's grab.
bool movesKeyboard(const xcb_focus_in_event_t& event)
{
    return (event.mode == XCB_NOTIFY_MODE_NORMAL || event.mode == XCB_NOTIFY_MODE_WHILE_GRABBED) && event.detail != XCB_NOTIFY_DETAIL_INFERIOR;
}

} // namespace

X11ActivationMonitor::X11ActivationMonitor(const PanelWindows& panels, OwnApplication own)
    : m_panels(panels)
    , m_identity(std::move(own))
    , m_patience(shortestPatience)
{
}

Subscription X11ActivationMonitor::observe(Callback<std::optional<QString>> activated)
{
    // What happened before now is for those who were here before.
    if (!m_session)
        open();
    if (m_session)
        takeEvents();
    return m_activations.observe(std::move(activated));
}

void X11ActivationMonitor::open()
{
    auto opened = X11Connection::open();
    if (!opened) {
        if (m_patience == shortestPatience)
            qWarning("Applications cannot be watched. %s", qUtf8Printable(opened.error().description));
        reopenLater();
        return;
    }
    m_patience = shortestPatience;
    m_session = std::make_unique<Session>(std::move(*opened));

    X11Connection& connection = *m_session->connection;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection.raw(), connection.root(), XCB_CW_EVENT_MASK, &events);
    connection.watch([this] { takeEvents(); });

    // Read after the events were asked for, so that no change falls between.
    const xcb_window_t active = m_session->windows.activeWindow();
    if (std::exchange(m_hasBegun, true) && active != m_active) {
        consider(active);
    } else {
        follow(active);
        // The desktop entries are read before the first activation has to be answered within a frame.
        QMetaObject::invokeMethod(&m_context, [this] { m_identity.refresh(); }, Qt::QueuedConnection);
    }
    takeEvents();
}

void X11ActivationMonitor::reopenLater()
{
    QTimer::singleShot(m_patience, &m_context, [this] {
        if (!m_session)
            open();
    });
    m_patience = std::min(2 * m_patience, longestPatience);
}

void X11ActivationMonitor::takeEvents()
{
    while (m_session) {
        const X11Event event = m_session->connection->nextEvent();
        if (!event)
            break;
        handle(*event);
    }
    if (!m_session || !m_session->connection->isLost())
        return;
    qWarning("The connection to the X server was lost; applications are watched again when it is back.");
    // Not at once: the connection itself may be calling.
    QMetaObject::invokeMethod(
        &m_context,
        [this] {
            if (m_session && m_session->connection->isLost()) {
                m_session.reset();
                open();
            }
        },
        Qt::QueuedConnection);
}

void X11ActivationMonitor::handle(const xcb_generic_event_t& event)
{
    const auto type = event.response_type & 0x7f;
    if (type == XCB_FOCUS_OUT || type == XCB_FOCUS_IN) {
        const auto& move = reinterpret_cast<const xcb_focus_in_event_t&>(event);
        m_hasKeyboardMoved = m_hasKeyboardMoved || (move.event == m_active && movesKeyboard(move));
    } else if (type == XCB_UNMAP_NOTIFY) {
        m_hasKeyboardMoved = m_hasKeyboardMoved || reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window == m_active;
    } else if (type == XCB_PROPERTY_NOTIFY) {
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notify.window == m_session->connection->root() && notify.atom == m_session->connection->atoms().netActiveWindow)
            consider(m_session->windows.activeWindow());
    }
}

/// Remembers `active`, and watches whether the keyboard leaves it or comes to it: the window manager may say the same
/// window twice without anything between, and it may say something between that is over before we can read it.
void X11ActivationMonitor::follow(xcb_window_t active)
{
    xcb_connection_t* connection = m_session->connection->raw();
    const std::uint32_t nothing = XCB_EVENT_MASK_NO_EVENT;
    const std::uint32_t moves = XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (m_active != XCB_NONE && m_active != active)
        xcb_change_window_attributes(connection, m_active, XCB_CW_EVENT_MASK, &nothing);
    if (active != XCB_NONE)
        xcb_change_window_attributes(connection, active, XCB_CW_EVENT_MASK, &moves);
    xcb_flush(connection);
    m_active = active;
    m_hasKeyboardMoved = false;
}

void X11ActivationMonitor::consider(xcb_window_t active)
{
    if (m_session->connection->isLost() || (active == m_active && !m_hasKeyboardMoved))
        return;
    follow(active);
    if (m_panels.contains(active))
        return;

    std::optional<QString> identifier;
    if (active != XCB_NONE) {
        m_identity.refresh();
        const std::vector<X11Window> described = m_session->windows.describe(std::array { active });
        m_identity.forgetAllBut(described);
        if (!described.empty())
            identifier = m_identity.of(described.front()).identifier;
    }
    m_activations.add(identifier);
}

} // namespace orvanta
