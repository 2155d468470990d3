#include "platform/portable/file_lock.h"

#include "platform/portable/system_error.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>

#include <cerrno>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace orvanta {

using namespace Qt::StringLiterals;

Result<FileLock> FileLock::acquire(const QString& path, std::chrono::milliseconds patience)
{
    const QByteArray name = QFile::encodeName(path);
    int descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600);
    const int reason = errno;
    if (descriptor < 0)
        descriptor = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0)
        return failure(u"%1: %2"_s.arg(path, systemError(reason)));

    FileLock lock(descriptor);
    const QDeadlineTimer deadline(patience);
    // The kernel knows no lock with a time limit. Who holds this one writes a single file, so that waiting is rare and short.
    constexpr auto pause = std::chrono::milliseconds(5);
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK)
            break;
        if (deadline.hasExpired())
            return std::unexpected(
                PlatformError { QCoreApplication::translate("StoredFile", "another copy of the program is holding %1").arg(path) });
        std::this_thread::sleep_for(pause);
    }
    return lock;
}

FileLock::FileLock(FileLock&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) { }

FileLock::~FileLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace orvanta
