#include "platform/linux/application_identity_process.h"

#include <array>
#include <climits>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

/// As much as any of these files is read; a command line may be megabytes long, and its beginning is enough.
constexpr std::size_t readLimit = std::size_t { 16 } * 1024;

/// Without waiting: what stands under a process's own root may be anything, a pipe too.
std::optional<QByteArray> beginning(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0)
        return std::nullopt;
    QByteArray bytes(readLimit, Qt::Uninitialized);
    qsizetype size = 0;
    while (size < bytes.size()) {
        const ssize_t got = ::read(file, bytes.data() + size, static_cast<std::size_t>(bytes.size() - size));
        if (got <= 0)
            break;
        size += got;
    }
    ::close(file);
    bytes.truncate(size);
    return bytes;
}

QString executable(const std::string& folder)
{
    std::array<char, PATH_MAX> target {};
    const ssize_t size = ::readlink((folder + "/exe").c_str(), target.data(), target.size());
    if (size <= 0)
        return {};
    QString path = QString::fromUtf8(target.data(), size);
    // An application whose package was updated while it runs.
    if (path.endsWith(" (deleted)"_L1))
        path.chop(10);
    return path;
}

QStringList commandLine(const std::string& folder)
{
    QStringList words;
    const QByteArray bytes = beginning(folder + "/cmdline").value_or(QByteArray());
    for (const QByteArray& word : bytes.split('\0'))
        words << QString::fromUtf8(word);
    if (!words.isEmpty() && words.last().isEmpty())
        words.removeLast();
    return words;
}

QString program(const std::string& folder)
{
    const QString path = executable(folder);
    QStringList words = commandLine(folder);
    if (path.isEmpty())
        return {};
    // The executable's own path is certain; the first word of a command line is whatever its starter wrote there.
    if (words.isEmpty())
        words << path;
    else
        words[0] = path;
    return programOfCommand(words);
}

} // namespace

ProcessTraits readProcessTraits(pid_t process, const std::string& procFolder)
{
    if (process <= 0)
        return {};
    const std::string folder = procFolder + "/" + std::to_string(process);
    ProcessTraits traits { .sandboxEntry = {}, .program = program(folder) };
    if (const auto information = beginning(folder + "/root/.flatpak-info"))
        traits.sandboxEntry = flatpakDesktopEntry(*information);
    if (traits.sandboxEntry.isEmpty())
        traits.sandboxEntry = snapDesktopEntry(beginning(folder + "/attr/current").value_or(QByteArray()));
    return traits;
}

QString flatpakDesktopEntry(QByteArrayView information)
{
    bool isInGroup = false;
    for (const QByteArray& piece : information.toByteArray().split('\n')) {
        const QByteArray line = piece.trimmed();
        if (line.startsWith('[')) {
            isInGroup = line == "[Application]";
        } else if (isInGroup && line.startsWith("name=")) {
            const QString name = QString::fromUtf8(line.sliced(5));
            return name.isEmpty() ? QString() : name + ".desktop"_L1;
        }
    }
    return {};
}

QString snapDesktopEntry(QByteArrayView label)
{
    const QString text = QString::fromUtf8(label.toByteArray());
    const QStringList parts = text.left(text.indexOf(u' ')).split(u'.');
    if (parts.size() != 3 || parts[0] != "snap"_L1 || parts[1].isEmpty() || parts[2].isEmpty())
        return {};
    return parts[1] + u'_' + parts[2] + ".desktop"_L1;
}

} // namespace orvanta
