#include "platform/linux/desktop_application_folders.h"

#include "support/contracts/application_folders_contract.h"
#include "support/install_files.h"
#include "support/limited_rights.h"

#include <QGuiApplication>
#include <QTemporaryDir>

#include <sys/stat.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

DesktopSession session(const QStringList& desktops = {}, const std::vector<std::string>& languages = {}, const QString& programs = u"/nowhere"_s)
{
    return { .languages = languages, .desktops = desktops, .binFolders = { programs.toStdString() } };
}

} // namespace

class TestDesktopApplicationFoldersContract : public ApplicationFoldersContract {
    Q_OBJECT

    std::unique_ptr<ApplicationFolders> makeFolders() override
    {
        m_folder = std::make_unique<QTemporaryDir>();
        return std::make_unique<DesktopApplicationFolders>(std::vector { m_folder->path().toStdString() }, session());
    }
    QString install(ApplicationFolders&, const QUrl& folder, const QString& name) override
    {
        const QString identifier = u"org.example."_s + QString(name).remove(u' ') + u".desktop"_s;
        return installEntry(folder.toLocalFile() + u'/' + identifier, "Exec=true\nName=" + name.toUtf8() + "\n") ? identifier : QString();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

class TestDesktopApplicationFolders : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    [[nodiscard]] QString path(const QString& name) const { return m_folder->filePath(name); }
    [[nodiscard]] bool put(const QString& name, const QByteArray& lines = "Name=Some\n") const { return installEntry(path(name), lines); }

    [[nodiscard]] DesktopApplicationFolders folders(const DesktopSession& desktop = session()) const
    {
        return DesktopApplicationFolders({ path(u"user"_s).toStdString(), path(u"local"_s).toStdString(), path(u"system"_s).toStdString() }, desktop);
    }

    /// The identifiers of all folders; agents' in brackets.
    [[nodiscard]] QStringList found(const DesktopSession& desktop = session()) const
    {
        QStringList identifiers;
        const DesktopApplicationFolders all = folders(desktop);
        for (const QUrl& folder : all.defaults()) {
            for (const ApplicationRecord& record : all.records(folder))
                identifiers << (record.uiElement.value_or(false) ? u"(%1)"_s : u"%1"_s).arg(record.bundleIdentifier.value_or(u"none"_s));
        }
        return identifiers;
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void theRecordSaysWhatTheEntrySays()
    {
        QVERIFY(put(u"system/org.example.Editor.desktop"_s, "Name=Editor\nName[de]=Bearbeiter\nExec=edit\n"));
        const auto records = folders(session({}, { "de" })).records(QUrl::fromLocalFile(path(u"system"_s)));
        QCOMPARE(records.size(), 1U);
        QCOMPARE(records.front(),
            (ApplicationRecord { .applicationURL = QUrl::fromLocalFile(path(u"system/org.example.Editor.desktop"_s)),
                .bundleIdentifier = u"org.example.Editor.desktop"_s,
                .uiElement = false,
                .backgroundOnly = {},
                .bundleDisplayName = u"Bearbeiter"_s,
                .bundleName = {} }));
    }

    void whatMenusDoNotShowCountsAsAnAgent()
    {
        QVERIFY(put(u"system/a.desktop"_s, "NoDisplay=true\n"));
        QVERIFY(put(u"system/b.desktop"_s, "NoDisplay=false\n"));
        QVERIFY(put(u"system/c.desktop"_s, "OnlyShowIn=KDE;\n"));
        QVERIFY(put(u"system/d.desktop"_s, "NotShowIn=GNOME;XFCE;\n"));
        QCOMPARE(found(session({ u"GNOME"_s })), QStringList({ u"(a.desktop)"_s, u"b.desktop"_s, u"(c.desktop)"_s, u"(d.desktop)"_s }));
        QCOMPARE(found(session({ u"KDE"_s })), QStringList({ u"(a.desktop)"_s, u"b.desktop"_s, u"c.desktop"_s, u"d.desktop"_s }));
    }

    void whatIsNoApplicationIsNone()
    {
        QVERIFY(put(u"system/link.desktop"_s, "Type=Link\nURL=https://a.example\n"));
        QVERIFY(put(u"system/folder.desktop"_s, "Type=Directory\n"));
        QVERIFY(writeInPlace(path(u"system/untyped.desktop"_s), "[Desktop Entry]\nName=x\n"));
        QVERIFY(put(u"system/real.desktop"_s));
        QVERIFY(writeInPlace(path(u"system/real.desktop.bak"_s), "[Desktop Entry]\nType=Application\n"));
        QCOMPARE(found(), QStringList({ u"real.desktop"_s }));
    }

    void whoseProgramIsMissingIsNotInstalled()
    {
        QVERIFY(QDir().mkpath(path(u"bin"_s)));
        QVERIFY(writeInPlace(path(u"bin/there"_s), "#!/bin/sh\n"));
        QVERIFY(writeInPlace(path(u"bin/data"_s), "x"));
        QVERIFY(QFile::setPermissions(path(u"bin/there"_s), QFile::ReadOwner | QFile::ExeOwner));
        QVERIFY(QFile::setPermissions(path(u"bin/data"_s), QFile::ReadOwner));
        QVERIFY(put(u"system/a.desktop"_s, "TryExec=there\n"));
        QVERIFY(put(u"system/b.desktop"_s, "TryExec=absent\n"));
        QVERIFY(put(u"system/c.desktop"_s, "TryExec=" + QFile::encodeName(path(u"bin/there"_s)) + "\n"));
        QVERIFY(put(u"system/d.desktop"_s, "TryExec=" + QFile::encodeName(path(u"bin/absent"_s)) + "\n"));
        QVERIFY(put(u"system/e.desktop"_s, "TryExec=data\n"));
        QVERIFY(put(u"system/f.desktop"_s, "TryExec=\n"));
        QVERIFY(put(u"system/g.desktop"_s, "TryExec=../bin/there\n"));
        QCOMPARE(found(session({}, {}, path(u"bin"_s))), QStringList({ u"a.desktop"_s, u"c.desktop"_s, u"f.desktop"_s }));
    }

    void anEntryHidesThoseWithItsIdInLaterFolders()
    {
        QVERIFY(put(u"user/a.desktop"_s, "Name=Zzz\n"));
        QVERIFY(put(u"system/a.desktop"_s, "Name=Aaa\n"));
        QVERIFY(put(u"user/b.desktop"_s, "Hidden=true\n"));
        QVERIFY(put(u"local/b.desktop"_s));
        QVERIFY(put(u"system/b.desktop"_s));
        QVERIFY(put(u"user/c.desktop"_s, "NoDisplay=true\n"));
        QVERIFY(put(u"system/c.desktop"_s));
        QVERIFY(put(u"system/d.desktop"_s));
        QCOMPARE(found(), QStringList({ u"a.desktop"_s, u"(c.desktop)"_s, u"d.desktop"_s }));
        // A folder that is looked into by itself is none of a series.
        QVERIFY(put(u"other/b.desktop"_s));
        QCOMPARE(folders().records(QUrl::fromLocalFile(path(u"other"_s))).size(), 1U);
    }

    void foldersInFoldersMakeIds()
    {
        QVERIFY(put(u"system/kde4/kate.desktop"_s));
        QVERIFY(put(u"user/kde4-kwrite.desktop"_s, "Hidden=true\n"));
        QVERIFY(put(u"system/kde4/kwrite.desktop"_s));
        QCOMPARE(found(), QStringList({ u"kde4-kate.desktop"_s }));
        const auto record = folders().record(QUrl::fromLocalFile(path(u"system/kde4/kate.desktop"_s)));
        QVERIFY(record);
        QCOMPARE(record->bundleIdentifier, std::optional(u"kde4-kate.desktop"_s));
    }

    void browsersBearTheirOwnIdentifiers()
    {
        QVERIFY(put(u"system/firefox-esr.desktop"_s));
        QVERIFY(put(u"system/chromium.desktop"_s));
        QCOMPARE(found(), QStringList({ u"com.google.Chrome"_s, u"org.mozilla.firefox"_s }));
    }

    void anEntryWithoutANameHasNone()
    {
        QVERIFY(put(u"system/a.desktop"_s, "Exec=a\n"));
        QCOMPARE(folders().records(QUrl::fromLocalFile(path(u"system"_s))).front().bundleDisplayName, std::optional<QString>());
    }

    void brokenAndHostileFilesAreNone()
    {
        QVERIFY(put(u"system/good.desktop"_s));
        QVERIFY(writeInPlace(path(u"system/empty.desktop"_s), ""));
        QVERIFY(writeInPlace(path(u"system/binary.desktop"_s),
            QByteArray("\x7f"
                       "ELF\0\xff\xfe[Desktop Entry",
                20)
                .repeated(1000)));
        QFile huge(path(u"system/huge.desktop"_s));
        QVERIFY(huge.open(QFile::WriteOnly) && huge.write("[Desktop Entry]\nType=Application\nName=Huge\n") > 0 && huge.resize(qint64 { 1 } << 40));
        QCOMPARE(::mkfifo(QFile::encodeName(path(u"system/pipe.desktop"_s)).constData(), 0600), 0);
        QVERIFY(QFile::link(u"/dev/zero"_s, path(u"system/zero.desktop"_s)));
        QVERIFY(QFile::link(path(u"system/ring.desktop"_s), path(u"system/ring.desktop"_s)));
        QVERIFY(QFile::link(path(u"nowhere"_s), path(u"system/dangling.desktop"_s)));
        QVERIFY(QFile::link(path(u"system"_s), path(u"system/ring"_s)));
        QVERIFY(QDir().mkpath(path(u"system/folder.desktop"_s)));
        // The ring of folders is followed a few times, under ever longer ids, and no further.
        const QStringList identifiers = found();
        QVERIFY(identifiers.contains(u"good.desktop"_s));
        QVERIFY(identifiers.size() < 10);
        for (const QString& identifier : identifiers)
            QVERIFY2(identifier.endsWith(u"good.desktop"_s), qPrintable(identifier));
    }

    void whatMayNotBeReadIsNone()
    {
        QVERIFY(put(u"system/secret.desktop"_s));
        QVERIFY(put(u"system/open.desktop"_s));
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7755)));
        QVERIFY(QFile::setPermissions(path(u"system/secret.desktop"_s), QFile::Permissions()));
        QStringList seen;
        {
            const OrdinaryUser user;
            seen = found();
        }
        QCOMPARE(seen, QStringList({ u"open.desktop"_s }));
    }

    void ourOwnIdentifierIsThatOfOurDesktopEntry()
    {
        QGuiApplication::setDesktopFileName(u"com.orvanta.Focus"_s);
        QCOMPARE(folders().ownBundleIdentifier(), std::optional(u"com.orvanta.Focus.desktop"_s));
        QVERIFY(put(u"system/com.orvanta.Focus.desktop"_s));
        QCOMPARE(found(), QStringList({ *folders().ownBundleIdentifier() }));
    }

    void theDefaultFoldersAreTheSessionsInTheirOrder()
    {
        qputenv("XDG_DATA_HOME", "/tmp/none/home");
        qputenv("XDG_DATA_DIRS", "/tmp/none/one:/tmp/none/two");
        const auto defaults = DesktopApplicationFolders().defaults();
        QStringList paths;
        for (const QUrl& url : defaults)
            paths << url.toLocalFile();
        QCOMPARE(paths,
            QStringList({ u"/tmp/none/home/applications"_s, u"/tmp/none/one/applications"_s, u"/tmp/none/two/applications"_s,
                u"/tmp/none/home/flatpak/exports/share/applications"_s, u"/var/lib/flatpak/exports/share/applications"_s,
                u"/var/lib/snapd/desktop/applications"_s }));
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TestDesktopApplicationFoldersContract contract;
    TestDesktopApplicationFolders folders;
    int failures = 0;
    for (QObject* test : { static_cast<QObject*>(&contract), static_cast<QObject*>(&folders) })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_desktop_application_folders.moc"
