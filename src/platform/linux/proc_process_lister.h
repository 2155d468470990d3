#pragma once

#include "platform/process_lister.h"

#include <string>

namespace orvanta {

/// Prints what ps prints, from the process file system: the same columns, rounding and escapes. Costs a fraction of it, for
/// of each process only one file is read, and the command line only where it is wanted.
class ProcProcessLister final : public ProcessLister {
public:
    explicit ProcProcessLister(std::string procFolder = "/proc") : m_procFolder(std::move(procFolder)) { }

    [[nodiscard]] std::optional<QByteArray> list(double leastCpuPercent = 0) override;

private:
    std::string m_procFolder;
};

/// What the "stat" file of a process says of it.
struct ProcessStat {
    QByteArray name;
    bool isZombie = false;
    unsigned long long ticks = 0;      ///< of a CPU, in its own code and for it in the kernel
    unsigned long long startTicks = 0; ///< since the machine was started

    bool operator==(const ProcessStat&) const = default;
};

/// Absent if `text` is no such file's.
[[nodiscard]] std::optional<ProcessStat> processStat(QByteArrayView text);

/// The share of a CPU that `ticks` are of `elapsedTicks`, in tenths of a percent, rounded down.
[[nodiscard]] unsigned long long cpuTenths(unsigned long long ticks, double elapsedTicks);

/// As ps shows text: what cannot be printed is a question mark. After the first byte that is not UTF-8 nothing but ASCII can,
/// and control characters are dots.
[[nodiscard]] QByteArray printable(QByteArrayView text);

} // namespace orvanta
