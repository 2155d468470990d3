#pragma once

#include "harness/lifecycle_request.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvanta {

/// What one connection of the receiver has sent so far, and what that makes of it. Gives what parseLifecycleRequest would
/// give for all bytes so far, but looks at no byte twice, and keeps none of a request that can never be one. Does no I/O.
class LifecycleConnection {
public:
    enum class Verdict : std::uint8_t {
        needsMore,
        accepted, ///< `harness` and `body` are there
        refused,
    };

    /// Takes the next bytes that came; at most room() of them.
    [[nodiscard]] Verdict take(std::string_view bytes);

    /// How many bytes may come before the limit.
    [[nodiscard]] std::size_t room() const { return lifecycleRequestLimit - m_received; }

    [[nodiscard]] AIHarness harness() const { return m_head->harness; }
    [[nodiscard]] std::string_view body() const;
    /// Whether bytes have come that do not belong to the accepted request.
    [[nodiscard]] bool hasExcess() const;

    /// Bytes of memory that it holds on to.
    [[nodiscard]] std::size_t memory() const { return m_buffer.capacity(); }

private:
    void readHead();

    enum class State : std::uint8_t { head, body, hopeless };

    State m_state = State::head;
    std::size_t m_received = 0;
    std::size_t m_bodyBegin = 0;
    std::optional<LifecycleRequestHead> m_head;
    std::string m_buffer;
};

} // namespace orvanta
