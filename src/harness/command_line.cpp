#include "harness/command_line.h"

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

using Parsed = std::expected<HarnessCommand, QString>;

std::expected<InstallCommand, QString> agentsIn(const QString& command, const QStringList& words)
{
    if (words.size() == 1) {
        if (words.first() == "all"_L1)
            return InstallCommand { { allHarnesses.begin(), allHarnesses.end() }, true };
        if (const auto agent = harnessFromRawValue(words.first().toStdString()))
            return InstallCommand { { *agent }, false };
    }
    return std::unexpected(u"%1 must be followed by codex, claude or all"_s.arg(command));
}

} // namespace

Parsed parseHarnessCommand(const QStringList& arguments, const QString& version)
{
    if (arguments.contains(u"--help"_s) || arguments.contains(u"-h"_s))
        return PrintCommand { harnessHelp() };
    if (arguments.isEmpty())
        return std::unexpected(u"a command is missing"_s);
    const QString& command = arguments.first();
    const QStringList rest = arguments.sliced(1);
    if (command == "install"_L1 || command == "uninstall"_L1) {
        const auto agents = agentsIn(command, rest);
        if (!agents)
            return std::unexpected(agents.error());
        if (command == "install"_L1)
            return *agents;
        return UninstallCommand { agents->agents };
    }
    if (command == "status"_L1 && rest == QStringList { u"--json"_s })
        return StatusCommand { StatusCommand::Form::json };
    const bool isKnown = command == "status"_L1 || command == "run"_L1 || command == "doctor"_L1 || command == "--version"_L1;
    if (!isKnown)
        return std::unexpected(u"there is no command \"%1\""_s.arg(command));
    if (!rest.isEmpty())
        return std::unexpected(u"%1 takes no \"%2\""_s.arg(command, rest.first()));
    if (command == "status"_L1)
        return StatusCommand {};
    if (command == "run"_L1)
        return RunCommand {};
    if (command == "doctor"_L1)
        return DoctorCommand {};
    return PrintCommand { u"orvanta-harness %1\n"_s.arg(version) };
}

QString harnessHelp()
{
    return u"orvanta-harness - tells your Orvanta service what your AI coding agents do\n"
           "\n"
           "Usage:\n"
           "  orvanta-harness status [--json]            whether each agent's hook is installed\n"
           "  orvanta-harness install codex|claude|all   installs or repairs the hook; all: of every agent that you use\n"
           "  orvanta-harness uninstall codex|claude|all takes our entries out of the agent's configuration again\n"
           "  orvanta-harness run                        receives what the hooks send, and uploads it, until SIGTERM or SIGINT\n"
           "  orvanta-harness doctor                     sends an event of its own down the whole chain and says where it ends\n"
           "  orvanta-harness --version | --help\n"
           "\n"
           "Everything else in an agent's configuration stays as it is. Before our entries come into it for the first time, it\n"
           "is kept beside it as <name>.before-orvanta-<date>.\n"
           "\n"
           "The states: unavailable (the agent is not set up for you), notInstalled, needsRepair, installed.\n"
           "\n"
           "Environment:\n"
           "  ORVANTA_SERVICE_ORIGIN   the service: an https origin, or http on a loopback address\n"
           "  SSL_CERT_FILE            a file of certificate authorities to trust beside the system's\n"
           "The API key comes from the Secret Service: service com.orvanta.focus, account orvanta-api-key.\n"
           "\n"
           "Exit status:\n"
           "  0  done; for run: it was asked to end; for doctor: the chain is whole\n"
           "  1  something could not be done; for doctor: the chain is broken\n"
           "  2  a wrong command, or a service origin that is refused\n"
           "  3  run found no API key\n"_s;
}

} // namespace orvanta
