#include "harness/command_line.h"
#include "harness/doctor.h"
#include "harness/hook_commands.h"
#include "harness/local_lifecycle_receiver.h"
#include "harness/run_command.h"
#include "platform/console_platform.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include <cstdio>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

int fail(const QString& line, HarnessExit exit)
{
    std::fprintf(stderr, "orvanta-harness: %s\n", qUtf8Printable(line));
    return static_cast<int>(exit);
}

QString runtimeFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
}

struct Runner {
    const ConsolePlatform& platform;
    Output& output;
    QString home = QDir::homePath();

    HarnessExit operator()(const StatusCommand& command) const { return runStatus(command, home, *platform.files, output); }
    HarnessExit operator()(const InstallCommand& command) const { return runInstall(command, home, *platform.files, output); }
    HarnessExit operator()(const UninstallCommand& command) const { return runUninstall(command, home, *platform.files, output); }
    HarnessExit operator()(const DoctorCommand&) const
    {
        return runDoctor({ .home = home, .runtimeFolder = runtimeFolder(), .port = LocalLifecycleReceiver::defaultPort }, *platform.files, output);
    }
    HarnessExit operator()(const PrintCommand& command) const
    {
        output.out += command.text;
        return HarnessExit::ok;
    }
    HarnessExit operator()(const RunCommand&) const
    {
        const bool isOverridden = qEnvironmentVariableIsSet("ORVANTA_SERVICE_ORIGIN");
        const auto service = ServiceConfiguration::make(
            QStringLiteral(ORVANTA_SERVICE_ORIGIN), isOverridden ? std::optional(qEnvironmentVariable("ORVANTA_SERVICE_ORIGIN")) : std::nullopt);
        if (!service) {
            output.complain(service.error());
            return HarnessExit::usage;
        }
        return runHarness(*service, *platform.secrets, *platform.files, runtimeFolder());
    }
};

} // namespace

int main(int argumentCount, char** arguments)
{
    const QCoreApplication application(argumentCount, arguments);
    QCoreApplication::setApplicationName(u"orvanta-harness"_s);
    const auto command = parseHarnessCommand(QCoreApplication::arguments().sliced(1), QStringLiteral(ORVANTA_VERSION));
    if (!command)
        return fail(command.error() + u"\nTry: orvanta-harness --help"_s, HarnessExit::usage);

    const ConsolePlatform platform = makeConsolePlatform();
    Output output;
    const HarnessExit exit = std::visit(Runner { platform, output }, *command);
    std::fputs(qUtf8Printable(output.err), stderr);
    std::fputs(qUtf8Printable(output.out), stdout);
    // A result that could not be printed (a full disk behind the output) was not delivered.
    return std::fflush(stdout) == 0 ? static_cast<int>(exit) : static_cast<int>(HarnessExit::failed);
}
