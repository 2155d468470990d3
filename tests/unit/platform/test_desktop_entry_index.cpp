#include "platform/linux/desktop_entry_index.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestDesktopEntryIndex : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    [[nodiscard]] QString path(const QString& name) const { return m_folder->filePath(name); }

    /// As packages do it: the whole file at once, under its name.
    [[nodiscard]] bool put(const QString& name, const QByteArray& lines) const
    {
        QFile file(path(name));
        return QDir().mkpath(QFileInfo(path(name)).path()) && file.open(QFile::WriteOnly)
            && file.write("[Desktop Entry]\nType=Application\n" + lines) > 0;
    }

    [[nodiscard]] DesktopEntryIndex index() const { return DesktopEntryIndex({ path(u"user"_s).toStdString(), path(u"system"_s).toStdString() }); }

    static QString nameOf(DesktopEntryIndex& index, const QString& id)
    {
        const DesktopEntryRecord* record = index.entries().byId(id);
        return record ? record->name : u"none"_s;
    }

    /// Makes the folders look as if nothing had happened to them for long.
    void age() const
    {
        for (const char* folder : { "user", "system" }) {
            const timespec past[2] { { .tv_sec = 1'000'000'000, .tv_nsec = 0 }, { .tv_sec = 1'000'000'000, .tv_nsec = 0 } };
            (void)::utimensat(AT_FDCWD, path(QString::fromLatin1(folder)).toLocal8Bit().constData(), past, 0);
        }
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void entriesOfAllFoldersAreFound()
    {
        QVERIFY(put(u"user/one.desktop"_s, "Name=One\nExec=/usr/bin/one --x %U\nStartupWMClass=OneClass\n"));
        QVERIFY(put(u"system/two.desktop"_s, "Name=Two\nExec=two\nNoDisplay=true\n"));
        DesktopEntryIndex entries = index();
        QCOMPARE(entries.entries().size(), std::size_t(2));
        const DesktopEntryRecord* one = entries.entries().byWindowClass(u"OneClass"_s);
        QVERIFY(one);
        QCOMPARE(one->id, u"one.desktop"_s);
        QCOMPARE(one->program, u"one"_s);
        QCOMPARE(one->words, 2);
        QVERIFY(one->isListed);
        const DesktopEntryRecord* two = entries.entries().byProgram(u"two"_s);
        QVERIFY(two);
        QVERIFY(!two->isListed);
    }

    void foldersInFoldersArePartOfTheId()
    {
        QVERIFY(put(u"system/kde4/kate.desktop"_s, "Name=Kate\n"));
        QVERIFY(put(u"system/a/b/c.desktop"_s, "Name=C\n"));
        DesktopEntryIndex entries = index();
        QCOMPARE(nameOf(entries, u"kde4-kate.desktop"_s), u"Kate"_s);
        QCOMPARE(nameOf(entries, u"a-b-c.desktop"_s), u"C"_s);
    }

    void theUsersEntryHidesTheSystems()
    {
        QVERIFY(put(u"user/one.desktop"_s, "Name=Mine\n"));
        QVERIFY(put(u"system/one.desktop"_s, "Name=Theirs\nStartupWMClass=Theirs\n"));
        QVERIFY(put(u"user/two.desktop"_s, "Name=Removed\nHidden=true\n"));
        QVERIFY(put(u"system/two.desktop"_s, "Name=Two\n"));
        DesktopEntryIndex entries = index();
        QCOMPARE(nameOf(entries, u"one.desktop"_s), u"Mine"_s);
        QVERIFY(!entries.entries().byWindowClass(u"Theirs"_s));
        QCOMPARE(nameOf(entries, u"two.desktop"_s), u"none"_s);
    }

    void whatIsNoApplicationIsLeftOut()
    {
        QVERIFY(put(u"user/link.desktop"_s, "Name=Link\nType=Link\n"));
        QVERIFY(put(u"user/readme.txt"_s, "Name=Text\n"));
        QVERIFY(put(u"user/.hidden.desktop"_s, "Name=Hidden\n"));
        QVERIFY(QDir().mkpath(path(u"user/folder.desktop"_s)));
        QVERIFY(QFile::link(path(u"user/nowhere"_s), path(u"user/broken.desktop"_s)));
        QCOMPARE(::mkfifo(path(u"user/pipe.desktop"_s).toLocal8Bit().constData(), 0600), 0);
        QVERIFY(put(u"user/good.desktop"_s, "Name=Good\n"));
        DesktopEntryIndex entries = index();
        QCOMPARE(entries.entries().size(), std::size_t(1));
        QCOMPARE(nameOf(entries, u"good.desktop"_s), u"Good"_s);
    }

    void aRingOfLinksComesToAnEnd()
    {
        QVERIFY(put(u"user/good.desktop"_s, "Name=Good\n"));
        QVERIFY(QFile::link(path(u"user"_s), path(u"user/again"_s)));
        DesktopEntryIndex entries = index();
        QCOMPARE(nameOf(entries, u"good.desktop"_s), u"Good"_s);
        QCOMPARE(nameOf(entries, u"again-good.desktop"_s), u"Good"_s);
    }

    void changesAreNoticedWhenAskedFor()
    {
        QVERIFY(put(u"user/one.desktop"_s, "Name=One\n"));
        DesktopEntryIndex entries = index();
        QCOMPARE(nameOf(entries, u"one.desktop"_s), u"One"_s);

        QVERIFY(put(u"user/two.desktop"_s, "Name=Two\n"));
        QCOMPARE(nameOf(entries, u"two.desktop"_s), u"none"_s);
        entries.refresh();
        QCOMPARE(nameOf(entries, u"two.desktop"_s), u"Two"_s);

        QVERIFY(put(u"user/new"_s, "Name=Replaced\n"));
        QVERIFY(QFile::remove(path(u"user/one.desktop"_s)));
        QVERIFY(QFile::rename(path(u"user/new"_s), path(u"user/one.desktop"_s)));
        entries.refresh();
        QCOMPARE(nameOf(entries, u"one.desktop"_s), u"Replaced"_s);

        QVERIFY(QFile::remove(path(u"user/two.desktop"_s)));
        entries.refresh();
        QCOMPARE(nameOf(entries, u"two.desktop"_s), u"none"_s);
    }

    void aFolderThatAppearsLaterIsNoticed()
    {
        DesktopEntryIndex entries = index();
        QCOMPARE(entries.entries().size(), std::size_t(0));
        QVERIFY(put(u"system/late/one.desktop"_s, "Name=One\n"));
        entries.refresh();
        QCOMPARE(nameOf(entries, u"late-one.desktop"_s), u"One"_s);
        QVERIFY(put(u"system/late/two.desktop"_s, "Name=Two\n"));
        entries.refresh();
        QCOMPARE(nameOf(entries, u"late-two.desktop"_s), u"Two"_s);
    }

    void theGenerationGrowsWithChangesAlone()
    {
        QVERIFY(put(u"user/one.desktop"_s, "Name=One\n"));
        age();
        DesktopEntryIndex entries = index();
        entries.refresh();
        const auto generation = entries.generation();
        entries.refresh();
        QCOMPARE(entries.generation(), generation);
        QVERIFY(put(u"user/two.desktop"_s, "Name=Two\n"));
        entries.refresh();
        QCOMPARE(entries.generation(), generation + 1);
        // The folder is young now: it is read again, and found to be the same.
        entries.refresh();
        QCOMPARE(entries.generation(), generation + 1);
    }

    void aSecondChangeUnderTheSameTimeStampIsNoticed()
    {
        QVERIFY(put(u"user/one.desktop"_s, "Name=One\n"));
        DesktopEntryIndex entries = index();
        entries.refresh();
        struct stat before {};
        QCOMPARE(::stat(path(u"user"_s).toLocal8Bit().constData(), &before), 0);
        QVERIFY(put(u"user/two.desktop"_s, "Name=Two\n"));
        const timespec stamps[2] { before.st_atim, before.st_mtim };
        QCOMPARE(::utimensat(AT_FDCWD, path(u"user"_s).toLocal8Bit().constData(), stamps, 0), 0);
        entries.refresh();
        QCOMPARE(nameOf(entries, u"two.desktop"_s), u"Two"_s);
    }

    void theFoldersFollowTheEnvironment()
    {
        const QByteArray home = qgetenv("XDG_DATA_HOME");
        const QByteArray system = qgetenv("XDG_DATA_DIRS");
        qputenv("XDG_DATA_HOME", "/data/home");
        qputenv("XDG_DATA_DIRS", "/one/:relative:/two:/one");
        const std::vector<std::string> folders = applicationFolders();
        qputenv("XDG_DATA_HOME", home);
        qputenv("XDG_DATA_DIRS", system);
        QCOMPARE(folders,
            std::vector<std::string>(
                { "/data/home/applications", "/one/applications", "/two/applications", "/data/home/flatpak/exports/share/applications",
                    "/var/lib/flatpak/exports/share/applications", "/var/lib/snapd/desktop/applications" }));
    }
};

QTEST_GUILESS_MAIN(TestDesktopEntryIndex)
#include "test_desktop_entry_index.moc"
