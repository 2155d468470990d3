#include "localservice/command_line.h"

#include "localservice/data_folder.h"
#include "localservice/task_store.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

using Result = std::expected<Invocation, QString>;

std::unexpected<QString> usageError(const QString& line)
{
    return std::unexpected(line);
}

/// The arguments of one command: its options, each at most once, and what stands beside them.
class CommandArguments {
public:
    explicit CommandArguments(const QList<QCommandLineOption>& options)
    {
        m_parser.addOption({ u"data"_s, {}, u"folder"_s });
        m_parser.addOptions(options);
    }

    [[nodiscard]] std::optional<QString> parse(const QStringList& arguments)
    {
        // The parser takes the first element for the program's name.
        if (!m_parser.parse(QStringList { u"orvanta-service"_s } + arguments))
            return m_parser.errorText();
        for (const QString& name : m_parser.optionNames()) {
            if (m_parser.optionNames().count(name) > 1)
                return u"--%1 is given twice"_s.arg(name);
            if (m_parser.isSet(name) && name != "json"_L1 && m_parser.value(name).isEmpty())
                return u"--%1 needs a value"_s.arg(name);
        }
        return std::nullopt;
    }

    [[nodiscard]] QStringList words() const { return m_parser.positionalArguments(); }
    [[nodiscard]] bool has(const QString& option) const { return m_parser.isSet(option); }
    [[nodiscard]] std::optional<QString> value(const QString& option) const
    {
        return m_parser.isSet(option) ? std::optional(m_parser.value(option)) : std::nullopt;
    }
    [[nodiscard]] QString dataFolder() const { return value(u"data"_s).value_or(defaultDataFolder()); }

private:
    QCommandLineParser m_parser;
};

Result parseServe(const QStringList& arguments)
{
    CommandArguments given({ { u"port"_s, {}, u"number"_s }, { u"listen"_s, {}, u"address"_s }, { u"ready-file"_s, {}, u"file"_s },
        { u"certificate"_s, {}, u"file"_s }, { u"private-key"_s, {}, u"file"_s } });
    if (const auto problem = given.parse(arguments))
        return usageError(*problem);
    if (!given.words().isEmpty())
        return usageError(u"serve takes no \"%1\""_s.arg(given.words().first()));
    ServeCommand command;
    if (const auto port = given.value(u"port"_s)) {
        bool isNumber = false;
        command.port = port->toUShort(&isNumber);
        if (!isNumber)
            return usageError(u"--port must be a number from 0 to 65535"_s);
    }
    if (const auto address = given.value(u"listen"_s); address && !command.address.setAddress(*address == "localhost"_L1 ? u"127.0.0.1"_s : *address))
        return usageError(u"--listen must be an IP address"_s);
    command.readyFile = given.value(u"ready-file"_s);
    const auto certificate = given.value(u"certificate"_s);
    const auto privateKey = given.value(u"private-key"_s);
    if (certificate.has_value() != privateKey.has_value())
        return usageError(u"--certificate and --private-key belong together"_s);
    if (certificate)
        command.tls = { *certificate, *privateKey };
    return Invocation { command, given.dataFolder() };
}

Result parseTask(const QStringList& arguments)
{
    CommandArguments given({});
    if (const auto problem = given.parse(arguments))
        return usageError(*problem);
    QStringList words = given.words();
    const QString verb = words.isEmpty() ? QString() : words.takeFirst();
    if (verb == "start"_L1) {
        if (words.size() != 1)
            return usageError(u"task start takes one title; put it in quotation marks"_s);
        const auto title = acceptedTaskTitle(words.first());
        if (!title)
            return usageError(u"The title is empty"_s);
        return Invocation { TaskStartCommand { *title }, given.dataFolder() };
    }
    if (verb == "done"_L1) {
        if (words.isEmpty())
            return Invocation { TaskDoneCommand {}, given.dataFolder() };
        bool isNumber = false;
        const qint64 id = words.first().toLongLong(&isNumber);
        if (!isNumber || words.size() > 1)
            return usageError(u"task done takes one task's number, or nothing"_s);
        return Invocation { TaskDoneCommand { id }, given.dataFolder() };
    }
    return usageError(u"task must be followed by start or done"_s);
}

Result parseStatus(const QStringList& arguments)
{
    CommandArguments given({ QCommandLineOption(u"json"_s) });
    if (const auto problem = given.parse(arguments))
        return usageError(*problem);
    if (!given.words().isEmpty())
        return usageError(u"status takes no \"%1\""_s.arg(given.words().first()));
    return Invocation { StatusCommand { given.has(u"json"_s) ? StatusCommand::Form::json : StatusCommand::Form::text }, given.dataFolder() };
}

Result parseKey(const QStringList& arguments)
{
    CommandArguments given({});
    if (const auto problem = given.parse(arguments))
        return usageError(*problem);
    if (!given.words().isEmpty())
        return usageError(u"key takes no \"%1\""_s.arg(given.words().first()));
    return Invocation { KeyCommand {}, given.dataFolder() };
}

} // namespace

Result parseCommandLine(const QStringList& arguments)
{
    const qsizetype end = arguments.indexOf(u"--"_s);
    const QStringList options = arguments.first(end < 0 ? arguments.size() : end);
    if (options.contains(u"--help"_s) || options.contains(u"-h"_s))
        return Invocation { PrintCommand { helpText() }, {} };
    if (arguments.isEmpty())
        return usageError(u"A command is missing"_s);
    const QString& command = arguments.first();
    if (command == "--version"_L1)
        return Invocation { PrintCommand { u"orvanta-service %1\n"_s.arg(QCoreApplication::applicationVersion()) }, {} };
    const QStringList rest = arguments.sliced(1);
    if (command == "serve"_L1)
        return parseServe(rest);
    if (command == "task"_L1)
        return parseTask(rest);
    if (command == "status"_L1)
        return parseStatus(rest);
    if (command == "key"_L1)
        return parseKey(rest);
    return usageError(u"There is no command \"%1\""_s.arg(command));
}

QString helpText()
{
    return uR"(orvanta-service - a small Orvanta service for one person

Usage:
  orvanta-service serve [--port N] [--listen ADDRESS] [--ready-file FILE]
                        [--certificate FILE --private-key FILE] [--data DIR]
      Answers clients until SIGTERM or SIGINT. Prints "Listening on ..." once it is ready.
        --port N            default %1; 0 takes any free port
        --listen ADDRESS    default 127.0.0.1; any other lets other machines in
        --ready-file FILE   is written, with the address in it, once the service is ready,
                            and removed when it ends
        --certificate FILE, --private-key FILE
                            PEM files; with them the service speaks HTTPS
  orvanta-service task start TITLE [--data DIR]
      Starts a task, which turns focus on. Put -- before a title that begins with a dash.
  orvanta-service task done [ID] [--data DIR]
      Ends the task with this number; without one, the task in progress that was started last.
  orvanta-service status [--json] [--data DIR]
      Shows whether focus is on, and the tasks in progress.
  orvanta-service key [--data DIR]
      Prints the API key that clients need; makes it if there is none yet.
  orvanta-service --help | --version

  --data DIR    where everything is kept; default: orvanta-service in $XDG_DATA_HOME
                (~/.local/share). Tasks and status work whether or not the service runs.

Exit status:
  0  it worked
  1  it failed; a line on standard error says why
  2  the arguments are wrong
)"_s.arg(defaultPort);
}

} // namespace orvanta::localservice
