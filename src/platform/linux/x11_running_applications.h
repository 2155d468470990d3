#pragma once

#include "platform/linux/application_identity.h"
#include "platform/linux/x11_session.h"
#include "platform/running_applications.h"

namespace orvanta {

/// The applications that have windows, in the order of their oldest window. All windows of one identifier are one
/// application; without an identifier, all windows of one process. Made and used on any one thread, with a connection of
/// its own; finds no applications while there is no X server.
class X11RunningApplications : public RunningApplications {
public:
    /// How often all() and frontmost() will be asked.
    enum class Use {
        occasional,
        periodic, ///< the server announces what changes, so that asking again costs little
    };

    /// Off the main thread `own` has to be handed over: the application object is asked for it on the main thread alone.
    explicit X11RunningApplications(Use use = Use::occasional, OwnApplication own = OwnApplication::current());

    /// A panel of ours covers applications but is none: the one beneath it is in front.
    [[nodiscard]] std::optional<RunningApplication> frontmost() override;
    [[nodiscard]] std::vector<RunningApplication> all() override;
    void hide(const QString& bundleIdentifier) override;

    /// How often the server was waited for on the present connection.
    [[nodiscard]] std::uint64_t roundTrips() const { return m_session.roundTrips(); }

private:
    [[nodiscard]] std::optional<RunningApplication> uppermost(X11Windows& windows, const X11Desktop& desktop);
    [[nodiscard]] RunningApplication application(const X11Window& window);

    X11Session m_session;
    ApplicationIdentity m_identity;
};

} // namespace orvanta
