#pragma once

#include "platform/linux/wayland/command_socket.h"
#include "platform/linux/wayland/window_feed.h"

#include <QJsonObject>

#include <memory>
#include <optional>

namespace orvanta {

class WaylandDisplay;

/// The windows as sway tells them over its own socket. By wlr-foreign-toplevel it does not say which window the user goes to while a
/// cover has the keyboard, and it knows no minimising: windows are hidden in the scratchpad.
class SwayFeed final : public WindowFeed {
public:
    /// `socket` as swaySocket() found it.
    explicit SwayFeed(QByteArray socket);

    void update() override;
    [[nodiscard]] bool isAttached() const override { return m_events.isConnected(); }
    [[nodiscard]] std::vector<DesktopWindow> windows() override;
    [[nodiscard]] std::optional<DesktopWindow> front() override;
    [[nodiscard]] std::vector<DesktopWindow> takeActivations() override { return std::exchange(m_activations, {}); }
    void hide(std::span<const DesktopWindow> windows) override;

    /// Readable when update() has something to do.
    [[nodiscard]] int descriptor() const { return m_events.descriptor(); }

private:
    QByteArray m_socket;
    CommandSocket m_events;
    std::vector<DesktopWindow> m_activations;
};

/// Where the sway at the other end of the display takes commands; absent if it is another compositor.
[[nodiscard]] std::optional<QByteArray> swaySocket(const WaylandDisplay& display);

/// Whether that is a sway, wherever it takes commands.
[[nodiscard]] bool isSway(const WaylandDisplay& display);

/// The windows of sway's answer to "get_tree", oldest first, and the one that has the focus, or would have it but for a cover.
[[nodiscard]] std::vector<DesktopWindow> swayWindows(const QJsonObject& tree);
[[nodiscard]] std::optional<DesktopWindow> swayFront(const QJsonObject& tree);

} // namespace orvanta
