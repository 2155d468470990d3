#pragma once

#include <QHostAddress>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <variant>

namespace orvanta::localservice {

/// The port of `serve` unless another is asked for.
constexpr quint16 defaultPort = 47700;

struct ServeCommand {
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    quint16 port = defaultPort; ///< 0: any free one
    std::optional<QString> readyFile;
    struct Tls {
        QString certificateFile;
        QString privateKeyFile;
    };
    std::optional<Tls> tls;
};

struct TaskStartCommand {
    QString title;
};

struct TaskDoneCommand {
    std::optional<qint64> id; ///< absent: the one started last
};

struct StatusCommand {
    enum class Form : std::uint8_t { text, json };
    Form form = Form::text;
};

struct KeyCommand { };

/// Print this and end well: what --help and --version ask for.
struct PrintCommand {
    QString text;
};

struct Invocation {
    std::variant<ServeCommand, TaskStartCommand, TaskDoneCommand, StatusCommand, KeyCommand, PrintCommand> command;
    QString dataFolder;
};

/// Reads the arguments without the program's name. Fails with a line that says what is wrong with them.
[[nodiscard]] std::expected<Invocation, QString> parseCommandLine(const QStringList& arguments);

/// What --help prints.
[[nodiscard]] QString helpText();

} // namespace orvanta::localservice
