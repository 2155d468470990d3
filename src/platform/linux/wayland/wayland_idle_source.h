#pragma once

#include "platform/idle_source.h"
#include "platform/linux/bounded_bus.h"

#include <memory>

namespace orvanta {

class IdleNotice;

/// The time without input on a Wayland desktop: the compositor says when a second has passed without any (ext-idle-notify, or KWin's
/// older protocol), and it is counted on from there; where it does not, the desktop's services are asked. Less than a second reads
/// as none, and what was before the source was made is not known. Used on one thread; listens on another, of its own.
class WaylandIdleSource final : public IdleSource {
public:
    WaylandIdleSource();
    ~WaylandIdleSource() override;

    [[nodiscard]] std::vector<double> secondsSinceLastEvents() override;

private:
    std::unique_ptr<IdleNotice> m_notice; ///< null where the compositor gives none
    std::unique_ptr<BoundedBus> m_session;
};

/// What the time without input is known by.
enum class IdleProtocol { none, extIdleNotify, kdeIdle, mutterIdleMonitor, screenSaver };

/// Which of them is there now.
[[nodiscard]] IdleProtocol findIdleProtocol();

} // namespace orvanta
