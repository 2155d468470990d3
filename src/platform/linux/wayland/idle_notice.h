#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <thread>

namespace orvanta {

class WaylandDisplay;

/// Listens, on a thread and a connection of its own, for the compositor's word that the user has paused or goes on. Sleeps until
/// there is such a word.
class IdleNotice {
public:
    /// Null if the compositor offers neither of the protocols, or no seat.
    [[nodiscard]] static std::unique_ptr<IdleNotice> find();
    ~IdleNotice();
    IdleNotice(const IdleNotice&) = delete;
    IdleNotice& operator=(const IdleNotice&) = delete;

    /// Seconds since the last input, 0 during the first second; absent once the compositor has gone.
    [[nodiscard]] std::optional<double> seconds();

private:
    explicit IdleNotice(std::unique_ptr<WaylandDisplay> display);
    void listen(const std::stop_token& stop);

    struct Listeners;

    std::unique_ptr<WaylandDisplay> m_display;
    std::atomic<std::int64_t> m_idleSince = 0; ///< steady nanoseconds; 0 while the user is at it
    std::atomic<bool> m_isLost = false;
    int m_asked;    ///< wakes the thread
    int m_answered; ///< says that it has heard all that there was
    std::jthread m_thread;
};

} // namespace orvanta
