#pragma once

#include <tuple>
#include <utility>

#include <unistd.h>

namespace orvanta {

/// A file descriptor that is closed with the object, or before, where it matters whether that went well.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) { }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { std::ignore = close(); }

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    /// Some file systems tell only here that a write has failed.
    [[nodiscard]] bool close() { return m_number < 0 || ::close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number;
};

} // namespace orvanta
