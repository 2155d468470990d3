#include "localservice/data_folder.h"

#include "localservice/key_file.h"
#include "localservice/schema.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

constexpr mode_t ownerAlone = 0700;
constexpr mode_t forOthers = 0077;

const QString lockName = u"service.lock"_s;

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool holdsOnlyOwnFiles(const QDir& folder)
{
    const QString database = QFileInfo(databasePath(folder.path())).fileName();
    const QString key = QFileInfo(keyFilePath(folder.path())).fileName();
    const auto names = folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    return std::ranges::all_of(names, [&](const QString& name) { return name.startsWith(database) || name.startsWith(key) || name == lockName; });
}

} // namespace

QString defaultDataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/orvanta-service"_s;
}

std::expected<std::optional<QString>, QString> prepareDataFolder(const QString& folder)
{
    const QDir directory(folder);
    const QByteArray path = QFile::encodeName(folder);
    if (!directory.exists()) {
        const QString parent = QFileInfo(directory.absolutePath()).path();
        errno = 0;
        if (!QDir().mkpath(parent) || (::mkdir(path.constData(), ownerAlone) != 0 && errno != EEXIST))
            return std::unexpected(u"The data folder %1 cannot be made: %2"_s.arg(folder, systemError()));
    }
    struct stat information {};
    if (::stat(path.constData(), &information) != 0)
        return std::unexpected(u"The data folder %1 cannot be read: %2"_s.arg(folder, systemError()));
    if (!S_ISDIR(information.st_mode))
        return std::unexpected(u"%1 is not a folder"_s.arg(folder));
    if ((information.st_mode & forOthers) == 0)
        return std::nullopt;
    if (!holdsOnlyOwnFiles(directory))
        return u"The data folder %1 is open to other users and holds other files as well: it was left as it is"_s.arg(folder);
    if (::chmod(path.constData(), ownerAlone) != 0)
        return std::unexpected(u"The data folder %1 is open to other users and cannot be closed to them: %2"_s.arg(folder, systemError()));
    return u"The data folder %1 was open to other users: it is now yours alone"_s.arg(folder);
}

std::expected<FolderLock, QString> FolderLock::take(const QString& folder)
{
    FolderLock lock(::open(QFile::encodeName(QDir(folder).filePath(lockName)).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock.m_descriptor < 0)
        return std::unexpected(u"The data folder %1 cannot be written: %2"_s.arg(folder, systemError()));
    if (::flock(lock.m_descriptor, LOCK_EX | LOCK_NB) != 0)
        return std::unexpected(u"Another service is serving the data folder %1"_s.arg(folder));
    return lock;
}

FolderLock::~FolderLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace orvanta::localservice
