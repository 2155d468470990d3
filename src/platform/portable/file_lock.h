#pragma once

#include "platform/platform_error.h"

#include <QString>

#include <chrono>

namespace orvanta {

/// An exclusive lock among the user's processes, held as long as the object lives. It is the kernel's: a process that
/// is killed lets go of it, and the empty file that stays behind means nothing.
class FileLock {
public:
    /// Locks the file at `path`, making it where it is missing, and waits up to `patience` for whoever holds it. On a
    /// file system without locks the object locks nothing, since saving must work there all the same.
    [[nodiscard]] static Result<FileLock> acquire(const QString& path, std::chrono::milliseconds patience);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) = delete;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock();

private:
    explicit FileLock(int descriptor) : m_descriptor(descriptor) { }

    int m_descriptor;
};

} // namespace orvanta
