#pragma once

#include "platform/platform_error.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <optional>

namespace orvanta {

/// The files that the program shares with others: the agents' configurations, which are the user's own, and transcripts.
/// Paths are absolute; symbolic links are followed. An error is worded to follow the path. One instance a thread.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// Whether anything stands at `path`.
    [[nodiscard]] virtual bool exists(const QString& path) = 0;

    /// The whole content of the file at `path`, absent where nothing stands. Anything but a regular file of a sensible
    /// size is an error; a pipe or a device is never waited for.
    [[nodiscard]] virtual Result<std::optional<QByteArray>> read(const QString& path) = 0;

    enum class Reading : std::uint8_t { goOn, enough };
    using Consume = std::function<Reading(QByteArrayView piece)>;

    /// Hands the file's first `limit` bytes to `consume`, piece by piece, until it has had enough. An error for what is
    /// absent or no regular file; never waits for one.
    [[nodiscard]] virtual Result<void> readPieces(const QString& path, qsizetype limit, const Consume& consume) = 0;

    /// Makes the folder at `path` and what is missing above it, with the permissions that folders get by default.
    [[nodiscard]] virtual Result<void> createDirectories(const QString& path) = 0;

    /// Puts `content` at `path`, whole or not at all, whatever stands there. A file that is there keeps its permissions
    /// and its owner (an error where it cannot); a link stays a link, and its target is written. A new file is its
    /// owner's alone.
    [[nodiscard]] virtual Result<void> writeAtomically(const QString& path, const QByteArray& content) = 0;

    enum class Replacement : std::uint8_t { replaced, changedMeanwhile };

    /// The same, but only if what stands at `path` still is `expected` (absent: nothing). Where somebody else was quicker,
    /// theirs stays. A file that its owner has write-protected is an error.
    [[nodiscard]] virtual Result<Replacement> replace(const QString& path, const std::optional<QByteArray>& expected, const QByteArray& content) = 0;

    /// Takes the file at `path` away, but only if it still holds `expected`. A link stays; what it leads to goes. A file that its
    /// owner has write-protected is an error.
    [[nodiscard]] virtual Result<Replacement> remove(const QString& path, const QByteArray& expected) = 0;

    /// Sets the POSIX permissions (of the kind 0755) of the file at `path`.
    [[nodiscard]] virtual Result<void> setPermissions(const QString& path, std::uint16_t mode) = 0;

    /// The names in the folder at `path`, sorted; none where there is no folder.
    [[nodiscard]] virtual QStringList names(const QString& path) = 0;
};

} // namespace orvanta
