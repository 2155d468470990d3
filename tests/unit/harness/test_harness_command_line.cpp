#include "harness/command_line.h"

#include "harness/doctor.h"
#include "harness/harness_hook_installer.h"
#include "harness/hook_commands.h"
#include "support/fake_file_system.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

const QString home = u"/home/ann"_s;

FakeFileSystem withAgents(const QStringList& agents)
{
    FakeFileSystem files;
    files.folders = { u"/home"_s, home };
    for (const QString& agent : agents)
        files.folders.insert(home + u"/."_s + agent);
    return files;
}

template <typename Command>
std::optional<Command> parsed(const QStringList& arguments)
{
    const auto command = parseHarnessCommand(arguments, u"1"_s);
    const auto* found = command ? std::get_if<Command>(&*command) : nullptr;
    return found ? std::optional(*found) : std::nullopt;
}

} // namespace

class TestHarnessCommandLine : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void commandsAreUnderstood()
    {
        QCOMPARE(parsed<StatusCommand>({ u"status"_s })->form, StatusCommand::Form::text);
        QCOMPARE(parsed<StatusCommand>({ u"status"_s, u"--json"_s })->form, StatusCommand::Form::json);
        QCOMPARE(parsed<InstallCommand>({ u"install"_s, u"codex"_s })->agents, std::vector { AIHarness::codex });
        QCOMPARE(parsed<InstallCommand>({ u"install"_s, u"all"_s })->agents, (std::vector { AIHarness::codex, AIHarness::claude }));
        QCOMPARE(parsed<UninstallCommand>({ u"uninstall"_s, u"claude"_s })->agents, std::vector { AIHarness::claude });
        QVERIFY(parsed<RunCommand>({ u"run"_s }));
        QVERIFY(parsed<DoctorCommand>({ u"doctor"_s }));
        QCOMPARE(parsed<PrintCommand>({ u"--version"_s })->text, u"orvanta-harness 1\n"_s);
        QCOMPARE(parsed<PrintCommand>({ u"run"_s, u"--help"_s })->text, harnessHelp());
    }

    void everythingElseIsAnErrorThatSaysWhy_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");
        QTest::newRow("nothing") << QStringList() << u"a command is missing"_s;
        QTest::newRow("unknown") << QStringList { u"remove"_s } << u"there is no command \"remove\""_s;
        QTest::newRow("no agent") << QStringList { u"install"_s } << u"install must be followed by codex, claude or all"_s;
        QTest::newRow("another agent") << QStringList { u"uninstall"_s, u"Codex"_s } << u"uninstall must be followed by codex, claude or all"_s;
        QTest::newRow("two agents") << QStringList { u"install"_s, u"codex"_s, u"claude"_s } << u"install must be followed by codex, claude or all"_s;
        QTest::newRow("too much") << QStringList { u"run"_s, u"now"_s } << u"run takes no \"now\""_s;
        QTest::newRow("another form") << QStringList { u"status"_s, u"--xml"_s } << u"status takes no \"--xml\""_s;
    }

    void everythingElseIsAnErrorThatSaysWhy()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const QString, error);
        const auto command = parseHarnessCommand(arguments, u"1"_s);
        QVERIFY(!command);
        QCOMPARE(command.error(), error);
    }

    void statusIsToldForPeopleAndForScripts()
    {
        FakeFileSystem files = withAgents({ u"claude"_s });
        Output output;
        QCOMPARE(runStatus({}, home, files, output), HarnessExit::ok);
        QCOMPARE(output.out, u"codex   unavailable\nclaude  notInstalled\n"_s);
        Output json;
        QVERIFY(HarnessHookInstaller(home, files).install(AIHarness::claude));
        QCOMPARE(runStatus({ StatusCommand::Form::json }, home, files, json), HarnessExit::ok);
        QCOMPARE(json.out, u"{\"codex\":\"unavailable\",\"claude\":\"installed\"}\n"_s);
    }

    void installingAllLeavesUnavailableAgentsAlone()
    {
        FakeFileSystem files = withAgents({ u"claude"_s });
        Output output;
        QCOMPARE(runInstall({ { AIHarness::codex, AIHarness::claude }, true }, home, files, output), HarnessExit::ok);
        QCOMPARE(output.out, u"codex is not set up for you: there is no /home/ann/.codex\nclaude: installed in /home/ann/.claude/settings.json\n"_s);
        QCOMPARE(output.err, QString());
        QVERIFY(!files.exists(home + u"/.codex"_s));
    }

    void installingForAnAgentThatIsNotThereFailsAndMakesNothing()
    {
        FakeFileSystem files = withAgents({});
        for (const bool isAll : { false, true }) {
            Output output;
            QCOMPARE(runInstall({ { AIHarness::codex }, isAll }, home, files, output), HarnessExit::failed);
            QVERIFY(!output.err.isEmpty());
        }
        QVERIFY(files.files.empty());
        QCOMPARE(files.folders.size(), std::size_t { 2 });
    }

    void whatGoesWrongForOneAgentIsToldAndTheOtherIsInstalled()
    {
        FakeFileSystem files = withAgents({ u"claude"_s, u"codex"_s });
        files.files[home + u"/.codex/hooks.json"_s].content = "[]";
        Output output;
        QCOMPARE(runInstall({ { AIHarness::codex, AIHarness::claude }, true }, home, files, output), HarnessExit::failed);
        QCOMPARE(output.err, u"orvanta-harness: /home/ann/.codex/hooks.json is not a JSON object; it was left as it is\n"_s);
        QCOMPARE(output.out, u"claude: installed in /home/ann/.claude/settings.json\n"_s);
    }

    void uninstallingSaysWhatItDid()
    {
        FakeFileSystem files = withAgents({ u"claude"_s, u"codex"_s });
        files.files[home + u"/.claude/settings.json"_s].content = "{}";
        QVERIFY(HarnessHookInstaller(home, files).install(AIHarness::claude));
        Output output;
        QCOMPARE(runUninstall({ { AIHarness::codex, AIHarness::claude } }, home, files, output), HarnessExit::ok);
        QCOMPARE(output.out,
            u"codex: nothing of ours is in /home/ann/.codex/hooks.json\nclaude: /home/ann/.claude/settings.json is what it was before\n"
            "The script stays, since agents that are running go on calling it: "
            "/home/ann/Library/Application Support/Orvanta Focus/Hooks/orvanta-session-hook.sh\n"_s);
    }

    void theDoctorsNoteIsReadAsItWasWritten()
    {
        for (const DoctorNote& note :
            { DoctorNote { u"e"_s, std::nullopt }, DoctorNote { u"e"_s, QString() }, DoctorNote { u"\u00e4"_s, u"why \"not\""_s } })
            QCOMPARE(decodeDoctorNote(encodeDoctorNote(note)), std::optional(note));
        QVERIFY(!decodeDoctorNote("{"));
        QVERIFY(!decodeDoctorNote("{}"));
    }

    void theDoctorNamesTheFirstBrokenLink()
    {
        FakeFileSystem files = withAgents({ u"claude"_s });
        DoctorSettings settings { .home = home, .runtimeFolder = u"/run"_s, .port = 0, .curl = u"/usr/bin/curl"_s };
        Output none;
        QCOMPARE(runDoctor(settings, files, none), HarnessExit::failed);
        QCOMPARE(none.err, u"orvanta-harness: no agent has the hook; orvanta-harness install all installs it\n"_s);

        files.files[home + u"/.claude/settings.json"_s].content = "{}";
        Output repair;
        QCOMPARE(runDoctor(settings, files, repair), HarnessExit::failed);
        QCOMPARE(repair.err, u"orvanta-harness: claude: the hook needs repair; orvanta-harness install claude does it\n"_s);

        QVERIFY(HarnessHookInstaller(home, files).install(AIHarness::claude));
        Output curl;
        QCOMPARE(runDoctor(settings, files, curl), HarnessExit::failed);
        QCOMPARE(curl.out, u"claude: the hook is installed\n"_s);
        QCOMPARE(curl.err, u"orvanta-harness: claude: the hook script needs /usr/bin/curl, which is not there\n"_s);
    }
};

QTEST_GUILESS_MAIN(TestHarnessCommandLine)
#include "test_harness_command_line.moc"
