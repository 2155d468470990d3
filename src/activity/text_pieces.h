#pragma once

#include <QStringView>

#include <array>
#include <optional>

namespace orvanta {

/// The first two pieces of `text`, cut at characters for which `separates` holds; empty pieces before the first are dropped,
/// and the second is all the rest, further separators included. Absent if there are no two pieces.
template <typename Separates>
[[nodiscard]] std::optional<std::array<QStringView, 2>> twoPieces(QStringView text, Separates separates)
{
    qsizetype begin = 0;
    while (begin < text.size() && separates(text[begin]))
        ++begin;
    qsizetype end = begin;
    while (end < text.size() && !separates(text[end]))
        ++end;
    // One separator goes with the cut.
    if (end + 1 >= text.size())
        return std::nullopt;
    return std::array { text.sliced(begin, end - begin), text.sliced(end + 1) };
}

} // namespace orvanta
