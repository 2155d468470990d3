#include "harness/harness_hook_remover.h"

#include "generated_json.h"
#include "harness/hook_configuration.h"
#include "harness/hook_script.h"
#include "platform/portable/posix_file_system.h"
#include "support/fake_file_system.h"
#include "support/file_edits.h"
#include "support/limited_rights.h"

#include <QTemporaryDir>
#include <QTest>

#include <tuple>

#include <sys/stat.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

const QString home = u"/home/ann"_s;
const QDateTime now(QDate(2026, 1, 31), QTime(8, 5, 9), Qt::UTC);

using Outcome = HarnessHookRemover::Outcome;

/// A home folder in memory in which both agents are set up.
struct Home {
    FakeFileSystem files;
    HarnessHookInstaller installer { home, files };
    HarnessHookRemover remover { home, files };

    Home() { files.folders = { u"/home"_s, home, home + u"/.codex"_s, home + u"/.claude"_s }; }

    QByteArray& content(AIHarness agent) { return files.files[installer.paths().configuration(agent)].content; }
    [[nodiscard]] QString copyOf(AIHarness agent) const { return installer.paths().configuration(agent) + u".before-orvanta-20260131T080509Z"_s; }
};

/// A real one.
struct RealHome {
    QTemporaryDir folder;
    PosixFileSystem files;
    HarnessHookInstaller installer { folder.path(), files };
    HarnessHookRemover remover { folder.path(), files };
    QString configuration = installer.paths().configuration(AIHarness::claude);

    RealHome() { QDir(folder.path()).mkdir(u".claude"_s); }
};

mode_t modeOf(const QString& path)
{
    struct stat facts {};
    return ::stat(QFile::encodeName(path).constData(), &facts) == 0 ? facts.st_mode & 07777 : 0;
}

JsonNode parsed(const QByteArray& content)
{
    return parseJsonObject(content.toStdString()).value_or(JsonNode());
}

/// Whether a registered event has a group that is no object.
bool hasOddGroups(const JsonNode& root)
{
    const JsonNode* hooks = root.find("hooks");
    return hooks && std::ranges::any_of(registeredEvents, [hooks](std::string_view event) {
        const JsonNode* groups = hooks->find(event);
        return groups && !std::ranges::all_of(groups->elements, &JsonNode::isObject);
    });
}

} // namespace

class TestHarnessHookInstaller : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everythingStandsAtItsPlace()
    {
        const HarnessPaths paths { home };
        QCOMPARE(paths.hookFolder(), u"/home/ann/Library/Application Support/Orvanta Focus/Hooks"_s);
        QCOMPARE(paths.hookScript(), u"/home/ann/Library/Application Support/Orvanta Focus/Hooks/orvanta-session-hook.sh"_s);
        QCOMPARE(paths.agentFolder(AIHarness::codex), u"/home/ann/.codex"_s);
        QCOMPARE(paths.agentFolder(AIHarness::claude), u"/home/ann/.claude"_s);
        QCOMPARE(paths.configuration(AIHarness::codex), u"/home/ann/.codex/hooks.json"_s);
        QCOMPARE(paths.configuration(AIHarness::claude), u"/home/ann/.claude/settings.json"_s);
    }

    void anAgentWithoutItsFolderIsUnavailable()
    {
        Home h;
        h.files.folders.erase(home + u"/.codex"_s);
        QCOMPARE(h.installer.status(AIHarness::codex), HarnessHookStatus::unavailable);
    }

    void anAgentWithoutAConfigurationIsNotInstalledAndThenIs()
    {
        for (const AIHarness agent : allHarnesses) {
            Home h;
            QCOMPARE(h.installer.status(agent), HarnessHookStatus::notInstalled);
            QVERIFY(h.installer.install(agent, now));
            QCOMPARE(h.installer.status(agent), HarnessHookStatus::installed);
        }
    }

    void installingGoesStepByStep()
    {
        Home h;
        h.content(AIHarness::claude) = "{}";
        h.files.log.take();
        QVERIFY(h.installer.install(AIHarness::claude, now));
        const QString script = h.installer.paths().hookScript();
        const QString configuration = h.installer.paths().configuration(AIHarness::claude);
        QCOMPARE(h.files.log.take(),
            (QStringList { u"createDirectories "_s + h.installer.paths().hookFolder(), u"writeAtomically "_s + script,
                u"setPermissions %1 0755"_s.arg(script), u"read "_s + configuration, u"replace "_s + h.copyOf(AIHarness::claude),
                u"replace "_s + configuration }));
        QCOMPARE(h.files.files[script].content, hookScript());
    }

    void theConfigurationIsWrittenForPeopleWithItsKeysSorted()
    {
        Home h;
        h.content(AIHarness::claude) = "{\"z\":1.0,\"a\":[1e400,12345678901234567890],\"hooks\":{\"Notification\":[]}}";
        QVERIFY(h.installer.install(AIHarness::claude, now));
        const QByteArray group = "[\n      {\n        \"hooks\": [\n          {\n            \"async\": true,\n            \"command\": \""
                                 "/bin/sh '/home/ann/Library/Application Support/Orvanta Focus/Hooks/orvanta-session-hook.sh' claude\",\n"
                                 "            \"type\": \"command\"\n          }\n        ]\n      }\n    ]";
        QCOMPARE(h.content(AIHarness::claude),
            "{\n  \"a\": [\n    1e400,\n    12345678901234567890\n  ],\n  \"hooks\": {\n    \"Notification\": [],\n    \"SessionStart\": " + group
                + ",\n    \"Stop\": " + group + ",\n    \"UserPromptSubmit\": " + group + "\n  },\n  \"z\": 1.0\n}\n");
    }

    void aScriptThatDiffersByAByteNeedsRepairAndGetsIt()
    {
        Home h;
        QVERIFY(h.installer.install(AIHarness::codex, now));
        QByteArray& script = h.files.files[h.installer.paths().hookScript()].content;
        for (const QByteArray& broken : { hookScript() + "\n", hookScript().chopped(1), QByteArray() }) {
            script = broken;
            QCOMPARE(h.installer.status(AIHarness::codex), HarnessHookStatus::needsRepair);
            QVERIFY(h.installer.install(AIHarness::codex, now));
            QCOMPARE(h.installer.status(AIHarness::codex), HarnessHookStatus::installed);
        }
        h.files.files.erase(h.installer.paths().hookScript());
        QCOMPARE(h.installer.status(AIHarness::codex), HarnessHookStatus::needsRepair);
    }

    void aConfigurationThatIsAmissNeedsRepair_data()
    {
        QTest::addColumn<QByteArray>("content");
        for (const char* content : { "", "{", "[]", "{}", "{\"hooks\":[]}", "{\"hooks\":{}}" })
            QTest::newRow(content) << QByteArray(content);
    }

    void aConfigurationThatIsAmissNeedsRepair()
    {
        QFETCH(const QByteArray, content);
        Home h;
        QVERIFY(h.installer.install(AIHarness::codex, now));
        h.content(AIHarness::codex) = content;
        QCOMPARE(h.installer.status(AIHarness::codex), HarnessHookStatus::needsRepair);
    }

    void installingTwiceIsInstallingOnce()
    {
        Home h;
        h.content(AIHarness::claude) = "{ \"model\" : \"x\" }";
        QVERIFY(h.installer.install(AIHarness::claude, now));
        const QByteArray once = h.content(AIHarness::claude);
        QVERIFY(h.installer.install(AIHarness::claude, now));
        QCOMPARE(h.content(AIHarness::claude), once);
        QCOMPARE(keptCopies(h.files, h.installer.paths().configuration(AIHarness::claude)).size(), 1);
    }

    void theConfigurationBeforeTheFirstChangeIsKeptBesideIt()
    {
        Home h;
        const QByteArray before = "{ \"model\" :\t\"x\" }";
        h.content(AIHarness::claude) = before;
        QVERIFY(h.installer.install(AIHarness::claude, now));
        QCOMPARE(h.files.files[h.copyOf(AIHarness::claude)].content, before);
    }

    void aSecondCopyOfTheSameSecondGetsANameOfItsOwn()
    {
        Home h;
        h.content(AIHarness::claude) = "{\"a\":1}";
        QVERIFY(h.installer.install(AIHarness::claude, now));
        h.content(AIHarness::claude) = "{\"a\":2}";
        QVERIFY(h.installer.install(AIHarness::claude, now));
        QCOMPARE(h.files.files[h.copyOf(AIHarness::claude)].content, "{\"a\":1}"_ba);
        QCOMPARE(h.files.files[h.copyOf(AIHarness::claude) + u"-2"_s].content, "{\"a\":2}"_ba);
    }

    void whatCannotBeUnderstoodIsAClearErrorAndStays_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty") << QByteArray("") << u"is empty"_s;
        QTest::newRow("comment") << QByteArray("{\n// mine\n}") << u"line 2"_s;
        QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF{}") << u"byte order mark"_s;
        QTest::newRow("array") << QByteArray("[]") << u"is not a JSON object"_s;
        QTest::newRow("key twice") << QByteArray("{\"a\":1,\"a\":2}") << u"twice"_s;
        QTest::newRow("too deep") << "{\"a\":" + QByteArray(600, '[') + QByteArray(600, ']') + "}" << u"nested"_s;
        QTest::newRow("hooks of another form") << QByteArray("{\"hooks\":\"none\"}") << u"no object"_s;
    }

    void whatCannotBeUnderstoodIsAClearErrorAndStays()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const QString, reason);
        Home h;
        h.content(AIHarness::claude) = content;
        const auto result = h.installer.install(AIHarness::claude, now);
        QVERIFY(!result);
        QVERIFY2(result.error().description.startsWith(h.installer.paths().configuration(AIHarness::claude) + u' '),
            qUtf8Printable(result.error().description));
        QVERIFY2(result.error().description.contains(reason), qUtf8Printable(result.error().description));
        QCOMPARE(h.content(AIHarness::claude), content);
        QVERIFY(keptCopies(h.files, h.installer.paths().configuration(AIHarness::claude)).isEmpty());
    }

    void whatSomebodyElseWritesBetweenReadingAndWritingIsNotLost()
    {
        Home h;
        h.content(AIHarness::claude) = "{\"a\":1}";
        const QByteArray theirs = "{\"b\":2}";
        h.files.beforeReplacing = [&h, &theirs] { h.content(AIHarness::claude) = theirs; };
        QVERIFY(h.installer.install(AIHarness::claude, now));
        const JsonNode root = parsed(h.content(AIHarness::claude));
        QVERIFY(root.find("b"));
        QVERIFY(!root.find("a"));
        QCOMPARE(h.installer.status(AIHarness::claude), HarnessHookStatus::installed);
        QCOMPARE(h.files.files[h.copyOf(AIHarness::claude) + u"-2"_s].content, theirs);
    }

    void somebodyWhoNeverStopsWritingIsNamedAndNothingIsLost()
    {
        Home h;
        int number = 0;
        h.content(AIHarness::codex) = "{\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"orvanta-session-hook.sh\"}]}]},\"n\":0}";
        std::function<void()> write = [&] {
            h.content(AIHarness::codex).replace("\"n\":" + QByteArray::number(number), "\"n\":" + QByteArray::number(number + 1));
            ++number;
            h.files.beforeReplacing = write;
        };
        h.files.beforeReplacing = write;
        const auto result = h.installer.install(AIHarness::codex, now);
        QVERIFY(!result);
        QVERIFY(result.error().description.contains(u"is being changed by another program"_s));
        QVERIFY(h.content(AIHarness::codex).contains("\"n\":" + QByteArray::number(number)));
    }

    void aDiskThatRefusesIsAnErrorWithTheFilesName_data()
    {
        QTest::addColumn<QString>("path");
        const HarnessPaths paths { home };
        QTest::newRow("hook folder") << paths.hookFolder();
        QTest::newRow("script") << paths.hookScript();
        QTest::newRow("copy") << paths.configuration(AIHarness::claude) + u".before-orvanta-20260131T080509Z"_s;
        QTest::newRow("configuration") << paths.configuration(AIHarness::claude);
    }

    void aDiskThatRefusesIsAnErrorWithTheFilesName()
    {
        QFETCH(const QString, path);
        Home h;
        h.content(AIHarness::claude) = "{}";
        h.files.failing[path] = u"cannot be written (No space left on device)"_s;
        const auto result = h.installer.install(AIHarness::claude, now);
        QVERIFY(!result);
        QCOMPARE(result.error().description, path + u" cannot be written (No space left on device)"_s);
        QCOMPARE(h.content(AIHarness::claude), "{}"_ba);
    }

    void whatIsNotOursStaysAndUninstallingRestoresEveryByteOverThousandsOfConfigurations()
    {
        const std::string other = "{ \"hooks\" : [ {\"command\":\"mine\",\"timeout\":1e400} ] , \"matcher\":\"*\"}";
        const std::vector<std::string> groups { "[]", "[" + other + "]", "[{},7," + other + "," + other + "]", "[{\"hooks\":3},null]", "[[]]" };
        for (unsigned seed = 0; seed < 3000; ++seed) {
            GeneratedJson generated(seed);
            std::vector<std::string> members;
            if (generated.number(3) > 0) {
                std::vector<std::string> events;
                for (const char* event : { "SessionStart", "UserPromptSubmit", "Stop", "PreToolUse" }) {
                    if (generated.number(2) > 0)
                        events.push_back("\"" + std::string(event) + "\":" + generated.pick(groups));
                }
                members.push_back("\"hooks\":" + generated.object(2, events));
            }
            const bool isThere = seed % 10 != 0; // with none, what stands there is what an empty one holds
            const QByteArray before
                = isThere ? QByteArray::fromStdString(generated.space() + generated.object(4, members) + generated.space()) : "{}"_ba;
            const AIHarness agent = generated.pick(std::vector { AIHarness::codex, AIHarness::claude });

            Home h;
            if (isThere)
                h.content(agent) = before;
            QVERIFY2(h.installer.install(agent, now), before.constData());
            // Among groups that are no objects an agent would not look for ours, so that this is not called intact.
            QCOMPARE(h.installer.status(agent), hasOddGroups(parsed(before)) ? HarnessHookStatus::needsRepair : HarnessHookStatus::installed);
            const QByteArray once = h.content(agent);

            // What is left without ours is what was there, spelling for spelling; only emptied places are not told from absent ones.
            JsonNode ours = parsed(once);
            removeRegistrations(ours);
            JsonNode theirs = parsed(before);
            if (JsonNode* hooks = theirs.find("hooks")) {
                std::erase_if(hooks->members, [](const JsonNode& event) {
                    return event.isArray() && event.elements.empty()
                        && std::ranges::any_of(registeredEvents, [&](std::string_view name) { return spellsText(event.key, name); });
                });
                if (hooks->members.empty())
                    theirs.remove("hooks");
            }
            QCOMPARE(prettyJson(ours, JsonOrder::sorted), prettyJson(theirs, JsonOrder::sorted));

            QVERIFY(h.installer.install(agent, now));
            QCOMPARE(h.content(agent), once);

            QCOMPARE(h.remover.uninstall(agent), Result<Outcome>(Outcome::restored));
            QCOMPARE(h.files.exists(h.installer.paths().configuration(agent)), isThere);
            if (isThere)
                QCOMPARE(h.content(agent), before);
            else
                QCOMPARE(h.installer.status(agent), HarnessHookStatus::notInstalled);
        }
    }

    void uninstallingAfterOtherChangesTakesOursAloneAndKeepsTheOrder()
    {
        Home h;
        h.content(AIHarness::claude) = "{\"model\":\"x\"}";
        QVERIFY(h.installer.install(AIHarness::claude, now));
        QByteArray& content = h.content(AIHarness::claude);
        content.replace("\"model\": \"x\"", "\"model\": \"y\", \"added\": 1.0");
        QCOMPARE(h.remover.uninstall(AIHarness::claude), Result<Outcome>(Outcome::removed));
        QCOMPARE(content, "{\n  \"model\": \"y\",\n  \"added\": 1.0\n}\n"_ba);
        QCOMPARE(h.remover.uninstall(AIHarness::claude), Result<Outcome>(Outcome::nothingToRemove));
    }

    void aKeptCopyThatHoldsOursIsNotBroughtBack()
    {
        Home h;
        h.content(AIHarness::claude) = "{\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"/old/orvanta-session-hook.sh claude\"}]}]}}";
        QVERIFY(h.installer.install(AIHarness::claude, now));
        QCOMPARE(h.remover.uninstall(AIHarness::claude), Result<Outcome>(Outcome::removed));
        QCOMPARE(h.content(AIHarness::claude), "{}\n"_ba);
    }

    void whatSomebodyPutIntoAFileThatWeMadeStays()
    {
        Home h;
        QVERIFY(h.installer.install(AIHarness::claude, now));
        h.files.beforeReplacing = [&h] {
            QByteArray& content = h.content(AIHarness::claude);
            content.replace(0, 1, "{\n  \"model\": \"x\",");
        };
        QCOMPARE(h.remover.uninstall(AIHarness::claude), Result<Outcome>(Outcome::removed));
        QCOMPARE(h.content(AIHarness::claude), "{\n  \"model\": \"x\"\n}\n"_ba);
    }

    void aFileThatWeMadeGoesFromTheDiskAndALinkToItStays()
    {
        RealHome h;
        QVERIFY(h.installer.install(AIHarness::claude, now));
        QCOMPARE(h.remover.uninstall(AIHarness::claude), Result<Outcome>(Outcome::restored));
        QCOMPARE(namesIn(h.folder.filePath(u".claude"_s)), QStringList());

        QVERIFY(QFile::link(u"../dotfiles.json"_s, h.configuration));
        QVERIFY(h.installer.install(AIHarness::claude, now));
        QCOMPARE(h.remover.uninstall(AIHarness::claude), Result<Outcome>(Outcome::restored));
        QVERIFY(QFileInfo(h.configuration).isSymLink());
        QCOMPARE(h.installer.status(AIHarness::claude), HarnessHookStatus::notInstalled);
        QCOMPARE(namesIn(h.folder.path()), (QStringList { u".claude"_s, u"Library"_s }));
    }

    void uninstallingWithoutAConfigurationHasNothingToDo()
    {
        Home h;
        QCOMPARE(h.remover.uninstall(AIHarness::codex), Result<Outcome>(Outcome::nothingToRemove));
        h.content(AIHarness::codex) = "{ \"a\" : 1 }";
        QCOMPARE(h.remover.uninstall(AIHarness::codex), Result<Outcome>(Outcome::nothingToRemove));
        QCOMPARE(h.content(AIHarness::codex), "{ \"a\" : 1 }"_ba);
    }

    // On a real disk.

    void aScriptCanBeRunByItsOwnerAndReadByAll()
    {
        RealHome h;
        QVERIFY(h.installer.install(AIHarness::claude, now));
        QCOMPARE(contentOf(h.installer.paths().hookScript()), hookScript());
        QCOMPARE(modeOf(h.installer.paths().hookScript()), mode_t { 0755 });
        QCOMPARE(h.installer.status(AIHarness::claude), HarnessHookStatus::installed);
    }

    void aConfigurationBehindALinkKeepsTheLinkTheModeAndTheOwner()
    {
        RealHome h;
        const QString target = h.folder.filePath(u"dotfiles.json"_s);
        QVERIFY(writeInPlace(target, "{\"a\":1}"));
        QVERIFY(QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
        QVERIFY(OrdinaryUser::owns(target));
        struct stat before {};
        QCOMPARE(::stat(QFile::encodeName(target).constData(), &before), 0);
        QVERIFY(QFile::link(u"../dotfiles.json"_s, h.configuration));

        QVERIFY(h.installer.install(AIHarness::claude, now));
        QVERIFY(QFileInfo(h.configuration).isSymLink());
        QVERIFY(!QFileInfo(target).isSymLink());
        QVERIFY(contentOf(target).contains("orvanta-session-hook.sh"));
        struct stat after {};
        QCOMPARE(::stat(QFile::encodeName(target).constData(), &after), 0);
        QCOMPARE(after.st_mode, before.st_mode);
        QCOMPARE(after.st_uid, before.st_uid);
        QCOMPARE(after.st_gid, before.st_gid);
        QCOMPARE(namesIn(h.folder.path()), (QStringList { u".claude"_s, u"Library"_s, u"dotfiles.json"_s }));
        QCOMPARE(modeOf(h.configuration + u".before-orvanta-20260131T080509Z"_s), mode_t { 0600 });
    }

    void aFullDiskLeavesTheOldFileWhole()
    {
        RealHome h;
        std::ignore = h.installer.install(AIHarness::codex, now); // that agent is not there, but the script is now
        const QByteArray before = "{\"a\":\"" + QByteArray(10'000, 'x') + "\"}";
        QVERIFY(writeInPlace(h.configuration, before));
        {
            const FullDisk disk(4096);
            const auto result = h.installer.install(AIHarness::claude, now);
            QVERIFY(!result);
            QVERIFY2(result.error().description.contains(u"cannot be written"_s), qUtf8Printable(result.error().description));
        }
        QCOMPARE(contentOf(h.configuration), before);
        QCOMPARE(namesIn(h.folder.filePath(u".claude"_s)), QStringList { u"settings.json"_s });
    }

    void aFolderThatCannotBeWrittenLeavesTheOldFileWhole()
    {
        RealHome h;
        const QByteArray before = "{\"a\":1}";
        QVERIFY(writeInPlace(h.configuration, before));
        const QString agentFolder = h.folder.filePath(u".claude"_s);
        std::ignore = h.installer.install(AIHarness::codex, now); // that agent is not there, but the script is now
        for (const QString& path : { h.folder.path(), h.folder.filePath(u"Library"_s), h.folder.filePath(u"Library/Application Support"_s),
                 h.folder.filePath(u"Library/Application Support/Orvanta Focus"_s), h.installer.paths().hookFolder(),
                 h.installer.paths().hookScript(), agentFolder, h.configuration })
            QVERIFY(OrdinaryUser::owns(path));
        QVERIFY(QFile::setPermissions(agentFolder, QFile::ReadOwner | QFile::ExeOwner));
        {
            const OrdinaryUser user;
            QVERIFY(!h.installer.install(AIHarness::claude, now));
        }
        QCOMPARE(contentOf(h.configuration), before);
        QVERIFY(QFile::setPermissions(agentFolder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    void aWriteProtectedConfigurationStays()
    {
        RealHome h;
        QVERIFY(writeInPlace(h.configuration, "{}"));
        QVERIFY(QFile::setPermissions(h.configuration, QFile::ReadOwner));
        const auto result = h.installer.install(AIHarness::claude, now);
        QVERIFY(!result);
        QCOMPARE(result.error().description, h.configuration + u" is write-protected"_s);
        QCOMPARE(contentOf(h.configuration), "{}"_ba);
    }

    void aConfigurationThatIsNoFileIsAnErrorAndNeverWaitedFor()
    {
        RealHome h;
        QCOMPARE(::mkfifo(QFile::encodeName(h.configuration).constData(), 0600), 0);
        const auto result = h.installer.install(AIHarness::claude, now);
        QVERIFY(!result);
        QCOMPARE(result.error().description, h.configuration + u" is not a regular file"_s);
        QCOMPARE(h.installer.status(AIHarness::claude), HarnessHookStatus::needsRepair);
    }
};

QTEST_APPLESS_MAIN(TestHarnessHookInstaller)
#include "test_harness_hook_installer.moc"
