#pragma once

#include "platform/platform_error.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <expected>
#include <optional>

namespace orvanta {

/// Which permissions a file gets when it is replaced. A new file is always its owner's alone.
enum class FilePermissions : std::uint8_t { ownerOnly, asBefore };

/// Why a file cannot be read, in words that follow "it".
struct ReadFailure : PlatformError {
    bool mayPass = false; ///< too many open files, a disk or a server that does not answer: nothing is said of the content
};

/// The content of the file at `path`, absent when nothing stands there. Anything but a regular file of at most `limit`
/// bytes is an error; a pipe or a device is never waited for.
[[nodiscard]] std::expected<std::optional<QByteArray>, ReadFailure> readWholeFile(const QString& path, qsizetype limit);

/// Replaces the content of the file at `path` in one step that no crash can divide. On success it is on the disk, the
/// folder's entry included. One writer at a time: see FileLock. An error is the system's own words.
[[nodiscard]] Result<void> replaceFile(const QString& path, const QByteArray& content, FilePermissions permissions);

/// Makes the folder at `path` and what is missing above it, open to nobody but the owner, and has it on the disk.
[[nodiscard]] Result<void> makePrivateFolder(const QString& path);

/// Gives what stands at `path` a name of its own beside it, "<name>.damaged-<UTC time>", and tells that path.
[[nodiscard]] Result<QString> moveAside(const QString& path);

/// Where a write through `path` really ends: the last link's target, whether or not anything is there. A ring of links
/// ends at `path` itself.
[[nodiscard]] QString linkTarget(const QString& path);

} // namespace orvanta
