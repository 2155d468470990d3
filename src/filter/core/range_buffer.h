#pragma once

#include "filter/core/bytes.h"

#include <vector>

namespace orvanta::filter {

/// Puts a stream together from pieces that come in any order, more than once, and overlapping: TCP segments, CRYPTO
/// frames. What came first stays. Pieces beyond the bound are dropped.
class RangeBuffer {
public:
    explicit RangeBuffer(std::size_t bound) : m_bound(bound) { }

    void insert(std::uint64_t offset, Bytes piece);

    /// What is there without a gap, from the beginning.
    [[nodiscard]] Bytes prefix() const;

private:
    struct Range {
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    std::size_t m_bound;
    std::vector<std::byte> m_bytes;
    std::vector<Range> m_ranges; ///< in order; neither touching nor overlapping
};

} // namespace orvanta::filter
