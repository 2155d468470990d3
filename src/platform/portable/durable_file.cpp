#include "platform/portable/durable_file.h"

#include "platform/descriptor.h"
#include "platform/portable/system_error.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QString folderOf(const QString& path)
{
    return QFileInfo(path).absolutePath();
}

/// fsync, taken as done where a file system knows no such thing.
bool isOnDisk(const Descriptor& file)
{
    return ::fsync(file.number()) == 0 || errno == EINVAL || errno == ENOTSUP;
}

Result<void> syncFolder(const QString& path)
{
    const Descriptor folder(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // A folder may be writable without being readable; its entry then reaches the disk in the system's own time.
    if (!folder)
        return errno == EACCES ? Result<void>() : failure(systemError());
    return isOnDisk(folder) ? Result<void>() : failure(systemError());
}

/// The name under which a new content is prepared. It is always the same on one machine, so that whatever a crash
/// leaves is overwritten next time, and differs between machines, which may share the folder and no lock.
QString preparedPath(const QString& path)
{
    QByteArray machine = QSysInfo::machineUniqueId();
    if (machine.isEmpty())
        machine = QSysInfo::machineHostName().toUtf8();
    const QByteArray owner = QCryptographicHash::hash(machine + ':' + QByteArray::number(::getuid()), QCryptographicHash::Sha256).first(4).toHex();
    const QFileInfo file(path);
    return file.absolutePath() + u"/."_s + file.fileName() + u'.' + QString::fromLatin1(owner) + u".tmp"_s;
}

Result<void> writeAll(const Descriptor& file, QByteArrayView content)
{
    while (!content.isEmpty()) {
        const ssize_t count = ::write(file.number(), content.data(), static_cast<size_t>(content.size()));
        if (count < 0 && errno != EINTR)
            return failure(systemError());
        content = content.sliced(std::max<ssize_t>(count, 0));
    }
    return {};
}

Result<void> prepare(const QByteArray& name, const QByteArray& content, mode_t mode)
{
    // Made anew and never opened: a link or a pipe that stands under this name is not written through.
    ::unlink(name.constData());
    Descriptor file(::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file)
        return failure(systemError());
    // On a file system without permissions of its own this fails, and is no reason not to save.
    if (mode != 0600)
        std::ignore = ::fchmod(file.number(), mode);
    if (const auto result = writeAll(file, content); !result)
        return result;
    if (!isOnDisk(file) || !file.close())
        return failure(systemError());
    return {};
}

/// What stands at the path and cannot be read by us: no right to it, a ring of links, a socket. All else may pass.
std::unexpected<ReadFailure> unreadable(int error)
{
    const bool lasts = error == EACCES || error == EPERM || error == ELOOP || error == ENXIO || error == ENODEV;
    return std::unexpected(ReadFailure { { QCoreApplication::translate("StoredFile", "cannot be read (%1)").arg(systemError(error)) }, !lasts });
}

std::unexpected<ReadFailure> notOurs(const QString& description)
{
    return std::unexpected(ReadFailure { { description }, false });
}

} // namespace

std::expected<std::optional<QByteArray>, ReadFailure> readWholeFile(const QString& path, qsizetype limit)
{
    const Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file) {
        if (errno == ENOENT || errno == ENOTDIR)
            return std::nullopt;
        return unreadable(errno);
    }
    struct stat facts {};
    if (::fstat(file.number(), &facts) != 0)
        return unreadable(errno);
    if (S_ISDIR(facts.st_mode))
        return notOurs(QCoreApplication::translate("StoredFile", "is a folder"));
    if (!S_ISREG(facts.st_mode))
        return notOurs(QCoreApplication::translate("StoredFile", "is not a regular file"));

    // The size is what it was a moment ago; one byte more than that tells whether the file has grown since.
    QByteArray content(std::min<qsizetype>(facts.st_size, limit) + 1, Qt::Uninitialized);
    qsizetype size = 0;
    while (size <= limit) {
        if (size == content.size())
            content.resize(std::min(2 * size, limit + 1));
        const ssize_t count = ::read(file.number(), content.data() + size, static_cast<size_t>(content.size() - size));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return unreadable(errno);
        if (count == 0)
            break;
        size += count;
    }
    if (size > limit)
        return notOurs(QCoreApplication::translate("StoredFile", "is larger than %1 MiB").arg(limit / (1024LL * 1024)));
    content.truncate(size);
    return content;
}

Result<void> replaceFile(const QString& path, const QByteArray& content, FilePermissions permissions)
{
    const QString target = linkTarget(path);
    const QByteArray name = QFile::encodeName(target);
    mode_t mode = 0600;
    struct stat facts {};
    if (permissions == FilePermissions::asBefore && ::stat(name.constData(), &facts) == 0)
        mode = facts.st_mode & 0777;

    const QByteArray prepared = QFile::encodeName(preparedPath(target));
    Result<void> result = prepare(prepared, content, mode);
    if (result && std::rename(prepared.constData(), name.constData()) != 0)
        result = failure(systemError());
    if (!result) {
        ::unlink(prepared.constData());
        return result;
    }
    return syncFolder(folderOf(target));
}

Result<void> makePrivateFolder(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat facts {};
    if (::stat(name.constData(), &facts) == 0)
        return S_ISDIR(facts.st_mode) ? Result<void>() : failure(u"%1: %2"_s.arg(path, systemError(ENOTDIR)));
    const QString above = folderOf(path);
    if (above != path) {
        if (const auto result = makePrivateFolder(above); !result)
            return result;
    }
    if (::mkdir(name.constData(), 0700) != 0 && errno != EEXIST)
        return failure(u"%1: %2"_s.arg(path, systemError()));
    return syncFolder(above);
}

Result<QString> moveAside(const QString& path)
{
    const QString target = linkTarget(path);
    const QString stem = target + u".damaged-"_s + QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd'T'hhmmss'Z'"_s);
    QString aside = stem;
    for (int number = 2; QFileInfo::exists(aside) || QFileInfo(aside).isSymLink(); ++number)
        aside = u"%1-%2"_s.arg(stem).arg(number);
    if (std::rename(QFile::encodeName(target).constData(), QFile::encodeName(aside).constData()) != 0)
        return failure(systemError());
    // Should this fail, a power failure may undo the step: the content is then found, and moved, once more.
    std::ignore = syncFolder(folderOf(target));
    return aside;
}

QString linkTarget(const QString& path)
{
    // As many links as the kernel follows.
    constexpr int longestChain = 40;
    QString place = path;
    for (int links = 0; links < longestChain; ++links) {
        const QFileInfo entry(place);
        if (!entry.isSymLink())
            return place;
        place = entry.symLinkTarget();
    }
    return path;
}

} // namespace orvanta
