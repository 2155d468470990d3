#pragma once

#include "platform/process_lister.h"

#include <QString>

#include <optional>
#include <vector>

namespace orvanta {

/// One running process.
struct ProcessSnapshot {
    QString command;       ///< the full command line
    double cpuPercent = 0; ///< its share of a CPU, as the process lister prints it

    bool operator==(const ProcessSnapshot&) const = default;
};

/// Whether an AI coding agent is working: it runs, and it uses the processor. Pure functions, but for the first.
namespace AgentActivityDetector {

/// The share of a CPU from which on an agent counts as working.
inline constexpr double leastCpuPercent = 0.5;

/// False as well if the processes cannot be listed.
[[nodiscard]] bool isAgentWorking(ProcessLister& processes);

[[nodiscard]] bool hasActiveAgent(const std::vector<ProcessSnapshot>& processes);

/// The processes of a listing, line by line; a line that is not a number, white space and a command is skipped. Absent if
/// the listing is not UTF-8.
[[nodiscard]] std::optional<std::vector<ProcessSnapshot>> processSnapshots(const QByteArray& listing);

} // namespace AgentActivityDetector

} // namespace orvanta
