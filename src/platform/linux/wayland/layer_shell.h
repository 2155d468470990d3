#pragma once

#include "platform/callback.h"

#include <memory>

class QScreen;
class QWindow;
struct wl_display;
struct wl_event_queue;
struct wl_surface;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

namespace orvanta {

/// The role of a surface that stands in the overlay layer of one display, above full-screen windows and on every workspace, as
/// large as the display, with the keyboard.
class LayerSurface {
public:
    /// `configured` is called each time the compositor has said where the surface stands, which has been acknowledged, and `closed`
    /// when it has taken the surface away; both from Qt's event loop.
    LayerSurface(zwlr_layer_surface_v1* role, wl_surface* surface, Callback<> configured, Callback<> closed);
    ~LayerSurface();
    LayerSurface(const LayerSurface&) = delete;
    LayerSurface& operator=(const LayerSurface&) = delete;

    /// Asks for the keyboard anew, which a window that was activated meanwhile may have.
    void takeKeyboard();

private:
    struct Listeners;

    zwlr_layer_surface_v1* m_role;
    wl_surface* m_surface;
    Callback<> m_configured;
    Callback<> m_closed;
};

/// Gives windows of Qt's that role, on Qt's own connection. Main thread only; needs Qt's Wayland platform.
class LayerShell {
public:
    /// Null if the compositor does not offer it, or Qt does not speak Wayland.
    [[nodiscard]] static std::unique_ptr<LayerShell> find();
    ~LayerShell();
    LayerShell(const LayerShell&) = delete;
    LayerShell& operator=(const LayerShell&) = delete;

    /// Null if the window has no surface yet. The window must have been made without a role, and must not be shown before
    /// `configured`.
    [[nodiscard]] std::unique_ptr<LayerSurface> cover(QWindow& window, QScreen* display, Callback<> configured, Callback<> closed) const;

private:
    LayerShell(zwlr_layer_shell_v1* shell, wl_event_queue* queue) : m_shell(shell), m_queue(queue) { }

    zwlr_layer_shell_v1* m_shell;
    wl_event_queue* m_queue; ///< what the globals were asked for through
};

/// What every surface of ours in the overlay layer bears as its namespace.
inline constexpr auto layerNamespace = "orvanta-panel";

} // namespace orvanta
