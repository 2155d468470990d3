#pragma once

#include "platform/file_system.h"

#include <QObject>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every FileSystem does. A test class of an implementation derives from it and says how to make one.
class FileSystemContract : public QObject {
    Q_OBJECT

protected:
    /// A file system, and an existing empty folder in it that no other test uses.
    virtual FileSystem& fileSystem() = 0;
    virtual QString makeFolder() = 0;
    virtual void makeLink(const QString& path, const QString& target) = 0;
    virtual bool isLink(const QString& path) = 0;
    virtual std::uint16_t permissions(const QString& path) = 0;

private Q_SLOTS:
    void whatIsNotThereDoesNotExistAndReadsAsAbsent()
    {
        FileSystem& files = fileSystem();
        const QString path = makeFolder() + QStringLiteral("/file");
        QVERIFY(!files.exists(path));
        QCOMPARE(files.read(path), Result<std::optional<QByteArray>>(std::nullopt));
        QVERIFY(!files.readPieces(path, 10, [](QByteArrayView) { return FileSystem::Reading::goOn; }));
        QVERIFY(files.names(path).isEmpty());
        QVERIFY(!files.setPermissions(path, 0755));
    }

    void whatIsWrittenIsReadAndIsItsOwnersAlone()
    {
        FileSystem& files = fileSystem();
        const QString folder = makeFolder();
        const QString path = folder + QStringLiteral("/file");
        const QByteArray content("a\0b\n\xFF", 5);
        QVERIFY(files.writeAtomically(path, content));
        QVERIFY(files.exists(path));
        QCOMPARE(files.read(path), Result<std::optional<QByteArray>>(content));
        QCOMPARE(permissions(path), std::uint16_t { 0600 });
        QCOMPARE(files.names(folder), QStringList { QStringLiteral("file") });
    }

    void aFileThatIsWrittenAgainKeepsItsPermissions()
    {
        FileSystem& files = fileSystem();
        const QString path = makeFolder() + QStringLiteral("/file");
        QVERIFY(files.writeAtomically(path, "old"));
        QVERIFY(files.setPermissions(path, 0755));
        QVERIFY(files.writeAtomically(path, "new"));
        QCOMPARE(permissions(path), std::uint16_t { 0755 });
        QVERIFY(files.setPermissions(path, 0640));
        QCOMPARE(files.replace(path, "new", "newer"), Result<FileSystem::Replacement>(FileSystem::Replacement::replaced));
        QCOMPARE(permissions(path), std::uint16_t { 0640 });
        QCOMPARE(files.read(path), Result<std::optional<QByteArray>>("newer"));
    }

    void aLinkStaysALinkAndItsTargetIsWritten()
    {
        FileSystem& files = fileSystem();
        const QString folder = makeFolder();
        const QString target = folder + QStringLiteral("/target");
        const QString link = folder + QStringLiteral("/link");
        QVERIFY(files.writeAtomically(target, "old"));
        makeLink(link, target);
        QCOMPARE(files.replace(link, "old", "new"), Result<FileSystem::Replacement>(FileSystem::Replacement::replaced));
        QVERIFY(isLink(link));
        QVERIFY(!isLink(target));
        QCOMPARE(files.read(target), Result<std::optional<QByteArray>>("new"));
        QVERIFY(files.writeAtomically(link, "newer"));
        QVERIFY(isLink(link));
        QCOMPARE(files.read(target), Result<std::optional<QByteArray>>("newer"));
    }

    void aLinkToNothingIsAbsentAndIsWrittenThrough()
    {
        FileSystem& files = fileSystem();
        const QString folder = makeFolder();
        const QString link = folder + QStringLiteral("/link");
        makeLink(link, folder + QStringLiteral("/target"));
        QVERIFY(!files.exists(link));
        QCOMPARE(files.read(link), Result<std::optional<QByteArray>>(std::nullopt));
        QCOMPARE(files.replace(link, std::nullopt, "new"), Result<FileSystem::Replacement>(FileSystem::Replacement::replaced));
        QVERIFY(isLink(link));
        QCOMPARE(files.read(folder + QStringLiteral("/target")), Result<std::optional<QByteArray>>("new"));
    }

    void whatChangedMeanwhileIsNotReplaced()
    {
        FileSystem& files = fileSystem();
        const QString folder = makeFolder();
        const QString path = folder + QStringLiteral("/file");
        const auto changed = Result<FileSystem::Replacement>(FileSystem::Replacement::changedMeanwhile);
        QCOMPARE(files.replace(path, "old", "new"), changed);
        QVERIFY(!files.exists(path));
        QVERIFY(files.writeAtomically(path, "theirs"));
        QCOMPARE(files.replace(path, "old", "new"), changed);
        QCOMPARE(files.replace(path, std::nullopt, "new"), changed);
        QCOMPARE(files.read(path), Result<std::optional<QByteArray>>("theirs"));
        QCOMPARE(files.names(folder), QStringList { QStringLiteral("file") });
    }

    void whatIsRemovedIsGoneAndALinkToItStays()
    {
        FileSystem& files = fileSystem();
        const QString folder = makeFolder();
        const QString path = folder + QStringLiteral("/file");
        const QString link = folder + QStringLiteral("/link");
        const auto removed = Result<FileSystem::Replacement>(FileSystem::Replacement::replaced);
        QVERIFY(files.writeAtomically(path, "old"));
        QCOMPARE(files.remove(path, "old"), removed);
        QVERIFY(files.names(folder).isEmpty());
        QVERIFY(files.writeAtomically(path, "old"));
        makeLink(link, path);
        QCOMPARE(files.remove(link, "old"), removed);
        QCOMPARE(files.names(folder), QStringList { QStringLiteral("link") });
        QVERIFY(isLink(link));
        QVERIFY(!files.exists(link));
    }

    void whatChangedMeanwhileIsNotRemovedNorWhatIsWriteProtected()
    {
        FileSystem& files = fileSystem();
        const QString folder = makeFolder();
        const QString path = folder + QStringLiteral("/file");
        const auto changed = Result<FileSystem::Replacement>(FileSystem::Replacement::changedMeanwhile);
        QCOMPARE(files.remove(path, "old"), changed);
        QVERIFY(files.writeAtomically(path, "theirs"));
        QCOMPARE(files.remove(path, "old"), changed);
        QVERIFY(files.setPermissions(path, 0444));
        const auto result = files.remove(path, "theirs");
        QVERIFY(!result);
        QCOMPARE(result.error().description, QStringLiteral("is write-protected"));
        QCOMPARE(files.read(path), Result<std::optional<QByteArray>>("theirs"));
        QCOMPARE(files.names(folder), QStringList { QStringLiteral("file") });
    }

    void aWriteProtectedFileIsNotReplaced()
    {
        FileSystem& files = fileSystem();
        const QString path = makeFolder() + QStringLiteral("/file");
        QVERIFY(files.writeAtomically(path, "old"));
        QVERIFY(files.setPermissions(path, 0444));
        const auto result = files.replace(path, "old", "new");
        QVERIFY(!result);
        QCOMPARE(result.error().description, QStringLiteral("is write-protected"));
        QCOMPARE(files.read(path), Result<std::optional<QByteArray>>("old"));
    }

    void foldersAreMadeWithThoseAboveThem()
    {
        FileSystem& files = fileSystem();
        const QString folder = makeFolder();
        const QString deep = folder + QStringLiteral("/a b/c");
        QVERIFY(files.createDirectories(deep));
        QVERIFY(files.createDirectories(deep));
        QVERIFY(files.exists(deep));
        QCOMPARE(files.names(folder), QStringList { QStringLiteral("a b") });
        QVERIFY(!files.read(deep));
        QVERIFY(!files.writeAtomically(deep, "x"));
        QVERIFY(files.writeAtomically(deep + QStringLiteral("/file"), "x"));
        QVERIFY(!files.createDirectories(deep + QStringLiteral("/file")));
    }

    void withoutAFolderNothingIsWritten()
    {
        FileSystem& files = fileSystem();
        const QString folder = makeFolder();
        QVERIFY(!files.writeAtomically(folder + QStringLiteral("/none/file"), "x"));
        QVERIFY(!files.replace(folder + QStringLiteral("/none/file"), std::nullopt, "x"));
        QVERIFY(files.names(folder).isEmpty());
    }

    void piecesEndWithTheLimitTheFileOrEnough()
    {
        FileSystem& files = fileSystem();
        const QString path = makeFolder() + QStringLiteral("/file");
        const QByteArray content = QByteArray("0123456789abcdef").repeated(20'000);
        QVERIFY(files.writeAtomically(path, content));
        const auto readUpTo = [&](qsizetype limit, int pieces) {
            QByteArray all;
            const auto result = files.readPieces(path, limit, [&](QByteArrayView piece) {
                all.append(piece);
                return --pieces == 0 ? FileSystem::Reading::enough : FileSystem::Reading::goOn;
            });
            return result ? all : QByteArray("failed");
        };
        QCOMPARE(readUpTo(content.size() + 1, -1), content);
        QCOMPARE(readUpTo(100'001, -1), content.first(100'001));
        const QByteArray first = readUpTo(content.size(), 1);
        QVERIFY(!first.isEmpty() && first.size() < content.size() && content.startsWith(first));
    }
};

} // namespace orvanta::testing
