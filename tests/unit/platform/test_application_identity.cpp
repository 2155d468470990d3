#include "platform/linux/application_identity.h"
#include "platform/linux/application_identity_browsers.h"
#include "platform/linux/application_identity_process.h"
#include "platform/linux/application_identity_rules.h"
#include "platform/linux/wayland/wayland_running_applications.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <unistd.h>
#include <vector>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// Entries as a desktop really has them.
DesktopEntryTable installed()
{
    return DesktopEntryTable({
        { .id = u"com.example.Player.desktop"_s, .name = u"Player"_s, .startupWmClass = {}, .program = u"player"_s, .words = 1 },
        { .id = u"org.gnome.Calculator.desktop"_s, .name = u"Calculator"_s, .startupWmClass = {}, .program = u"gnome-calculator"_s, .words = 1 },
        { .id = u"debian-xterm.desktop"_s, .name = u"XTerm"_s, .startupWmClass = u"XTerm"_s, .program = u"xterm"_s, .words = 1 },
        { .id = u"galculator.desktop"_s, .name = u"Galculator"_s, .startupWmClass = {}, .program = u"galculator"_s, .words = 1 },
        { .id = u"Upper.desktop"_s, .name = u"Upper"_s, .startupWmClass = {}, .program = {}, .words = 0 },
        { .id = u"notes-settings.desktop"_s, .name = u"Notes settings"_s, .startupWmClass = {}, .program = u"notes"_s, .words = 2 },
        { .id = u"notes-main.desktop"_s, .name = u"Notes"_s, .startupWmClass = {}, .program = u"notes"_s, .words = 1 },
        { .id = u"viewer-mime.desktop"_s, .name = u"Viewer"_s, .startupWmClass = u"Viewer"_s, .program = u"viewer"_s, .words = 1, .isListed = false },
        { .id = u"viewer.app.desktop"_s, .name = u"Viewer"_s, .startupWmClass = u"Viewer"_s, .program = u"viewer"_s, .words = 3 },
        { .id = u"app-one.desktop"_s, .name = u"One"_s, .startupWmClass = u"Shared"_s, .program = {}, .words = 0 },
        { .id = u"app-two.desktop"_s, .name = u"Two"_s, .startupWmClass = u"shared"_s, .program = {}, .words = 0 },
        { .id = u"org.example.Sandboxed.desktop"_s, .name = u"Sandboxed"_s, .startupWmClass = {}, .program = {}, .words = 0 },
    });
}

QString match(const ApplicationTraits& traits)
{
    static const DesktopEntryTable table = installed();
    const DesktopEntryRecord* entry = matchDesktopEntry(traits, table);
    return entry ? entry->id : u"none"_s;
}

bool write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

class TestApplicationIdentity : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theRulesAreTriedInTheirOrder_data()
    {
        QTest::addColumn<ApplicationTraits>("traits");
        QTest::addColumn<QString>("id");
        const auto row = [](const char* name, const ApplicationTraits& traits, const QString& id) { QTest::newRow(name) << traits << id; };

        row("sandbox before all else",
            { .sandboxEntry = u"org.example.Sandboxed.desktop"_s,
                .gtkApplicationId = u"org.gnome.Calculator"_s,
                .instanceName = {},
                .className = u"XTerm"_s,
                .program = u"player"_s },
            u"org.example.Sandboxed.desktop"_s);
        row("sandbox without an entry",
            { .sandboxEntry = u"org.example.Other.desktop"_s,
                .gtkApplicationId = u"org.gnome.Calculator"_s,
                .instanceName = {},
                .className = {},
                .program = {} },
            u"org.gnome.Calculator.desktop"_s);
        row("GTK application before class",
            { .sandboxEntry = {}, .gtkApplicationId = u"org.gnome.Calculator"_s, .instanceName = {}, .className = u"XTerm"_s, .program = {} },
            u"org.gnome.Calculator.desktop"_s);
        row("GTK application without an entry",
            { .sandboxEntry = {}, .gtkApplicationId = u"org.example.None"_s, .instanceName = {}, .className = u"XTerm"_s, .program = {} },
            u"debian-xterm.desktop"_s);
        row("class", { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"xterm"_s, .className = u"XTerm"_s, .program = {} },
            u"debian-xterm.desktop"_s);
        row("class before instance",
            { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"XTerm"_s, .className = u"Viewer"_s, .program = {} },
            u"viewer.app.desktop"_s);
        row("instance", { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"XTerm"_s, .className = u"Unknown"_s, .program = {} },
            u"debian-xterm.desktop"_s);
        row("exactly before in any case", { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = {}, .className = u"shared"_s, .program = {} },
            u"app-two.desktop"_s);
        row("exact instance before class in any case",
            { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"Viewer"_s, .className = u"SHARED"_s, .program = {} },
            u"viewer.app.desktop"_s);
        row("class in any case", { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = {}, .className = u"SHARED"_s, .program = {} },
            u"app-one.desktop"_s);
        row("id equals instance",
            { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"galculator"_s, .className = u"Galculator"_s, .program = {} },
            u"galculator.desktop"_s);
        row("id equals class", { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"upper"_s, .className = u"Upper"_s, .program = {} },
            u"Upper.desktop"_s);
        row("reverse domain as class",
            { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = {}, .className = u"com.example.Player"_s, .program = {} },
            u"com.example.Player.desktop"_s);
        row("program", { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"main"_s, .className = u"Main"_s, .program = u"player"_s },
            u"com.example.Player.desktop"_s);
        row("program before class in lower case",
            { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"x"_s, .className = u"GALCULATOR"_s, .program = u"player"_s },
            u"com.example.Player.desktop"_s);
        row("class in lower case",
            { .sandboxEntry = {},
                .gtkApplicationId = {},
                .instanceName = u"galculator (/tmp/profile)"_s,
                .className = u"Galculator"_s,
                .program = {} },
            u"galculator.desktop"_s);
        row("the plainest command of several",
            { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = {}, .className = {}, .program = u"notes"_s }, u"notes-main.desktop"_s);
        row("a listed entry before one that menus do not show",
            { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = {}, .className = {}, .program = u"viewer"_s }, u"viewer.app.desktop"_s);
        row("nothing fits",
            { .sandboxEntry = {}, .gtkApplicationId = {}, .instanceName = u"xclock"_s, .className = u"XClock"_s, .program = u"xclock"_s }, u"none"_s);
        row("nothing is known", {}, u"none"_s);
    }
    void theRulesAreTriedInTheirOrder()
    {
        QFETCH(ApplicationTraits, traits);
        QTEST(match(traits), "id");
    }

    void theProgramOfACommandIsFound_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("program");
        const auto row = [](const char* name, const QString& words, const QString& program) {
            QTest::newRow(name) << words.split(u' ', Qt::SkipEmptyParts) << program;
        };
        row("path", u"/usr/bin/editor --new"_s, u"editor"_s);
        row("environment", u"env GDK_BACKEND=x11 safeeyes"_s, u"safeeyes"_s);
        row("environment with options", u"/usr/bin/env -i -u HOME A=b C=d /opt/x/run"_s, u"run"_s);
        row("interpreter", u"python3 /usr/bin/tool --x"_s, u"tool"_s);
        row("interpreter with its version", u"/usr/bin/python3.11 -u -O /usr/bin/tool"_s, u"tool"_s);
        row("environment and interpreter", u"/usr/bin/env python3 /usr/lib/app/main.py"_s, u"main.py"_s);
        row("module", u"python3 -m editor"_s, u"editor"_s);
        row("archive", u"java -Xmx1G -cp a.jar:b.jar -jar /opt/x/game.jar"_s, u"game.jar"_s);
        row("a command in a text", u"sh -c exec"_s, QString());
        row("an interpreter alone", u"python3"_s, QString());
        row("a launcher", u"/usr/bin/flatpak run --command=x org.example.App"_s, QString());
        row("nothing", QString(), QString());
        row("environment alone", u"env A=b"_s, QString());
        row("a name that ends in a number is no interpreter", u"/usr/bin/editor2"_s, u"editor2"_s);
        row("an assignment with a path before it is a program", u"env ./a=b"_s, u"a=b"_s);
    }
    void theProgramOfACommandIsFound()
    {
        QFETCH(QStringList, words);
        QTEST(programOfCommand(words), "program");
    }

    void buildsOfKnownBrowsersBearTheBrowsersOwnIdentifiers_data()
    {
        QTest::addColumn<QString>("desktopId");
        QTest::addColumn<QString>("identifier");
        const std::pair<const char*, const char*> rows[] {
            { "firefox.desktop", "org.mozilla.firefox" },
            { "firefox-esr.desktop", "org.mozilla.firefox" },
            { "org.mozilla.firefox.desktop", "org.mozilla.firefox" },
            { "firefox_firefox.desktop", "org.mozilla.firefox" },
            { "google-chrome.desktop", "com.google.Chrome" },
            { "chromium.desktop", "com.google.Chrome" },
            { "org.chromium.Chromium.desktop", "com.google.Chrome" },
            { "brave-browser.desktop", "com.brave.Browser" },
            { "microsoft-edge.desktop", "com.microsoft.edgemac" },
            { "app.zen_browser.zen.desktop", "app.zen-browser.zen" },
        };
        for (const auto& [desktopId, identifier] : rows)
            QTest::newRow(desktopId) << QString::fromLatin1(desktopId) << QString::fromLatin1(identifier);
    }
    void buildsOfKnownBrowsersBearTheBrowsersOwnIdentifiers()
    {
        QFETCH(QString, desktopId);
        QTEST(browserOfDesktopEntry(desktopId).value_or(QString()), "identifier");
    }

    void otherApplicationsAreNoBrowsers()
    {
        for (const QString& desktopId : { u"firefox"_s, u"Firefox.desktop"_s, u"firefox-game.desktop"_s, u"epiphany.desktop"_s, u""_s })
            QCOMPARE(browserOfDesktopEntry(desktopId), std::optional<QString>());
        QCOMPARE(browserOfWindowClass(u"Firefox"_s), std::optional(u"org.mozilla.firefox"_s));
        QCOMPARE(browserOfWindowClass(u"XTerm"_s), std::optional<QString>());
        QCOMPARE(browserOfWindowClass(u""_s), std::optional<QString>());
    }

    void aSandboxNamesItsDesktopEntry()
    {
        QCOMPARE(flatpakDesktopEntry("[Application]\nname=org.example.App\nruntime=x\n"), u"org.example.App.desktop"_s);
        QCOMPARE(flatpakDesktopEntry("[Instance]\nname=no\n\n[Application]\r\nname=org.example.App\r\n"), u"org.example.App.desktop"_s);
        QCOMPARE(flatpakDesktopEntry("[Runtime]\nname=org.example.Platform\n"), QString());
        QCOMPARE(flatpakDesktopEntry("[Application]\nname=\n"), QString());
        QCOMPARE(flatpakDesktopEntry(""), QString());
        QCOMPARE(snapDesktopEntry("snap.firefox.firefox (enforce)\n"), u"firefox_firefox.desktop"_s);
        QCOMPARE(snapDesktopEntry("snap.suite.writer"), u"suite_writer.desktop"_s);
        for (const char* label : { "unconfined\n", "", "snap.", "snap..x", "snap.x.hook.configure (enforce)", "docker-default (enforce)" })
            QCOMPARE(snapDesktopEntry(label), QString());
    }

    void aProcessTellsWhatItRuns()
    {
        const QTemporaryDir proc;
        const auto make = [&proc](pid_t process, const QString& executable, const QByteArray& commandLine) {
            const QString folder = proc.filePath(QString::number(process));
            return write(folder + u"/cmdline"_s, commandLine) && QFile::link(executable, folder + u"/exe"_s);
        };
        QVERIFY(make(1, u"/usr/bin/editor"_s, QByteArray("anything\0--new\0", 15)));
        QVERIFY(make(2, u"/usr/bin/python3.11"_s, QByteArray("/usr/bin/python3\0/usr/bin/safeeyes\0", 35)));
        QVERIFY(make(3, u"/usr/bin/editor (deleted)"_s, "editor"));
        QVERIFY(make(4, u"/usr/bin/bash"_s, QByteArray("bash\0", 5)));
        QVERIFY(make(5, u"/app/bin/player"_s, QByteArray("player\0", 7)));
        QVERIFY(write(proc.filePath(u"5/root/.flatpak-info"_s), "[Application]\nname=org.example.Player\n"));
        QVERIFY(make(6, u"/snap/suite/12/writer"_s, QByteArray("writer\0", 7)));
        QVERIFY(write(proc.filePath(u"6/attr/current"_s), "snap.suite.writer (enforce)\n"));
        QVERIFY(make(7, u"/usr/bin/huge"_s, QByteArray(1 << 20, 'x')));

        const auto read = [&proc](pid_t process) { return readProcessTraits(process, proc.path().toStdString()); };
        QCOMPARE(read(1), (ProcessTraits { .sandboxEntry = {}, .program = u"editor"_s }));
        QCOMPARE(read(2), (ProcessTraits { .sandboxEntry = {}, .program = u"safeeyes"_s }));
        QCOMPARE(read(3), (ProcessTraits { .sandboxEntry = {}, .program = u"editor"_s }));
        QCOMPARE(read(4), ProcessTraits());
        QCOMPARE(read(5), (ProcessTraits { .sandboxEntry = u"org.example.Player.desktop"_s, .program = u"player"_s }));
        QCOMPARE(read(6), (ProcessTraits { .sandboxEntry = u"suite_writer.desktop"_s, .program = u"writer"_s }));
        QCOMPARE(read(7), (ProcessTraits { .sandboxEntry = {}, .program = u"huge"_s }));
        for (const pid_t absent : { 99, 0, -1 })
            QCOMPARE(read(absent), ProcessTraits());
    }

    void thisProcessTellsWhatItRuns()
    {
        QCOMPARE(readProcessTraits(::getpid()).program, QFileInfo(QCoreApplication::applicationFilePath()).fileName());
    }

    void aWindowIsIdentifiedAndRememberedUntilItSaysSomethingElse()
    {
        const QTemporaryDir folder;
        QVERIFY(write(
            folder.filePath(u"applications/firefox-esr.desktop"_s), "[Desktop Entry]\nType=Application\nName=Firefox ESR\nExec=firefox-esr %u\n"));
        QVERIFY(write(
            folder.filePath(u"applications/clock.desktop"_s), "[Desktop Entry]\nType=Application\nName=Clock\nExec=clock\nStartupWMClass=Clock\n"));
        ApplicationIdentity identity({ .process = 4711, .identifier = u"own.desktop"_s, .name = u"Own"_s },
            DesktopEntryIndex({ folder.filePath(u"applications"_s).toStdString() }), folder.path().toStdString());
        using Application = ApplicationIdentity::Application;

        X11Window window;
        window.id = 1;
        window.instanceName = "clock";
        window.className = "Clock";
        identity.refresh();
        QCOMPARE(identity.of(window), (Application { .identifier = u"clock.desktop"_s, .name = u"Clock"_s }));
        window.className = "firefox-esr";
        window.instanceName = "Navigator";
        QCOMPARE(identity.of(window), (Application { .identifier = u"org.mozilla.firefox"_s, .name = u"Firefox ESR"_s }));
        window.className = "XClock";
        QCOMPARE(identity.of(window), (Application { .identifier = std::nullopt, .name = u"XClock"_s }));
        window.className.clear();
        window.instanceName.clear();
        QCOMPARE(identity.of(window), Application());

        // Our own windows are known whatever they say of themselves.
        window.process = 4711;
        QCOMPARE(identity.of(window), (Application { .identifier = u"own.desktop"_s, .name = u"Own"_s }));
    }

    void windowsOfWaylandAreForgottenWhenOthersAreIdentified()
    {
        const QTemporaryDir proc;
        const QString executable = proc.filePath(u"1/exe"_s);
        QVERIFY(write(proc.filePath(u"1/cmdline"_s), "any") && QFile::link(u"/usr/bin/editor"_s, executable));
        ApplicationIdentity identity({}, DesktopEntryIndex({ proc.filePath(u"applications"_s).toStdString() }), proc.path().toStdString());
        DesktopWindow first;
        first.number = 1;
        first.traits.process = 1;
        DesktopWindow second;
        second.number = 2;
        second.traits.className = "Clock";
        const auto named
            = [](const char* name) { return ApplicationIdentity::Application { .identifier = std::nullopt, .name = QString::fromLatin1(name) }; };
        using Applications = std::vector<ApplicationIdentity::Application>;

        QCOMPARE(applicationsOf(identity, std::array { first, second }), (Applications { named("editor"), named("Clock") }));
        QVERIFY(QFile::remove(executable) && QFile::link(u"/usr/bin/player"_s, executable));
        QCOMPARE(applicationsOf(identity, std::array { first }), Applications { named("editor") });
        QCOMPARE(applicationsOf(identity, std::array { second }), Applications { named("Clock") });
        QCOMPARE(applicationsOf(identity, std::array { first }), Applications { named("player") });
    }

    void anApplicationThatIsInstalledLaterIsNoticed()
    {
        const QTemporaryDir folder;
        ApplicationIdentity identity({}, DesktopEntryIndex({ folder.filePath(u"applications"_s).toStdString() }), folder.path().toStdString());
        X11Window window;
        window.id = 1;
        window.className = "Late";
        identity.refresh();
        QCOMPARE(identity.of(window).identifier, std::optional<QString>());
        QVERIFY(write(folder.filePath(u"applications/late.desktop"_s), "[Desktop Entry]\nType=Application\nName=Late\nExec=late\n"));
        identity.refresh();
        QCOMPARE(identity.of(window).identifier, std::optional(u"late.desktop"_s));
    }
};

QTEST_GUILESS_MAIN(TestApplicationIdentity)
#include "test_application_identity.moc"
