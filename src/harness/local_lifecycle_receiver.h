#pragma once

#include "harness/lifecycle/ai_harness.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <memory>

namespace orvanta {

/// A very small HTTP server on the loopback address, for the posts of the hook script alone. Each accepted body goes to
/// `onEvent`, with the agent that sent it; every connection gets a status line without a body and is closed. It does not
/// look into a body: whatever is well-formed is accepted.
///
/// It works in a thread of its own, `onEvent` included, which must therefore hand its work on and return. However many
/// connections stay open, its memory is bounded: the oldest have to make room. A hook's own connection, which lives for a
/// quarter of a second at most, is never among them.
class LocalLifecycleReceiver {
public:
    using OnEvent = std::function<void(AIHarness harness, QByteArray body)>;

    static constexpr std::uint16_t defaultPort = 47653;
    /// How many connections may be open, and how many bytes they may hold together.
    static constexpr std::size_t mostConnections = 256;
    static constexpr std::size_t mostMemory = std::size_t { 64 } * 1024 * 1024;

    /// Does not listen yet. Port 0 takes any free one.
    explicit LocalLifecycleReceiver(OnEvent onEvent, std::uint16_t port = defaultPort);
    /// Ends the thread, and with it every connection. Waits for an `onEvent` that is under way.
    ~LocalLifecycleReceiver();

    LocalLifecycleReceiver(const LocalLifecycleReceiver&) = delete;
    LocalLifecycleReceiver& operator=(const LocalLifecycleReceiver&) = delete;

    /// Begins to listen. Does nothing if it listens already. A port that cannot be had, because another program has it, is
    /// passed over in silence: a later call tries again.
    void start();

    [[nodiscard]] bool isListening() const { return m_listener != nullptr; }
    /// The port that it listens on; 0 while it does not.
    [[nodiscard]] std::uint16_t port() const;

private:
    class Listener;

    OnEvent m_onEvent;
    std::uint16_t m_port;
    std::unique_ptr<Listener> m_listener;
};

} // namespace orvanta
