#pragma once

#include <tuple>
#include <utility>

#include <unistd.h>

namespace orvanta {

/// A file descriptor that is closed with the object, or before, where it matters whether that went well.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) { }
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) { }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { std::ignore = close(); }

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] explicit operator bool() const { return m_number >= 0; }
    /// Some file systems tell only here that a write has failed.
    [[nodiscard]] bool close() { return m_number < 0 || ::close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number = -1;
};

} // namespace orvanta
