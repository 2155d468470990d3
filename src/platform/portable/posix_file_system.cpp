#include "platform/portable/posix_file_system.h"

#include "platform/descriptor.h"
#include "platform/portable/durable_file.h"
#include "platform/portable/exchange_files.h"
#include "platform/portable/system_error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

using Replacement = FileSystem::Replacement;

/// Far above what any configuration needs.
constexpr qsizetype largestFile = 64LL * 1024 * 1024;

std::unexpected<PlatformError> cannotBeWritten(int error = errno)
{
    return failure(u"cannot be written (%1)"_s.arg(systemError(error)));
}

/// A new file beside the one that it is to replace; gone with the object unless it was put in its place.
class PreparedFile {
public:
    PreparedFile(const PreparedFile&) = delete;
    PreparedFile& operator=(const PreparedFile&) = delete;
    PreparedFile(PreparedFile&& other) noexcept : m_name(std::exchange(other.m_name, {})) { }
    PreparedFile& operator=(PreparedFile&&) = delete;
    ~PreparedFile()
    {
        if (!m_name.isEmpty())
            ::unlink(m_name.constData());
    }

    /// On the disk, with `content`, and like the file of which `like` tells, if there is one.
    [[nodiscard]] static Result<PreparedFile> make(const QByteArray& target, const QByteArray& content, const struct stat* like)
    {
        const qsizetype slash = target.lastIndexOf('/') + 1;
        QByteArray name = target.first(slash) + '.' + target.sliced(slash) + ".XXXXXX";
        Descriptor file(::mkstemp(name.data()));
        if (!file)
            return cannotBeWritten();
        PreparedFile prepared(name);
        ::fcntl(file.number(), F_SETFD, FD_CLOEXEC);
        if (like && !resemble(file, *like))
            return failure(u"cannot be written without changing its owner"_s);
        for (QByteArrayView rest = content; !rest.isEmpty();) {
            const ssize_t count = ::write(file.number(), rest.data(), static_cast<std::size_t>(rest.size()));
            if (count < 0 && errno != EINTR)
                return cannotBeWritten();
            rest = rest.sliced(std::max<ssize_t>(count, 0));
        }
        const bool isOnDisk = ::fsync(file.number()) == 0 || errno == EINVAL || errno == ENOTSUP;
        if (!isOnDisk || !file.close())
            return cannotBeWritten();
        return prepared;
    }

    [[nodiscard]] const char* name() const { return m_name.constData(); }
    [[nodiscard]] QString path() const { return QFile::decodeName(m_name); }
    /// It has another name now, or must not be removed.
    void release() { m_name.clear(); }

private:
    explicit PreparedFile(QByteArray name) : m_name(std::move(name)) { }

    /// Owner and group first: a change of owner takes some permissions away.
    static bool resemble(const Descriptor& file, const struct stat& like)
    {
        struct stat own {};
        if (::fstat(file.number(), &own) != 0)
            return false;
        if ((own.st_uid != like.st_uid || own.st_gid != like.st_gid) && ::fchown(file.number(), like.st_uid, like.st_gid) != 0)
            return false;
        // A file system without permissions of its own fails here, and nothing is lost there.
        std::ignore = ::fchmod(file.number(), like.st_mode & 07777);
        return true;
    }

    QByteArray m_name;
};

void syncFolderOf(const QByteArray& target)
{
    const Descriptor folder(::open(target.first(target.lastIndexOf('/') + 1).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Where this fails the name reaches the disk in the system's own time; either content is whole.
    if (folder)
        std::ignore = ::fsync(folder.number());
}

/// Where a write through `path` ends.
QByteArray targetOf(const QString& path)
{
    const QString real = QFileInfo(path).canonicalFilePath();
    return QFile::encodeName(real.isEmpty() ? QFileInfo(linkTarget(path)).absoluteFilePath() : real);
}

bool holds(const QString& path, const QByteArray& content)
{
    const auto found = readWholeFile(path, largestFile);
    return found && *found == content;
}

/// Puts the prepared file at `target` if nothing is there.
Result<Replacement> placeNew(PreparedFile& prepared, const QByteArray& target)
{
    if (::link(prepared.name(), target.constData()) == 0)
        return Replacement::replaced; // the other name goes with the prepared file
    if (errno == EEXIST)
        return Replacement::changedMeanwhile;
    if (errno != EPERM && errno != ENOTSUP && errno != ENOSYS)
        return cannotBeWritten();
    // A file system without hard links: there is a moment in which another could come between.
    if (QFileInfo::exists(QFile::decodeName(target)))
        return Replacement::changedMeanwhile;
    if (std::rename(prepared.name(), target.constData()) != 0)
        return cannotBeWritten();
    prepared.release();
    return Replacement::replaced;
}

/// Gives back the place that was taken from somebody else's new content, which the prepared file holds now. It is over once
/// what comes out of the exchange is what was put in before: anything else is yet newer, and is what has to end up there.
Result<Replacement> giveBack(PreparedFile& prepared, const QByteArray& target, const QByteArray& ours)
{
    constexpr int patience = 100;
    QByteArray putIn = ours;
    for (int turn = 0; turn < patience; ++turn) {
        const auto theirs = readWholeFile(prepared.path(), largestFile);
        if (!theirs || !*theirs || exchangeFiles(prepared.name(), target.constData()) != Exchange::done)
            break;
        if (holds(prepared.path(), putIn))
            return Replacement::changedMeanwhile;
        putIn = **theirs;
    }
    const QString kept = prepared.path();
    prepared.release();
    return failure(u"was changed by another program at the same moment; its content is in %1"_s.arg(kept));
}

/// Puts the prepared file in the place of `target`, whose content is looked at when nobody can change it any more.
Result<Replacement> placeOver(PreparedFile& prepared, const QByteArray& target, const QByteArray& expected, const QByteArray& ours)
{
    if (!holds(QFile::decodeName(target), expected))
        return Replacement::changedMeanwhile;
    switch (exchangeFiles(prepared.name(), target.constData())) {
    case Exchange::done:
        return holds(prepared.path(), expected) ? Result<Replacement>(Replacement::replaced) : giveBack(prepared, target, ours);
    case Exchange::failed:
        return errno == ENOENT ? Result<Replacement>(Replacement::changedMeanwhile) : cannotBeWritten();
    case Exchange::unsupported:
        break;
    }
    if (std::rename(prepared.name(), target.constData()) != 0)
        return cannotBeWritten();
    prepared.release();
    return Replacement::replaced;
}

/// Takes the file at `target` away. Its content is looked at under a name that nobody else knows; were it another one by then, it
/// gets its place back, unless something newer stands there.
Result<Replacement> takeAway(PreparedFile& away, const QByteArray& target, const QByteArray& expected)
{
    if (!holds(QFile::decodeName(target), expected))
        return Replacement::changedMeanwhile;
    if (std::rename(target.constData(), away.name()) != 0)
        return errno == ENOENT ? Result<Replacement>(Replacement::changedMeanwhile) : cannotBeWritten();
    if (holds(away.path(), expected))
        return Replacement::replaced; // it goes with the prepared file
    if (placeNew(away, target))
        return Replacement::changedMeanwhile;
    const QString kept = away.path();
    away.release();
    return failure(u"was changed by another program at the same moment; its content is in %1"_s.arg(kept));
}

/// What stands at `target`; absent for nothing, an error for anything but a file.
Result<std::optional<struct stat>> factsOf(const QByteArray& target)
{
    struct stat facts {};
    if (::stat(target.constData(), &facts) != 0)
        return errno == ENOENT ? Result<std::optional<struct stat>>(std::nullopt) : cannotBeWritten();
    if (!S_ISREG(facts.st_mode))
        return failure(S_ISDIR(facts.st_mode) ? u"is a folder"_s : u"is not a regular file"_s);
    return facts;
}

} // namespace

bool PosixFileSystem::exists(const QString& path)
{
    struct stat facts {};
    return ::stat(QFile::encodeName(path).constData(), &facts) == 0;
}

Result<std::optional<QByteArray>> PosixFileSystem::read(const QString& path)
{
    return readWholeFile(path, largestFile);
}

Result<void> PosixFileSystem::readPieces(const QString& path, qsizetype limit, const Consume& consume)
{
    const QByteArray name = QFile::encodeName(path);
    const auto unreadable = [] { return failure(u"cannot be read (%1)"_s.arg(systemError())); };
    struct stat facts {};
    // Looked at before it is opened, since opening alone makes some devices act, and after, since names change.
    if (::stat(name.constData(), &facts) != 0)
        return unreadable();
    if (!S_ISREG(facts.st_mode))
        return failure(u"is not a regular file"_s);
    const Descriptor file(::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file || ::fstat(file.number(), &facts) != 0)
        return unreadable();
    if (!S_ISREG(facts.st_mode))
        return failure(u"is not a regular file"_s);

    constexpr qsizetype pieceSize = 64LL * 1024;
    QByteArray piece(std::clamp<qsizetype>(facts.st_size, 4096, pieceSize), Qt::Uninitialized);
    while (limit > 0) {
        const ssize_t count = ::read(file.number(), piece.data(), static_cast<std::size_t>(std::min(limit, piece.size())));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return unreadable();
        if (count == 0 || consume(QByteArrayView(piece).first(count)) == Reading::enough)
            break;
        limit -= count;
    }
    return {};
}

Result<void> PosixFileSystem::createDirectories(const QString& path)
{
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(path).toStdString(), error);
    if (error)
        return failure(u"cannot be made (%1)"_s.arg(systemError(error.value())));
    return {};
}

Result<void> PosixFileSystem::writeAtomically(const QString& path, const QByteArray& content)
{
    const QByteArray target = targetOf(path);
    const auto facts = factsOf(target);
    if (!facts)
        return std::unexpected(facts.error());
    auto prepared = PreparedFile::make(target, content, *facts ? &**facts : nullptr);
    if (!prepared)
        return std::unexpected(prepared.error());
    if (std::rename(prepared->name(), target.constData()) != 0)
        return cannotBeWritten();
    prepared->release();
    syncFolderOf(target);
    return {};
}

Result<FileSystem::Replacement> PosixFileSystem::replace(const QString& path, const std::optional<QByteArray>& expected, const QByteArray& content)
{
    const QByteArray target = targetOf(path);
    const auto facts = factsOf(target);
    if (!facts)
        return std::unexpected(facts.error());
    if (facts->has_value() != expected.has_value())
        return Replacement::changedMeanwhile;
    if (*facts && ((*facts)->st_mode & S_IWUSR) == 0)
        return failure(u"is write-protected"_s);
    auto prepared = PreparedFile::make(target, content, *facts ? &**facts : nullptr);
    if (!prepared)
        return std::unexpected(prepared.error());
    const auto outcome = expected ? placeOver(*prepared, target, *expected, content) : placeNew(*prepared, target);
    if (outcome && *outcome == Replacement::replaced)
        syncFolderOf(target);
    return outcome;
}

Result<FileSystem::Replacement> PosixFileSystem::remove(const QString& path, const QByteArray& expected)
{
    const QByteArray target = targetOf(path);
    const auto facts = factsOf(target);
    if (!facts)
        return std::unexpected(facts.error());
    if (!*facts)
        return Replacement::changedMeanwhile;
    if (((*facts)->st_mode & S_IWUSR) == 0)
        return failure(u"is write-protected"_s);
    auto away = PreparedFile::make(target, {}, nullptr);
    if (!away)
        return std::unexpected(away.error());
    const auto outcome = takeAway(*away, target, expected);
    if (outcome && *outcome == Replacement::replaced)
        syncFolderOf(target);
    return outcome;
}

Result<void> PosixFileSystem::setPermissions(const QString& path, std::uint16_t mode)
{
    if (::chmod(QFile::encodeName(path).constData(), mode) != 0)
        return failure(u"cannot get its permissions (%1)"_s.arg(systemError()));
    return {};
}

QStringList PosixFileSystem::names(const QString& path)
{
    QStringList names = QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    names.sort();
    return names;
}

} // namespace orvanta
