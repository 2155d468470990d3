#pragma once

#include "filter/core/bytes.h"

#include <vector>

namespace orvanta::filter {

/// Puts a stream together from pieces that come in any order, more than once, and overlapping: TCP segments, CRYPTO
/// frames. What came first stays. Pieces beyond the bound are dropped, and so are pieces that would leave more gaps than
/// any honest sender does.
class RangeBuffer {
public:
    static constexpr std::size_t mostRanges = 256;

    /// What a piece says about bytes that are there already.
    enum class Fit {
        agrees,      ///< the same, or nothing
        contradicts, ///< something else; a sender that only repeats itself never does that
    };

    explicit RangeBuffer(std::size_t bound) : m_bound(bound) { }

    Fit insert(std::uint64_t offset, Bytes piece);

    /// Makes room for `distance` bytes before all others: the stream begins further back than it was thought to.
    void moveBack(std::size_t distance);

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
