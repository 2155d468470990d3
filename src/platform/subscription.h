#pragma once

#include "platform/move_only_function.h"

#include <utility>

namespace orvanta {

/// The life of one observation: destroying it, or assigning another over it, ends the observation. After
/// that the callback is not called again. An empty one ends nothing.
class [[nodiscard]] Subscription {
public:
    Subscription() = default;
    explicit Subscription(MoveOnlyFunction<void()> end) : m_end(std::move(end)) { }

    Subscription(Subscription&& other) noexcept : m_end(std::exchange(other.m_end, nullptr)) { }
    Subscription& operator=(Subscription&& other) noexcept
    {
        if (this != &other) {
            finish();
            m_end = std::exchange(other.m_end, nullptr);
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription() { finish(); }

    explicit operator bool() const { return static_cast<bool>(m_end); }

private:
    void finish()
    {
        if (auto end = std::exchange(m_end, nullptr))
            end();
    }

    MoveOnlyFunction<void()> m_end;
};

} // namespace orvanta
