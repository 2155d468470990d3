#pragma once

#include "platform/file_system.h"
#include "support/call_log.h"

#include <functional>
#include <map>
#include <set>

namespace orvanta::testing {

/// A file system in memory: files with their permissions, links, and folders. It records what it was asked to do, and can
/// be told that an operation fails, or what somebody else does at the moment before a file is replaced.
class FakeFileSystem final : public FileSystem {
public:
    struct File {
        QByteArray content;
        std::uint16_t mode = 0600;
    };

    [[nodiscard]] bool exists(const QString& path) override
    {
        const QString place = resolved(path);
        return files.contains(place) || isFolder(place);
    }

    [[nodiscard]] Result<std::optional<QByteArray>> read(const QString& path) override
    {
        log.add(QStringLiteral("read ") + path);
        const QString place = resolved(path);
        if (isFolder(place))
            return std::unexpected(PlatformError { QStringLiteral("is a folder") });
        const auto file = files.find(place);
        return file == files.end() ? std::nullopt : std::optional(file->second.content);
    }

    [[nodiscard]] Result<void> readPieces(const QString& path, qsizetype limit, const Consume& consume) override
    {
        log.add(QStringLiteral("readPieces ") + path);
        const auto file = files.find(resolved(path));
        if (file == files.end())
            return std::unexpected(PlatformError { QStringLiteral("is not there") });
        const QByteArray content = file->second.content.first(std::min(limit, file->second.content.size()));
        for (qsizetype place = 0; place < content.size(); place += pieceSize) {
            piecesRead += 1;
            if (consume(QByteArrayView(content).sliced(place, std::min(pieceSize, content.size() - place))) == Reading::enough)
                break;
        }
        return {};
    }

    [[nodiscard]] Result<void> createDirectories(const QString& path) override
    {
        log.add(QStringLiteral("createDirectories ") + path);
        if (failing.contains(path))
            return std::unexpected(PlatformError { failing[path] });
        if (files.contains(path))
            return std::unexpected(PlatformError { QStringLiteral("is a file") });
        for (QString folder = path; !folder.isEmpty(); folder.truncate(folder.lastIndexOf(u'/')))
            folders.insert(folder);
        return {};
    }

    [[nodiscard]] Result<void> writeAtomically(const QString& path, const QByteArray& content) override
    {
        log.add(QStringLiteral("writeAtomically ") + path);
        return put(path, content);
    }

    [[nodiscard]] Result<Replacement> replace(const QString& path, const std::optional<QByteArray>& expected, const QByteArray& content) override
    {
        log.add(QStringLiteral("replace ") + path);
        if (auto act = std::exchange(beforeReplacing, nullptr))
            act();
        const auto file = files.find(resolved(path));
        const auto present = file == files.end() ? std::nullopt : std::optional(file->second.content);
        if (present != expected)
            return Replacement::changedMeanwhile;
        if (file != files.end() && (file->second.mode & 0200) == 0)
            return std::unexpected(PlatformError { QStringLiteral("is write-protected") });
        if (const auto written = put(path, content); !written)
            return std::unexpected(written.error());
        return Replacement::replaced;
    }

    [[nodiscard]] Result<Replacement> remove(const QString& path, const QByteArray& expected) override
    {
        log.add(QStringLiteral("remove ") + path);
        if (auto act = std::exchange(beforeReplacing, nullptr))
            act();
        const auto file = files.find(resolved(path));
        if (file == files.end() || file->second.content != expected)
            return Replacement::changedMeanwhile;
        if ((file->second.mode & 0200) == 0)
            return std::unexpected(PlatformError { QStringLiteral("is write-protected") });
        files.erase(file);
        return Replacement::replaced;
    }

    [[nodiscard]] Result<void> setPermissions(const QString& path, std::uint16_t mode) override
    {
        log.add(QStringLiteral("setPermissions %1 %2").arg(path).arg(mode, 4, 8, QLatin1Char('0')));
        const auto file = files.find(resolved(path));
        if (file == files.end())
            return std::unexpected(PlatformError { QStringLiteral("is not there") });
        file->second.mode = mode;
        return {};
    }

    [[nodiscard]] QStringList names(const QString& path) override
    {
        QStringList found;
        const QString prefix = path + u'/';
        const auto add = [&](const QString& entry) {
            if (entry.startsWith(prefix) && !QStringView(entry).sliced(prefix.size()).contains(u'/'))
                found << entry.sliced(prefix.size());
        };
        for (const auto& [entry, file] : files)
            add(entry);
        for (const QString& folder : folders)
            add(folder);
        for (const auto& [entry, target] : links)
            add(entry);
        found.sort();
        return found;
    }

    std::map<QString, File> files;
    std::set<QString> folders;
    std::map<QString, QString> links;           ///< path to target
    std::map<QString, QString> failing;         ///< paths that cannot be written, and why
    std::function<void()> beforeReplacing = {}; ///< called once; also before a file is removed
    qsizetype pieceSize = 4096;
    int piecesRead = 0;
    CallLog log;

private:
    [[nodiscard]] QString resolved(const QString& path) const
    {
        const auto link = links.find(path);
        return link == links.end() ? path : resolved(link->second);
    }

    [[nodiscard]] bool isFolder(const QString& path) const { return folders.contains(path); }

    [[nodiscard]] Result<void> put(const QString& path, const QByteArray& content)
    {
        const QString place = resolved(path);
        if (const auto reason = failing.find(place); reason != failing.end())
            return std::unexpected(PlatformError { reason->second });
        if (isFolder(place))
            return std::unexpected(PlatformError { QStringLiteral("is a folder") });
        if (!isFolder(place.first(place.lastIndexOf(u'/'))))
            return std::unexpected(PlatformError { QStringLiteral("cannot be written (No such file or directory)") });
        files[place].content = content;
        return {};
    }
};

} // namespace orvanta::testing
