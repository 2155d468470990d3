#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

// The figures that the programs of a bench print.

namespace orvanta::bench {

/// What the clock shows, in microseconds.
[[nodiscard]] inline double microseconds(clockid_t clock)
{
    timespec now {};
    clock_gettime(clock, &now);
    return 1e6 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1000;
}

/// The processor time that this process has used, all its threads together.
[[nodiscard]] inline double cpuMicroseconds()
{
    return microseconds(CLOCK_PROCESS_CPUTIME_ID);
}

[[nodiscard]] inline double cpuMilliseconds()
{
    return cpuMicroseconds() / 1000;
}

/// `values` holds one at least; of an even number, the upper of the two in the middle.
[[nodiscard]] inline double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

} // namespace orvanta::bench
