#pragma once

#include "localservice/commands.h"

namespace orvanta::localservice {

/// Answers clients until SIGTERM or SIGINT. Needs the process's QCoreApplication.
[[nodiscard]] ExitStatus runServe(const ServeCommand& command, const QString& dataFolder);

} // namespace orvanta::localservice
