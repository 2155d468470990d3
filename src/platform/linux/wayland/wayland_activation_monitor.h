#pragma once

#include "platform/activation_monitor.h"
#include "platform/linux/application_identity.h"
#include "platform/linux/wayland/compositor_windows.h"
#include "platform/portable/observers.h"

#include <QObject>

#include <cstdint>
#include <memory>
#include <vector>

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
    struct Activation {
        std::uint64_t place = 0;
        std::optional<QString> identifier;
    };

    void take();
    void attach(WindowFeed& feed);
    void note(const std::optional<QString>& identifier);
    void tell();
    [[nodiscard]] std::optional<QString> identifierOf(const DesktopWindow& window);

    CompositorWindows& m_windows;
    ApplicationIdentity m_identity;
    Observers<std::uint64_t, const std::optional<QString>&> m_observers;
    std::vector<Activation> m_untold;
    std::uint64_t m_places = 0;
    std::uint64_t m_attachment = 0;   ///< of the source, when it was last asked
    std::optional<QString> m_inFront; ///< the last that had an identifier
    QObject m_context;                ///< last, so that nothing queued outlives what it uses
};

} // namespace orvanta
