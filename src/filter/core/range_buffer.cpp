#include "filter/core/range_buffer.h"

#include <algorithm>

namespace orvanta::filter {

void RangeBuffer::insert(std::uint64_t offset, Bytes piece)
{
    if (piece.empty() || offset >= m_bound)
        return;
    const auto begin = static_cast<std::size_t>(offset);
    const std::size_t end = begin + std::min(piece.size(), m_bound - begin);
    if (m_bytes.size() < end)
        m_bytes.resize(end);

    // Only what lies between the ranges that are there is new.
    std::size_t place = begin;
    Range merged { begin, end };
    auto first = std::ranges::find_if(m_ranges, [begin](const Range& range) { return range.end >= begin; });
    auto last = first;
    for (; last != m_ranges.end() && last->begin <= end; ++last) {
        if (place < last->begin)
            std::ranges::copy(piece.subspan(place - begin, last->begin - place), m_bytes.begin() + static_cast<std::ptrdiff_t>(place));
        place = std::max(place, last->end);
        merged = { std::min(merged.begin, last->begin), std::max(merged.end, last->end) };
    }
    if (place < end)
        std::ranges::copy(piece.subspan(place - begin, end - place), m_bytes.begin() + static_cast<std::ptrdiff_t>(place));
    first = m_ranges.erase(first, last);
    m_ranges.insert(first, merged);
}

Bytes RangeBuffer::prefix() const
{
    if (m_ranges.empty() || m_ranges.front().begin != 0)
        return {};
    return Bytes(m_bytes).first(m_ranges.front().end);
}

} // namespace orvanta::filter
