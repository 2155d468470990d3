#pragma once

#include "platform/linux/application_identity.h"
#include "platform/linux/qt_screens.h"
#include "platform/linux/wayland/compositor_windows.h"
#include "platform/running_applications.h"

#include <memory>
#include <span>
#include <vector>

namespace orvanta {

/// Which application a window of a Wayland desktop belongs to.
[[nodiscard]] ApplicationIdentity::Application applicationOf(ApplicationIdentity& identity, const DesktopWindow& window);

/// The same for several windows, in their order. All others are forgotten: every new window has a number of its own.
[[nodiscard]] std::vector<ApplicationIdentity::Application> applicationsOf(ApplicationIdentity& identity, std::span<const DesktopWindow> windows);

/// The applications that have windows, in the order of their oldest window; none where no source tells of windows.
class WaylandRunningApplications final : public RunningApplications {
public:
    /// On any one thread, which is that of `windows`. Off the main thread `own` has to be handed over.
    explicit WaylandRunningApplications(std::shared_ptr<CompositorWindows> windows, OwnApplication own = OwnApplication::current());

    [[nodiscard]] std::optional<RunningApplication> frontmost() override;
    [[nodiscard]] std::vector<RunningApplication> all() override;
    void hide(const QString& bundleIdentifier) override;

private:
    std::shared_ptr<CompositorWindows> m_windows;
    ApplicationIdentity m_identity;
};

/// Where the window in front stands: by its frame, or, where only its display is known, by that display's.
[[nodiscard]] KeyWindowGeometry waylandKeyWindowGeometry(std::shared_ptr<CompositorWindows> windows);

} // namespace orvanta
