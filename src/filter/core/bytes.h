#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace orvanta::filter {

/// Bytes that somebody sent us, and that nobody has checked.
using Bytes = std::span<const std::byte>;

[[nodiscard]] inline std::string_view asText(Bytes bytes)
{
    return { reinterpret_cast<const char*>(bytes.data()), bytes.size() };
}

[[nodiscard]] inline Bytes asBytes(std::string_view text)
{
    return std::as_bytes(std::span(text.data(), text.size()));
}

/// Reads big-endian numbers one after the other. Reading past the end gives zeros and makes the reader fail for good,
/// so that a parser asks once, after a row of reads.
class ByteReader {
public:
    explicit ByteReader(Bytes bytes) : m_rest(bytes) { }

    [[nodiscard]] std::uint64_t number(std::size_t size)
    {
        std::uint64_t value = 0;
        for (const std::byte byte : take(size))
            value = value << 8 | std::to_integer<std::uint64_t>(byte);
        return value;
    }

    [[nodiscard]] std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    [[nodiscard]] std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    [[nodiscard]] std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }

    /// The next `size` bytes; empty if there are not so many.
    Bytes take(std::size_t size)
    {
        if (size > m_rest.size()) {
            m_failed = true;
            m_rest = {};
            return {};
        }
        const Bytes taken = m_rest.first(size);
        m_rest = m_rest.subspan(size);
        return taken;
    }

    [[nodiscard]] Bytes rest() const { return m_rest; }
    [[nodiscard]] bool failed() const { return m_failed; }

private:
    Bytes m_rest;
    bool m_failed = false;
};

} // namespace orvanta::filter
