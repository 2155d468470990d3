#include "platform/portable/exchange_files.h"
#include "platform/portable/posix_file_system.h"
#include "support/contracts/file_system_contract.h"
#include "support/fake_file_system.h"
#include "support/file_edits.h"
#include "support/limited_rights.h"

#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

#include <sys/stat.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestFakeFileSystem : public FileSystemContract {
    Q_OBJECT

    FakeFileSystem m_files;
    int m_folders = 0;

    FileSystem& fileSystem() override { return m_files; }
    QString makeFolder() override
    {
        const QString folder = u"/folder%1"_s.arg(++m_folders);
        m_files.folders.insert(folder);
        return folder;
    }
    void makeLink(const QString& path, const QString& target) override { m_files.links[path] = target; }
    bool isLink(const QString& path) override { return m_files.links.contains(path); }
    std::uint16_t permissions(const QString& path) override { return m_files.files[path].mode; }
};

class TestPosixFileSystem : public FileSystemContract {
    Q_OBJECT

    PosixFileSystem m_files;
    std::vector<std::unique_ptr<QTemporaryDir>> m_folders;

    FileSystem& fileSystem() override { return m_files; }
    QString makeFolder() override
    {
        m_folders.push_back(std::make_unique<QTemporaryDir>());
        return m_folders.back()->path();
    }
    void makeLink(const QString& path, const QString& target) override { QVERIFY(QFile::link(target, path)); }
    bool isLink(const QString& path) override { return QFileInfo(path).isSymLink(); }
    std::uint16_t permissions(const QString& path) override
    {
        struct stat facts {};
        return ::stat(QFile::encodeName(path).constData(), &facts) == 0 ? static_cast<std::uint16_t>(facts.st_mode & 07777) : 0;
    }

private Q_SLOTS:
    void twoFilesAreExchangedInOneStep()
    {
        const QTemporaryDir folder;
        const QByteArray left = QFile::encodeName(folder.filePath(u"a"_s));
        const QByteArray right = QFile::encodeName(folder.filePath(u"b"_s));
        QVERIFY(writeInPlace(folder.filePath(u"a"_s), "1") && writeInPlace(folder.filePath(u"b"_s), "2"));
        QCOMPARE(exchangeFiles(left, right), Exchange::done);
        QCOMPARE(contentOf(folder.filePath(u"a"_s)), "2"_ba);
        QCOMPARE(exchangeFiles(left, right + "none"), Exchange::failed);
    }

    void anotherWritersContentIsNeverLostInARace()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"file"_s);
        QVERIFY(writeInPlace(path, "theirs 0"));
        std::atomic<int> written = 0;
        // It saves as editors do, by renaming, again and again. We replace only what we have seen, and say in the new content
        // what that was. Now and then it rests for as long as we need for one whole attempt, which then has to succeed.
        std::atomic<bool> isDone = false;
        std::atomic<int> attempts = 0;
        std::jthread other([&](const std::stop_token& stop) {
            for (int number = 1; number <= 3000; ++number) {
                if (!replaceByRename(path, "theirs " + QByteArray::number(number)))
                    break;
                written = number;
                for (const int before = attempts; number % 500 == 0 && attempts < before + 2 && !stop.stop_requested();)
                    std::this_thread::yield();
            }
            isDone = true;
        });
        int replaced = 0;
        while (!isDone) {
            const auto seen = m_files.read(path);
            QVERIFY(seen && *seen);
            const auto result = m_files.replace(path, *seen, "ours over " + **seen);
            QVERIFY2(result.has_value(), result ? "" : qUtf8Printable(result.error().description));
            if (*result == FileSystem::Replacement::replaced)
                ++replaced;
            ++attempts;
        }
        other.join();
        // The last that the other wrote is there, or stands in what replaced it.
        QCOMPARE(written, 3000);
        QVERIFY2(contentOf(path).endsWith("theirs 3000"), contentOf(path).constData());
        QCOMPARE(namesIn(folder.path()), QStringList { u"file"_s });
        QVERIFY(replaced > 0);
    }

    void aFileOfAnotherOwnerIsLeftAlone()
    {
        if (::geteuid() != 0)
            return; // only the superuser can make such a file; another user's test runs the rest
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"file"_s);
        QVERIFY(writeInPlace(path, "old"));
        QVERIFY(OrdinaryUser::owns(folder.path()));
        {
            const OrdinaryUser user; // owns the folder, but not the file
            const auto result = m_files.replace(path, "old", "new");
            QVERIFY(!result);
            QCOMPARE(result.error().description, u"cannot be written without changing its owner"_s);
        }
        QCOMPARE(contentOf(path), "old"_ba);
        QCOMPARE(namesIn(folder.path()), QStringList { u"file"_s });
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TestFakeFileSystem fake;
    TestPosixFileSystem posix;
    return QTest::qExec(&fake, argc, argv) + QTest::qExec(&posix, argc, argv) == 0 ? 0 : 1;
}

#include "test_posix_file_system.moc"
