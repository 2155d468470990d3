#pragma once

#include "localservice/command_line.h"

namespace orvanta::localservice {

/// The exit statuses of the program, as its help documents them.
enum class ExitStatus : std::uint8_t { ok = 0, failed = 1, usage = 2 };

// The short commands. Each works on the data folder directly, prints its result on standard output, and its failure as one
// line on standard error.

[[nodiscard]] ExitStatus runTaskStart(const TaskStartCommand& command, const QString& dataFolder);
[[nodiscard]] ExitStatus runTaskDone(const TaskDoneCommand& command, const QString& dataFolder);
[[nodiscard]] ExitStatus runStatus(const StatusCommand& command, const QString& dataFolder);
[[nodiscard]] ExitStatus runKey(const QString& dataFolder);

/// One line on standard error, with the program's name before it.
void report(const QString& line);

/// The same, if there is a line.
void reportNotice(const std::optional<QString>& line);

} // namespace orvanta::localservice
