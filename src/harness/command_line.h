#pragma once

#include "harness/lifecycle/ai_harness.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <expected>
#include <variant>
#include <vector>

namespace orvanta {

/// The exit statuses of the program, as its help documents them.
enum class HarnessExit : std::uint8_t {
    ok = 0,
    failed = 1,   ///< something could not be done; standard error says what
    usage = 2,    ///< a wrong command, or a service origin that is refused
    noAPIKey = 3, ///< there is no API key to upload with
};

struct StatusCommand {
    enum class Form : std::uint8_t { text, json } form = Form::text;
};
struct InstallCommand {
    std::vector<AIHarness> agents;
    bool isAll = false; ///< whoever is set up, rather than the one that was named
};
struct UninstallCommand {
    std::vector<AIHarness> agents;
};
struct RunCommand { };
struct DoctorCommand { };
struct PrintCommand {
    QString text;
};

using HarnessCommand = std::variant<StatusCommand, InstallCommand, UninstallCommand, RunCommand, DoctorCommand, PrintCommand>;

/// What `arguments`, without the program's name, ask for; or a line that says what is wrong with them.
[[nodiscard]] std::expected<HarnessCommand, QString> parseHarnessCommand(const QStringList& arguments, const QString& version);

[[nodiscard]] QString harnessHelp();

} // namespace orvanta
