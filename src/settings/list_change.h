#pragma once

#include <algorithm>

namespace orvanta {

/// How one list becomes another: `removed` rows go at `first`, then `inserted` rows come in their place.
struct ListChange {
    int first = 0;
    int removed = 0;
    int inserted = 0;

    bool operator==(const ListChange&) const = default;
};

/// The change that leaves alone what both lists begin with and what both end with. Of one row added or taken away, that row
/// is all that changes, so a view keeps every other row as it is.
template <class List>
[[nodiscard]] ListChange changeBetween(const List& before, const List& after)
{
    const auto [beforeDiffers, afterDiffers] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    auto beforeEnd = before.end();
    auto afterEnd = after.end();
    while (beforeEnd != beforeDiffers && afterEnd != afterDiffers && *(beforeEnd - 1) == *(afterEnd - 1)) {
        --beforeEnd;
        --afterEnd;
    }
    return { static_cast<int>(beforeDiffers - before.begin()), static_cast<int>(beforeEnd - beforeDiffers),
        static_cast<int>(afterEnd - afterDiffers) };
}

} // namespace orvanta
