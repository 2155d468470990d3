#pragma once

#include "platform/activation_monitor.h"
#include "platform/linux/application_identity.h"
#include "platform/linux/told_activations.h"
#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_panel_windows.h"
#include "platform/linux/x11_windows.h"

#include <QObject>

#include <chrono>
#include <memory>

namespace orvanta {

/// Watches which window the window manager calls active, on a connection of its own. Every change counts, also that to
/// another window of the same application, which may need to be covered anew; no active window is reported as an
/// application without identifier. A connection that is lost is said on standard error and opened again; what came
/// to the front meanwhile is then reported.
class X11ActivationMonitor : public ActivationMonitor {
public:
    /// `panels` outlives the monitor. Where there is no X server nothing is ever reported, and it is tried again.
    explicit X11ActivationMonitor(const PanelWindows& panels, OwnApplication own = OwnApplication::current());

    [[nodiscard]] Subscription observe(Callback<std::optional<QString>> activated) override;

private:
    struct Session {
        explicit Session(std::unique_ptr<X11Connection> opened) : connection(std::move(opened)), windows(*connection, X11Windows::Memory::none) { }

        std::unique_ptr<X11Connection> connection;
        X11Windows windows;
    };

    void open();
    void reopenLater();
    void takeEvents();
    void handle(const xcb_generic_event_t& event);
    void follow(xcb_window_t active);
    void consider(xcb_window_t active);

    const PanelWindows& m_panels;
    ApplicationIdentity m_identity;
    ToldActivations m_activations;

    std::unique_ptr<Session> m_session;
    xcb_window_t m_active = XCB_NONE; ///< as it was read last
    bool m_hasKeyboardMoved = false;  ///< whether that window was seen losing or getting the keyboard since
    bool m_hasBegun = false;          ///< whether m_active was ever read
    std::chrono::milliseconds m_patience;
    QObject m_context; ///< last, so that nothing queued outlives what it uses
};

} // namespace orvanta
