#pragma once

#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_windows.h"

#include <QProcess>
#include <QRect>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace orvanta::testing {

/// How long a test waits for something that has to come.
inline constexpr int patience = 15'000;

/// An X client of the test's own, which can do what any client can: the counterpart of what is tested, on a connection of its
/// own. Requests are done when the call returns.
class X11TestClient {
public:
    struct Look {
        QByteArray instanceName = {}; ///< with className: WM_CLASS; there is none if both are empty
        QByteArray className = {};
        QRect geometry = QRect(100, 100, 200, 150);
        xcb_window_t transientFor = XCB_NONE;
        bool isOverrideRedirect = false;
    };

    X11TestClient();

    /// Makes a window without mapping it.
    [[nodiscard]] xcb_window_t create(const Look& look);
    void map(xcb_window_t window);
    void unmap(xcb_window_t window);
    void destroy(xcb_window_t window);
    /// Destroys every window that this client made and has not destroyed.
    void destroyAll();

    /// Makes a window, maps it, and waits until it is the active one (of an override-redirect one: until it is viewable).
    [[nodiscard]] xcb_window_t show(const Look& look);

    void setProperty(xcb_window_t window, const QByteArray& property, xcb_atom_t type, std::span<const std::uint32_t> values);
    void setText(xcb_window_t window, const QByteArray& property, const QByteArray& value);
    [[nodiscard]] xcb_atom_t atom(const QByteArray& name);

    /// Asks the window manager to activate a window, as a taskbar does: from whatever state it is in.
    void activate(xcb_window_t window);
    /// Gives the keyboard to a window without asking the window manager.
    void setInputFocus(xcb_window_t window);

    [[nodiscard]] bool isViewable(xcb_window_t window);
    /// Waits until the window is the active one and has the keyboard, and the window manager has nothing left to do about it.
    [[nodiscard]] bool waitForActive(xcb_window_t window);
    /// Waits until no window is active that exists.
    [[nodiscard]] bool waitForNoActive();

    [[nodiscard]] X11Connection& connection() { return *m_connection; }
    [[nodiscard]] X11Windows& windows() { return m_windows; }

    /// The managed windows of a process, oldest first.
    [[nodiscard]] std::vector<xcb_window_t> windowsOf(qint64 process);

    /// How many clients of the server this process is.
    [[nodiscard]] std::size_t clientsOfThisProcess();

private:
    [[nodiscard]] xcb_timestamp_t serverTime();
    [[nodiscard]] bool hasKeyboard(xcb_window_t window);
    [[nodiscard]] bool waitForWindowManager();

    std::unique_ptr<X11Connection> m_connection;
    X11Windows m_windows;
    std::vector<xcb_window_t> m_made;
    xcb_window_t m_clock; ///< never mapped: what changes on it tells the server's time
};

/// A real application, from its start to the end of this.
class StartedApplication {
public:
    StartedApplication(X11TestClient& client, const QString& program, const QStringList& arguments = {});
    ~StartedApplication();
    StartedApplication(const StartedApplication&) = delete;
    StartedApplication& operator=(const StartedApplication&) = delete;

    /// Whether it has that many windows, waiting for them.
    [[nodiscard]] bool waitForWindows(std::size_t count);
    [[nodiscard]] std::vector<xcb_window_t> windows();
    [[nodiscard]] bool isViewable();

private:
    X11TestClient& m_client;
    QProcess m_process;
};

/// The sockets that this process has open, and what cuts those of them that have come since: the X server then seems to
/// have gone away.
class OpenSockets {
public:
    OpenSockets() : m_before(list()) { }
    /// Returns how many were cut.
    [[nodiscard]] std::size_t cutNewOnes() const;

private:
    static std::vector<int> list();

    std::vector<int> m_before;
};

/// Runs a program to its end; whether it succeeded.
[[nodiscard]] bool run(const QString& program, const QStringList& arguments);

} // namespace orvanta::testing
