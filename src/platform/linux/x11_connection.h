#pragma once

#include "platform/callback.h"
#include "platform/platform_error.h"

#include <QByteArray>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

class QSocketNotifier;

namespace orvanta {

/// For what xcb allocates and leaves to its caller to free.
struct XcbFree {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XcbPtr = std::unique_ptr<T, XcbFree>;
using X11Event = XcbPtr<xcb_generic_event_t>;

/// The atoms that the X11 adapters use, named as in the protocol.
struct X11Atoms {
    xcb_atom_t utf8String = XCB_ATOM_NONE;
    xcb_atom_t gtkApplicationId = XCB_ATOM_NONE;
    xcb_atom_t netActiveWindow = XCB_ATOM_NONE;
    xcb_atom_t netClientList = XCB_ATOM_NONE;
    xcb_atom_t netClientListStacking = XCB_ATOM_NONE;
    xcb_atom_t netCurrentDesktop = XCB_ATOM_NONE;
    xcb_atom_t netSupportingWmCheck = XCB_ATOM_NONE;
    xcb_atom_t netWmDesktop = XCB_ATOM_NONE;
    xcb_atom_t netWmPid = XCB_ATOM_NONE;
    xcb_atom_t netWmState = XCB_ATOM_NONE;
    xcb_atom_t netWmStateHidden = XCB_ATOM_NONE;
    xcb_atom_t netWmStateSkipTaskbar = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowType = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeDesktop = XCB_ATOM_NONE;
    xcb_atom_t netWmWindowTypeDock = XCB_ATOM_NONE;
    xcb_atom_t orvantaPanel = XCB_ATOM_NONE;
    xcb_atom_t wmChangeState = XCB_ATOM_NONE;
};

/// One connection to the X server, apart from Qt's, which may be used on any one thread. Owned by the adapter that asks
/// through it. A connection that is lost stays lost: every request on it fails at once, and its owner opens another.
class X11Connection {
public:
    /// Opens a connection to `display`, or to the one that the environment names. Takes two round trips.
    [[nodiscard]] static Result<std::unique_ptr<X11Connection>> open(const QByteArray& display = {});
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    [[nodiscard]] xcb_connection_t* raw() const { return m_connection; }
    [[nodiscard]] xcb_window_t root() const { return m_root; }
    [[nodiscard]] const X11Atoms& atoms() const { return m_atoms; }

    /// The bits of a window's number that its client chose; the others are the client's own number.
    [[nodiscard]] std::uint32_t windowMask() const { return m_windowMask; }

    /// Whether the server tells which process a client is (the extension X-Resource in version 1.2).
    [[nodiscard]] bool knowsProcesses() const { return m_knowsProcesses; }

    [[nodiscard]] bool isLost() const { return xcb_connection_has_error(m_connection) != 0; }

    /// Has `readable` called by the event loop of this thread whenever events may have come, and a last time when the
    /// connection is lost; it must not destroy the connection. It has to take every event: those that arrive while the
    /// answer to a request is awaited do not make the socket readable again, so take the events after requests, too.
    void watch(Callback<> readable);

    /// The next event that has come, without waiting; nothing when there is none.
    [[nodiscard]] X11Event nextEvent() { return X11Event(xcb_poll_for_event(m_connection)); }

    /// Sends what is waiting to be sent, and waits until the server has done all that was asked of it.
    void roundTrip();

private:
    explicit X11Connection(xcb_connection_t* connection);
    [[nodiscard]] Result<void> prepare(int screenNumber);

    xcb_connection_t* m_connection;
    xcb_window_t m_root = XCB_NONE;
    std::uint32_t m_windowMask = 0;
    bool m_knowsProcesses = false;
    X11Atoms m_atoms;
    std::unique_ptr<QSocketNotifier> m_notifier;
    Callback<> m_readable;
};

} // namespace orvanta
