#include "platform/linux/desktop_application_directory.h"

#include "support/contracts/application_directory_contract.h"
#include "support/install_files.h"

#include <QGuiApplication>
#include <QTemporaryDir>

#include <sys/stat.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// A session's folders: entries under "user" and "system", themes under "icons" and "more", loose pictures under "loose".
struct House {
    [[nodiscard]] QString path(const QString& name) const { return folder.filePath(name); }

    [[nodiscard]] bool entry(const QString& name, const QByteArray& lines = {}) const { return installEntry(path(name), lines); }

    [[nodiscard]] bool picture(const QString& name, QSize size, Qt::GlobalColor colour = Qt::red) const
    {
        QImage image(size, QImage::Format_ARGB32);
        image.fill(colour);
        return QDir().mkpath(QFileInfo(path(name)).path()) && image.save(path(name), "PNG");
    }

    [[nodiscard]] bool vectors(const QString& name) const
    {
        return QDir().mkpath(QFileInfo(path(name)).path())
            && writeInPlace(path(name),
                "<svg xmlns='http://www.w3.org/2000/svg' width='16' height='16' viewBox='0 0 16 16'><rect width='16' height='16' "
                "fill='#0000ff'/></svg>");
    }

    [[nodiscard]] bool theme(const QString& name, const QByteArray& index) const
    {
        return QDir().mkpath(path(name)) && writeInPlace(path(name + u"/index.theme"_s), index);
    }

    [[nodiscard]] DesktopApplicationDirectory directory(const std::vector<std::string>& themes = {}) const
    {
        return DesktopApplicationDirectory({ path(u"user"_s).toStdString(), path(u"system"_s).toStdString() },
            { .languages = {}, .desktops = {}, .binFolders = {} },
            IconThemes({ path(u"icons"_s).toStdString(), path(u"more"_s).toStdString() }, themes, { path(u"loose"_s).toStdString() }));
    }

    [[nodiscard]] QString located(const QString& identifier) const
    {
        const auto url = directory().locate(identifier);
        return url ? QDir(folder.path()).relativeFilePath(url->toLocalFile()) : u"nowhere"_s;
    }

    /// The icon of an entry with the line "Icon=name".
    [[nodiscard]] std::optional<QImage> icon(const QByteArray& name, int pixelSize, const std::vector<std::string>& themes = {}) const
    {
        if (!entry(u"system/test.desktop"_s, "Icon=" + name + "\n"))
            return std::nullopt;
        return directory(themes).icon(path(u"system/test.desktop"_s), pixelSize);
    }

    QTemporaryDir folder;
};

QColor colourOf(const std::optional<QImage>& icon)
{
    return icon ? icon->pixelColor(icon->width() / 2, icon->height() / 2) : QColor();
}

const QByteArray hicolor = "[Icon Theme]\nName=Hicolor\nDirectories=16x16/apps,48x48/apps,128x128/apps,48x48/actions,scalable/apps\n"
                           "[16x16/apps]\nSize=16\nContext=Applications\nType=Fixed\n"
                           "[48x48/actions]\nSize=48\nContext=Actions\nType=Fixed\n"
                           "[48x48/apps]\nSize=48\nContext=Applications\nType=Threshold\n"
                           "[128x128/apps]\nSize=128\nContext=Applications\nType=Fixed\n"
                           "[scalable/apps]\nSize=256\nMinSize=1\nMaxSize=512\nContext=Applications\nType=Scalable\n";

} // namespace

class TestDesktopApplicationDirectoryContract : public ApplicationDirectoryContract {
    Q_OBJECT

    std::unique_ptr<ApplicationDirectory> makeDirectory() override
    {
        m_house = std::make_unique<House>();
        return std::make_unique<DesktopApplicationDirectory>(m_house->directory());
    }
    QString install(ApplicationDirectory&) override
    {
        if (!m_house->theme(u"icons/hicolor"_s, hicolor) || !m_house->picture(u"icons/hicolor/128x128/apps/editor.png"_s, { 128, 64 })
            || !m_house->entry(u"system/org.example.Editor.desktop"_s, "Name=Editor\nIcon=editor\n"))
            return {};
        return u"org.example.Editor.desktop"_s;
    }
    QString installWithoutIcon(ApplicationDirectory&) override
    {
        return m_house->entry(u"system/org.example.Plain.desktop"_s, "Name=Plain\n") ? u"org.example.Plain.desktop"_s : QString();
    }

    std::unique_ptr<House> m_house;
};

class TestDesktopApplicationDirectory : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Where it is installed

    void theFirstFolderCounts()
    {
        const House house;
        QVERIFY(house.entry(u"system/a.desktop"_s));
        QCOMPARE(house.located(u"a.desktop"_s), u"system/a.desktop"_s);
        QVERIFY(house.entry(u"user/a.desktop"_s));
        QCOMPARE(house.located(u"a.desktop"_s), u"user/a.desktop"_s);
        QVERIFY(house.entry(u"user/a.desktop"_s, "Hidden=true\n"));
        QCOMPARE(house.located(u"a.desktop"_s), u"nowhere"_s);
    }

    void whoseProgramIsMissingIsNotInstalled()
    {
        const House house;
        QVERIFY(house.entry(u"system/a.desktop"_s, "TryExec=/nowhere/at/all\n"));
        QCOMPARE(house.located(u"a.desktop"_s), u"nowhere"_s);
    }

    void anApplicationThatMenusDoNotShowIsInstalledAllTheSame()
    {
        const House house;
        QVERIFY(house.entry(u"system/a.desktop"_s, "NoDisplay=true\n"));
        QCOMPARE(house.located(u"a.desktop"_s), u"system/a.desktop"_s);
    }

    void foldersInFoldersAreFoundByTheirIds()
    {
        const House house;
        QVERIFY(house.entry(u"system/kde4/kate.desktop"_s));
        QVERIFY(house.entry(u"system/a-b/c/d-e.desktop"_s));
        QCOMPARE(house.located(u"kde4-kate.desktop"_s), u"system/kde4/kate.desktop"_s);
        QCOMPARE(house.located(u"a-b-c-d-e.desktop"_s), u"system/a-b/c/d-e.desktop"_s);
        QCOMPARE(house.located(u"a-b-c-d-f.desktop"_s), u"nowhere"_s);
    }

    void browsersAreFoundByTheirOwnIdentifiers()
    {
        const House house;
        QCOMPARE(house.located(u"org.mozilla.firefox"_s), u"nowhere"_s);
        QVERIFY(house.entry(u"system/firefox-esr.desktop"_s));
        QCOMPARE(house.located(u"org.mozilla.firefox"_s), u"system/firefox-esr.desktop"_s);
        QCOMPARE(house.located(u"firefox-esr.desktop"_s), u"system/firefox-esr.desktop"_s);
        QCOMPARE(house.located(u"com.apple.Safari"_s), u"nowhere"_s);
    }

    void identifiersNeverLeadOutOfTheFolders_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::newRow("up") << u"../outside.desktop"_s;
        QTest::newRow("deep") << u"x/../../outside.desktop"_s;
        QTest::newRow("hyphens") << u"..-outside.desktop"_s;
        QTest::newRow("hyphens inside") << u"x-..-..-outside.desktop"_s;
        QTest::newRow("absolute") << u"/etc/outside.desktop"_s;
        QTest::newRow("no suffix") << u"outside"_s;
        QTest::newRow("many hyphens") << QString(5000, u'-') + u".desktop"_s;
    }

    void identifiersNeverLeadOutOfTheFolders()
    {
        QFETCH(QString, identifier);
        const House house;
        QVERIFY(house.entry(u"outside.desktop"_s));
        QVERIFY(house.entry(u"system/x/inside.desktop"_s));
        QCOMPARE(house.located(identifier), u"nowhere"_s);
    }

    // How it looks

    void theNearestSizeServesRatherLargerThanSmaller()
    {
        const House house;
        QVERIFY(house.theme(u"icons/hicolor"_s, hicolor));
        QVERIFY(house.picture(u"icons/hicolor/16x16/apps/a.png"_s, { 16, 16 }, Qt::red));
        QVERIFY(house.picture(u"icons/hicolor/48x48/apps/a.png"_s, { 48, 48 }, Qt::green));
        QVERIFY(house.picture(u"icons/hicolor/128x128/apps/a.png"_s, { 128, 128 }, Qt::blue));
        QCOMPARE(colourOf(house.icon("a", 16)), QColor(Qt::red));
        QCOMPARE(colourOf(house.icon("a", 34)), QColor(Qt::green));
        QCOMPARE(house.icon("a", 34)->size(), QSize(34, 34));
        QCOMPARE(colourOf(house.icon("a", 49)), QColor(Qt::green));
        QCOMPARE(colourOf(house.icon("a", 68)), QColor(Qt::blue));
        QCOMPARE(colourOf(house.icon("a", 500)), QColor(Qt::blue));
    }

    void iconsOfApplicationsGoBeforeOthersOfTheirName()
    {
        const House house;
        QVERIFY(house.theme(u"icons/hicolor"_s, hicolor));
        QVERIFY(house.picture(u"icons/hicolor/48x48/actions/a.png"_s, { 48, 48 }, Qt::red));
        QCOMPARE(colourOf(house.icon("a", 48)), QColor(Qt::red));
        QVERIFY(house.picture(u"icons/hicolor/16x16/apps/a.png"_s, { 16, 16 }, Qt::green));
        QCOMPARE(colourOf(house.icon("a", 48)), QColor(Qt::green));
    }

    void vectorsAreDrawnAsLargeAsAskedFor()
    {
        const House house;
        QVERIFY(house.theme(u"icons/hicolor"_s, hicolor));
        QVERIFY(house.vectors(u"icons/hicolor/scalable/apps/a.svg"_s));
        const auto icon = house.icon("a", 100);
        QVERIFY(icon);
        QCOMPARE(icon->size(), QSize(100, 100));
        QCOMPARE(colourOf(icon), QColor(Qt::blue));
    }

    void theChosenThemeGoesBeforeWhatItInheritsAndThatBeforeTheCommonOne()
    {
        const House house;
        const QByteArray folder = "[apps]\nSize=48\nContext=Applications\n";
        QVERIFY(house.theme(u"icons/hicolor"_s, hicolor));
        QVERIFY(house.theme(u"icons/Chosen"_s, "[Icon Theme]\nInherits=Parent, Chosen\n" + folder));
        QVERIFY(house.theme(u"more/Parent"_s, "[Icon Theme]\nInherits=Chosen\n" + folder));
        QVERIFY(house.picture(u"icons/hicolor/48x48/apps/a.png"_s, { 48, 48 }, Qt::red));
        QCOMPARE(colourOf(house.icon("a", 48, { "Chosen" })), QColor(Qt::red));
        QVERIFY(house.picture(u"more/Parent/apps/a.png"_s, { 48, 48 }, Qt::green));
        QCOMPARE(colourOf(house.icon("a", 48, { "Chosen" })), QColor(Qt::green));
        QVERIFY(house.picture(u"more/Chosen/apps/a.png"_s, { 48, 48 }, Qt::blue)); // a part of the theme that stands elsewhere
        QCOMPARE(colourOf(house.icon("a", 48, { "Chosen" })), QColor(Qt::blue));
        QCOMPARE(colourOf(house.icon("a", 48)), QColor(Qt::red));
    }

    void iconsOfNoThemeAreFound()
    {
        const House house;
        QVERIFY(house.picture(u"loose/a.png"_s, { 48, 48 }, Qt::green));
        QCOMPARE(colourOf(house.icon("a", 48)), QColor(Qt::green));
        QCOMPARE(colourOf(house.icon("a.png", 48)), QColor(Qt::green));
    }

    void anIconMayBeAFile()
    {
        const House house;
        QVERIFY(house.picture(u"anywhere/a.png"_s, { 96, 48 }, Qt::green));
        const auto icon = house.icon(QFile::encodeName(house.path(u"anywhere/a.png"_s)), 48);
        QVERIFY(icon);
        QCOMPARE(icon->size(), QSize(48, 24));
    }

    void whatIsNoPictureIsNone_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("unknown") << QByteArray("unknown");
        QTest::newRow("garbage") << QByteArray("@/garbage.png");
        QTest::newRow("cut off") << QByteArray("@/half.png");
        QTest::newRow("pipe") << QByteArray("@/pipe.png");
        QTest::newRow("device") << QByteArray("/dev/zero");
        QTest::newRow("folder") << QByteArray("@");
        QTest::newRow("too large a file") << QByteArray("@/huge.png");
        QTest::newRow("too large a picture") << QByteArray("@/wide.svg");
        QTest::newRow("up") << QByteArray("../outside");
        QTest::newRow("the folder itself") << QByteArray("..");
    }

    void whatIsNoPictureIsNone()
    {
        QFETCH(QByteArray, name);
        const House house;
        QVERIFY(house.theme(u"icons/hicolor"_s, hicolor));
        QVERIFY(house.picture(u"outside.png"_s, { 48, 48 }));
        QVERIFY(house.picture(u"icons/outside.png"_s, { 48, 48 }));
        QVERIFY(house.picture(u"files/whole.png"_s, { 48, 48 }));
        QFile whole(house.path(u"files/whole.png"_s));
        QVERIFY(whole.open(QFile::ReadOnly));
        QVERIFY(writeInPlace(house.path(u"files/half.png"_s), whole.readAll().first(40)));
        QVERIFY(writeInPlace(house.path(u"files/garbage.png"_s), QByteArray(5000, '\x02')));
        QCOMPARE(::mkfifo(QFile::encodeName(house.path(u"files/pipe.png"_s)).constData(), 0600), 0);
        QFile huge(house.path(u"files/huge.png"_s));
        QVERIFY(huge.open(QFile::WriteOnly) && huge.resize(qint64 { 1 } << 40));
        QVERIFY(writeInPlace(house.path(u"files/wide.svg"_s), "<svg xmlns='http://www.w3.org/2000/svg' width='999999999' height='16'/>"));
        name.replace('@', QFile::encodeName(house.path(u"files"_s)));
        QVERIFY(!house.icon(name, 48));
    }

    void anEntryThatCannotBeReadHasNone()
    {
        const House house;
        QVERIFY(!house.directory().icon(house.path(u"absent.desktop"_s), 48));
        QVERIFY(!house.directory().icon(house.folder.path(), 48));
        QVERIFY(!house.directory().icon(QString(), 48));
    }

    void theIndexOfAThemeIsReadWhateverStandsInIt()
    {
        const IconThemeIndex index = parseIconThemeIndex(
            "[Icon Theme]\n# Inherits=no\nInherits= one ,two,,\n[a/apps]\nSize=48\nScale=2\nType=Fixed\nContext=Applications\n"
            "[b]\nSize=32\n[c]\nSize=64\nType=Scalable\nMinSize=8\nMaxSize=512\n"
            "[no size]\nType=Fixed\n[../up]\nSize=48\n[/rooted]\nSize=48\n[x//y]\nSize=48\n[d]\nSize=-4\n[e]\nSize=99999999999\n[f\nSize");
        QCOMPARE(index,
            (IconThemeIndex { .parents = { "one", "two" },
                .folders = { { .path = "a/apps", .smallest = 96, .largest = 96, .isForApplications = true },
                    { .path = "b", .smallest = 30, .largest = 34, .isForApplications = false },
                    { .path = "c", .smallest = 8, .largest = 512, .isForApplications = false } } }));
        QCOMPARE(parseIconThemeIndex({}), IconThemeIndex());
    }

    void theSessionsOwnThemesAreSearched()
    {
        const House house;
        const QByteArray before = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(house.folder.path()));
        QVERIFY(house.theme(u"icons/hicolor"_s, hicolor));
        QVERIFY(house.picture(u"icons/hicolor/48x48/apps/orvanta-test.png"_s, { 48, 48 }, Qt::green));
        QVERIFY(house.entry(u"applications/orvanta-test.desktop"_s, "Icon=orvanta-test\n"));
        const DesktopApplicationDirectory directory;
        const auto url = directory.locate(u"orvanta-test.desktop"_s);
        const auto icon = url ? directory.icon(url->toLocalFile(), 48) : std::nullopt;
        qputenv("XDG_DATA_HOME", before);
        QCOMPARE(colourOf(icon), QColor(Qt::green));
    }
};

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    TestDesktopApplicationDirectoryContract contract;
    TestDesktopApplicationDirectory directory;
    int failures = 0;
    for (QObject* test : { static_cast<QObject*>(&contract), static_cast<QObject*>(&directory) })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_desktop_application_directory.moc"
