#pragma once

#include "platform/linux/x11_connection.h"

#include <QByteArray>
#include <QRect>

#include <cstdint>
#include <optional>
#include <span>
#include <sys/types.h>
#include <unordered_map>
#include <vector>

namespace orvanta {

/// What one window says about itself.
struct X11Window {
    xcb_window_t id = XCB_NONE;

    // What tells the application:
    QByteArray instanceName; ///< the first part of WM_CLASS, empty if there is none
    QByteArray className;    ///< the second
    QByteArray gtkApplicationId;
    pid_t process = 0; ///< 0 if it is not known or runs on another machine

    // What tells the window's part in it:
    xcb_window_t transientFor = XCB_NONE;
    std::optional<std::uint32_t> desktop; ///< 0xFFFFFFFF stands for all of them
    bool isDesktopOrDock = false;
    bool isHidden = false; ///< iconified, or shaded away otherwise
    bool skipsTaskbar = false;
    bool isPanel = false; ///< marked by markPanelWindow() of our own process

    bool operator==(const X11Window&) const = default;
};

/// The windows that the window manager looks after, in one moment.
struct X11Desktop {
    xcb_window_t activeWindow = XCB_NONE;
    std::uint32_t currentDesktop = 0;
    std::vector<xcb_window_t> clients;  ///< oldest first
    std::vector<xcb_window_t> stacking; ///< lowest first
};

/// What the X server and the window manager know of windows, asked through one connection, which outlives this. Every
/// operation sends all its requests before it waits for the first answer, so each costs one round trip. Coordinates are
/// the server's own. On a lost connection every answer is empty.
class X11Windows {
public:
    /// How what was asked before is answered again.
    enum class Memory {
        none,     ///< it is asked for afresh; for those who ask rarely
        followed, ///< only what the server has announced a change of is asked for; for those who ask often
    };

    X11Windows(X11Connection& connection, Memory memory) : m_connection(connection), m_memory(memory) { }

    /// What the window manager calls active; none if it calls none so. Need not exist any more: some window managers go on
    /// naming the last window when all are closed.
    [[nodiscard]] xcb_window_t activeWindow();

    /// What the keyboard writes to; none if it follows the pointer. May be a window that no window manager looks after, or a
    /// window manager's own, out of everyone's sight.
    [[nodiscard]] xcb_window_t focusWindow();

    /// From a followed memory it costs no round trip unless the server has announced a change, and is what was announced
    /// until now; the memory forgets the windows that are no longer here.
    [[nodiscard]] X11Desktop desktop();

    /// Describes `windows`, in their order; those that no longer exist are left out. Costs no round trip where everything is
    /// remembered; a followed memory consumes the connection's events.
    [[nodiscard]] std::vector<X11Window> describe(std::span<const xcb_window_t> windows);

    /// Asks the window manager to iconify the windows, in their order. When it returns, the wish stands before whatever is
    /// asked of the server afterwards, on whichever connection.
    void iconify(std::span<const xcb_window_t> windows);

    /// Where the window stands on the root window, without its frame; nothing if it does not exist.
    [[nodiscard]] std::optional<QRect> geometry(xcb_window_t window);

    /// Everything that hangs directly under the root, lowest first: frames of managed windows, and windows that no manager
    /// looks after. A managed window's place among them is that of its topLevelOf().
    [[nodiscard]] std::vector<xcb_window_t> rootChildren();

    /// The child of the root that is `window` or contains it; nothing if there is none.
    [[nodiscard]] std::optional<xcb_window_t> topLevelOf(xcb_window_t window);

    /// Whether one of our marked panels that no window manager looks after is on screen.
    [[nodiscard]] bool isUnmanagedPanelShown();

    /// Takes in what the server has announced, without waiting. A connection that was lost meanwhile is noticed here.
    void takeEvents();

    /// How often this has waited for the server.
    [[nodiscard]] std::uint64_t roundTrips() const { return m_roundTrips; }

private:
    [[nodiscard]] X11Desktop fetchDesktop();
    void forgetAllBut(const X11Desktop& desktop);
    [[nodiscard]] std::vector<X11Window> fetch(std::span<const xcb_window_t> windows, Memory memory);

    X11Connection& m_connection;
    Memory m_memory;
    std::optional<X11Desktop> m_desktop; ///< as it is until a change is announced
    bool m_isRootFollowed = false;
    std::unordered_map<xcb_window_t, X11Window> m_remembered;
    std::uint64_t m_roundTrips = 0;
};

} // namespace orvanta
