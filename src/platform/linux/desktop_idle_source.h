#pragma once

#include "platform/idle_source.h"
#include "platform/linux/bounded_bus.h"
#include "platform/linux/x11_connection.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace orvanta {

/// The time without input as the X server knows it (MIT-SCREEN-SAVER), and where it does not, as the desktop does: by Mutter's
/// idle monitor or the session's screen saver. Used on one thread, with connections of its own.
class DesktopIdleSource final : public IdleSource {
public:
    [[nodiscard]] std::vector<double> secondsSinceLastEvents() override;

    /// How often the X server was waited for, apart from opening connections.
    [[nodiscard]] std::uint64_t roundTrips() const { return m_roundTrips; }

private:
    [[nodiscard]] std::optional<double> fromServer();

    std::unique_ptr<X11Connection> m_connection;
    std::uint64_t m_roundTrips = 0;
    std::unique_ptr<BoundedBus> m_session;
};

/// What the desktop's services on the session's bus say; absent if there are none. Makes and keeps the connection in `session`.
[[nodiscard]] std::optional<double> idleSecondsFromSession(std::unique_ptr<BoundedBus>& session);

} // namespace orvanta
