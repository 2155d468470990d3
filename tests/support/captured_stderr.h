#pragma once

#include <QByteArray>

#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace orvanta::testing {

/// Keeps what this process writes to standard error, from its construction to its end.
class CapturedStderr {
public:
    CapturedStderr()
    {
        std::fflush(stderr);
        m_original = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
        m_file = ::memfd_create("stderr", MFD_CLOEXEC);
        ::dup2(m_file, STDERR_FILENO);
    }
    ~CapturedStderr()
    {
        std::fflush(stderr);
        ::dup2(m_original, STDERR_FILENO);
        ::close(m_original);
        ::close(m_file);
    }
    CapturedStderr(const CapturedStderr&) = delete;
    CapturedStderr& operator=(const CapturedStderr&) = delete;

    /// Everything so far.
    [[nodiscard]] QByteArray text() const
    {
        std::fflush(stderr);
        QByteArray bytes(static_cast<qsizetype>(::lseek(m_file, 0, SEEK_END)), Qt::Uninitialized);
        const ssize_t size = ::pread(m_file, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
        bytes.truncate(size < 0 ? 0 : size);
        return bytes;
    }

private:
    int m_original = -1;
    int m_file = -1;
};

} // namespace orvanta::testing
