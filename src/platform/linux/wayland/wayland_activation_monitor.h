#pragma once

#include "platform/activation_monitor.h"
#include "platform/linux/application_identity.h"
#include "platform/linux/told_activations.h"
#include "platform/linux/wayland/compositor_windows.h"

#include <QObject>

#include <cstdint>
#include <optional>

namespace orvanta {

/// Watches which window comes to the front on a Wayland desktop. Where a source of windows goes and comes back, what has come to the
/// front meanwhile is told then; what was there before is not told again.
class WaylandActivationMonitor final : public ActivationMonitor {
public:
    /// `windows` outlives the monitor, which is the one that watches it.
    explicit WaylandActivationMonitor(CompositorWindows& windows, OwnApplication own = OwnApplication::current());
    ~WaylandActivationMonitor() override;

    [[nodiscard]] Subscription observe(Callback<std::optional<QString>> activated) override;

private:
    void take();
    void attach(WindowFeed& feed);
    void note(const std::optional<QString>& identifier);
    [[nodiscard]] std::optional<QString> identifierOf(const DesktopWindow& window);

    CompositorWindows& m_windows;
    ApplicationIdentity m_identity;
    ToldActivations m_activations;
    std::uint64_t m_attachment = 0;   ///< of the source, when it was last asked
    std::optional<QString> m_inFront; ///< the last that had an identifier
    QObject m_context;                ///< last, so that nothing queued outlives what it uses
};

} // namespace orvanta
