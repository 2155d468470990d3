#pragma once

#include <utility>

#include <unistd.h>

namespace orvanta {

/// A file descriptor that closes itself.
class OpenFile {
public:
    OpenFile() = default;
    explicit OpenFile(int number) : m_number(number) { }
    OpenFile(OpenFile&& other) noexcept : m_number(std::exchange(other.m_number, -1)) { }
    OpenFile& operator=(OpenFile&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile()
    {
        if (m_number >= 0)
            ::close(m_number);
    }

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] explicit operator bool() const { return m_number >= 0; }

private:
    int m_number = -1;
};

} // namespace orvanta
