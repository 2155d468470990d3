#pragma once

#include "platform/linux/wayland/wayland_display.h"
#include "platform/linux/wayland/window_feed.h"

#include <memory>
#include <string>

struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace orvanta {

/// The windows as compositors tell them by wlr-foreign-toplevel-management: labwc, Hyprland, Wayfire and others. Panels of
/// ours are layer surfaces, which it leaves out; while one has the keyboard, no window is in front. Hiding: a special workspace of
/// Hyprland, elsewhere minimising.
class ToplevelFeed final : public WindowFeed {
public:
    /// `display` outlives the feed and is dispatched by its owner.
    explicit ToplevelFeed(WaylandDisplay& display);
    ~ToplevelFeed() override;

    void update() override;
    [[nodiscard]] bool isAttached() const override { return m_manager != nullptr && m_isSettled; }
    [[nodiscard]] std::vector<DesktopWindow> windows() override;
    [[nodiscard]] std::optional<DesktopWindow> front() override;
    [[nodiscard]] std::vector<DesktopWindow> takeActivations() override;
    void hide(std::span<const DesktopWindow> windows) override;

private:
    struct Output {
        std::uint32_t global = 0;
        wl_output* output = nullptr;
        QString name;
    };
    struct Toplevel {
        ToplevelFeed* feed = nullptr;
        zwlr_foreign_toplevel_handle_v1* handle = nullptr;
        DesktopWindow window;
        QString title;
        bool isChild = false;
        std::vector<wl_output*> outputs;
        bool isActivated = false; ///< as the events since the last "done" say
    };
    struct Listeners;

    void followOutputs();
    [[nodiscard]] DesktopWindow described(const Toplevel& toplevel) const;

    WaylandDisplay& m_display;
    zwlr_foreign_toplevel_manager_v1* m_manager;
    bool m_isSettled = false;
    std::uint64_t m_lastNumber = 0;
    std::vector<std::unique_ptr<Output>> m_outputs;
    std::vector<std::unique_ptr<Toplevel>> m_toplevels;
    std::vector<DesktopWindow> m_activations;
};

} // namespace orvanta
