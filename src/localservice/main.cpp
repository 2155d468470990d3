#include "localservice/serve.h"

#include <QCoreApplication>

#include <iostream>

using namespace orvanta::localservice;

namespace {

ExitStatus run(const Invocation& invocation)
{
    struct Runner {
        const QString& folder;
        ExitStatus operator()(const ServeCommand& command) const { return runServe(command, folder); }
        ExitStatus operator()(const TaskStartCommand& command) const { return runTaskStart(command, folder); }
        ExitStatus operator()(const TaskDoneCommand& command) const { return runTaskDone(command, folder); }
        ExitStatus operator()(const StatusCommand& command) const { return runStatus(command, folder); }
        ExitStatus operator()(const KeyCommand&) const { return runKey(folder); }
        ExitStatus operator()(const PrintCommand& command) const
        {
            std::cout << command.text.toStdString();
            return ExitStatus::ok;
        }
    };
    return std::visit(Runner { invocation.dataFolder }, invocation.command);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const QCoreApplication application(argumentCount, arguments);
    QCoreApplication::setApplicationName(QStringLiteral("orvanta-service"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVANTA_VERSION));

    const auto invocation = parseCommandLine(QCoreApplication::arguments().sliced(1));
    if (!invocation) {
        report(invocation.error());
        std::cerr << "Try: orvanta-service --help\n";
        return static_cast<int>(ExitStatus::usage);
    }
    const ExitStatus status = run(*invocation);
    // A result that could not be printed (a full disk behind the output) was not delivered.
    std::cout.flush();
    return static_cast<int>(std::cout.good() ? status : ExitStatus::failed);
}
