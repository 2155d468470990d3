#pragma once

#include "harness/command_line.h"
#include "platform/file_system.h"

#include <QString>

namespace orvanta {

/// Where a command prints: results and failures.
struct Output {
    QString out;
    QString err;

    void say(const QString& line) { out += line + u'\n'; }
    void complain(const QString& line) { err += QStringLiteral("orvanta-harness: ") + line + u'\n'; }
};

// The commands that look after the agents' configurations in the home folder `home`.

[[nodiscard]] HarnessExit runStatus(const StatusCommand& command, const QString& home, FileSystem& files, Output& output);
[[nodiscard]] HarnessExit runInstall(const InstallCommand& command, const QString& home, FileSystem& files, Output& output);
[[nodiscard]] HarnessExit runUninstall(const UninstallCommand& command, const QString& home, FileSystem& files, Output& output);

} // namespace orvanta
