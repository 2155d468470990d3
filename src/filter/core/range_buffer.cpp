#include "filter/core/range_buffer.h"

#include <algorithm>

namespace orvanta::filter {

RangeBuffer::Fit RangeBuffer::insert(std::uint64_t offset, Bytes piece)
{
    if (piece.empty() || offset >= m_bound)
        return Fit::agrees;
    const auto begin = static_cast<std::size_t>(offset);
    const std::size_t end = begin + std::min(piece.size(), m_bound - begin);

    // Only what lies between the ranges that are there is new.
    std::size_t place = begin;
    Range merged { begin, end };
    auto first = std::ranges::find_if(m_ranges, [begin](const Range& range) { return range.end >= begin; });
    auto last = first;
    const bool standsAlone = first == m_ranges.end() || first->begin > end;
    if (standsAlone && m_ranges.size() == mostRanges)
        return Fit::agrees;
    if (m_bytes.size() < end)
        m_bytes.resize(end);
    Fit fit = Fit::agrees;
    for (; last != m_ranges.end() && last->begin <= end; ++last) {
        if (place < last->begin)
            std::ranges::copy(piece.subspan(place - begin, last->begin - place), m_bytes.begin() + static_cast<std::ptrdiff_t>(place));
        const std::size_t sharedBegin = std::max(begin, last->begin);
        const std::size_t sharedEnd = std::min(end, last->end);
        if (sharedBegin < sharedEnd
            && !std::ranges::equal(
                piece.subspan(sharedBegin - begin, sharedEnd - sharedBegin), Bytes(m_bytes).subspan(sharedBegin, sharedEnd - sharedBegin)))
            fit = Fit::contradicts;
        place = std::max(place, last->end);
        merged = { std::min(merged.begin, last->begin), std::max(merged.end, last->end) };
    }
    if (place < end)
        std::ranges::copy(piece.subspan(place - begin, end - place), m_bytes.begin() + static_cast<std::ptrdiff_t>(place));
    first = m_ranges.erase(first, last);
    m_ranges.insert(first, merged);
    return fit;
}

void RangeBuffer::moveBack(std::size_t distance)
{
    distance = std::min(distance, m_bound);
    m_bytes.insert(m_bytes.begin(), distance, std::byte { 0 });
    m_bytes.resize(std::min(m_bytes.size(), m_bound));
    for (Range& range : m_ranges)
        range = { range.begin + distance, std::min(range.end + distance, m_bound) };
    std::erase_if(m_ranges, [](const Range& range) { return range.begin >= range.end; });
}

Bytes RangeBuffer::prefix() const
{
    if (m_ranges.empty() || m_ranges.front().begin != 0)
        return {};
    return Bytes(m_bytes).first(m_ranges.front().end);
}

} // namespace orvanta::filter
