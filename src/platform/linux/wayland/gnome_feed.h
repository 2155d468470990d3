#pragma once

#include "platform/linux/wayland/bus_helper.h"
#include "platform/linux/wayland/window_feed.h"

namespace orvanta {

/// The windows as our extension of GNOME Shell tells them; without it nobody does. It tells applications, each of which stands here
/// as one window.
class GnomeFeed final : public WindowFeed {
public:
    /// `bus` outlives the feed and is dispatched by its owner.
    explicit GnomeFeed(BoundedBus& bus);
    ~GnomeFeed() override;

    void update() override { }
    [[nodiscard]] bool isAttached() const override { return !m_shell.owner().empty(); }
    [[nodiscard]] std::vector<DesktopWindow> windows() override;
    [[nodiscard]] std::optional<DesktopWindow> front() override;
    [[nodiscard]] std::vector<DesktopWindow> takeActivations() override { return std::exchange(m_activations, {}); }
    void hide(std::span<const DesktopWindow> windows) override;

private:
    static void activated(GDBusConnection* connection, const char* sender, const char* path, const char* interface, const char* signal,
        GVariant* arguments, gpointer feed);

    [[nodiscard]] BusQuestion question(const char* method, const char* replyType) const;

    BusHelper m_shell;
    guint m_subscription = 0;
    std::vector<DesktopWindow> m_activations;
};

} // namespace orvanta
