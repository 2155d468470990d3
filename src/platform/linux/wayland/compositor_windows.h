#pragma once

#include "platform/callback.h"
#include "platform/linux/bounded_bus.h"
#include "platform/linux/wayland/wayland_display.h"
#include "platform/linux/wayland/window_feed.h"

#include <QSocketNotifier>
#include <QTimer>

#include <chrono>
#include <memory>

namespace orvanta {

class SwayFeed;

/// Where what is known of the windows comes from.
enum class WindowSource { none, gnomeExtension, kwinScript, swayCommands, foreignToplevel };

/// The windows of a Wayland desktop by the best source that is there: GNOME's extension, KWin's script, sway's commands, wlr-foreign-toplevel. Each
/// is looked for by what it offers, never by the desktop's name; one that goes is missed, and one that comes is taken. Used on one
/// thread, with connections of its own.
class CompositorWindows {
public:
    CompositorWindows();
    ~CompositorWindows();
    CompositorWindows(const CompositorWindows&) = delete;
    CompositorWindows& operator=(const CompositorWindows&) = delete;

    /// Takes in what has been said, without waiting, and gives the source in use; null while there is none.
    [[nodiscard]] WindowFeed* feed();

    /// Which one that was; and a number that grows each time another one is taken, also the same kind anew.
    [[nodiscard]] WindowSource source() const { return m_source; }
    [[nodiscard]] std::uint64_t attachment() const { return m_attachment; }

    /// Has `changed` called from this thread's event loop whenever something may have been said. It calls
    /// feed(), and must not destroy this.
    void watch(Callback<> changed);

    /// Has `changed` called from this thread's event loop after source() has changed, while watch() is on. An empty one ends it.
    void onSourceChange(Callback<> changed) { m_sourceChanged = std::move(changed); }

private:
    void open();
    void follow();
    void tell();

    std::unique_ptr<WaylandDisplay> m_display;
    std::unique_ptr<BoundedBus> m_bus;
    std::unique_ptr<WindowFeed> m_gnome;
    std::unique_ptr<WindowFeed> m_kwin;
    std::unique_ptr<SwayFeed> m_sway;
    std::unique_ptr<WindowFeed> m_toplevels;

    WindowFeed* m_used = nullptr;
    WindowSource m_source = WindowSource::none;
    std::uint64_t m_attachment = 0;
    std::chrono::steady_clock::time_point m_nextTry;
    bool m_isHungUpOn = false; ///< by sway, which is still there

    Callback<> m_changed;
    Callback<> m_sourceChanged;
    std::unique_ptr<QSocketNotifier> m_displayNotifier;
    std::unique_ptr<QSocketNotifier> m_busNotifier;
    std::unique_ptr<QSocketNotifier> m_swayNotifier;
    std::unique_ptr<QTimer> m_later; ///< calls `changed` once more
    bool m_isTelling = false;
};

} // namespace orvanta
