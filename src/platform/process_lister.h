#pragma once

#include <QByteArray>

#include <optional>

namespace orvanta {

/// Lists every process of the machine. Each thread that needs it has an instance of its own.
class ProcessLister {
public:
    virtual ~ProcessLister() = default;

    /// What "/bin/ps -axo pcpu=,command=" prints: a line a process, its share of a CPU in percent over its whole life, a blank,
    /// and its command line. Processes below `leastCpuPercent` may be left out, for what is not asked for need not be read.
    /// Absent if the list cannot be had.
    [[nodiscard]] virtual std::optional<QByteArray> list(double leastCpuPercent = 0) = 0;
};

} // namespace orvanta
