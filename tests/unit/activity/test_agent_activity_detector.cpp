#include "activity/agent_activity_detector.h"

#include "support/fake_activity_sources.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

std::vector<ProcessSnapshot> parsed(const QByteArray& listing)
{
    return AgentActivityDetector::processSnapshots(listing).value_or(std::vector<ProcessSnapshot>());
}

} // namespace

class TestAgentActivityDetector : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aLineHasAShareAndACommandWithItsBlanks()
    {
        const auto processes = parsed("  12.5 /usr/local/bin/claude --resume");
        QCOMPARE(processes.size(), 1U);
        QCOMPARE(processes[0].cpuPercent, 12.5);
        QCOMPARE(processes[0].command, u"/usr/local/bin/claude --resume"_s);
        QVERIFY(AgentActivityDetector::hasActiveAgent(processes));
    }

    void innerAndTrailingBlanksStayInTheCommand()
    {
        QCOMPARE(parsed("0.0  a   b \n").at(0).command, u" a   b "_s);
        QCOMPARE(parsed("\t1.0\ta\tb").at(0).command, u"a\tb"_s);
    }

    void whatIsNoShareAndCommandIsSkipped()
    {
        QVERIFY(parsed("").empty());
        QVERIFY(parsed("\n\n").empty());
        QVERIFY(parsed("   \n").empty());
        QVERIFY(parsed("12.5").empty());
        QVERIFY(parsed("12.5 ").empty());
        QVERIFY(parsed("%CPU COMMAND\n").empty());
        QVERIFY(parsed("12,5 claude\n").empty());
        QCOMPARE(parsed("x\n1.0 one\n\n 2.0 two\nthree 3\n").size(), 2U);
    }

    void linesEndAtAnyNewline()
    {
        const auto processes = parsed("1 a\r\n2 b\r3 c\v4 d\f5 e\xc2\x85"
                                      "6 f\xe2\x80\xa8"
                                      "7 g\xe2\x80\xa9"
                                      "8 h\n");
        QCOMPARE(processes.size(), 8U);
        QCOMPARE(processes[0].command, u"a"_s);
        QCOMPARE(processes[7], (ProcessSnapshot { u"h"_s, 8 }));
    }

    void theThresholdItselfPasses()
    {
        QVERIFY(AgentActivityDetector::hasActiveAgent({ { u"claude"_s, 0.5 } }));
        QVERIFY(!AgentActivityDetector::hasActiveAgent({ { u"claude"_s, 0.4 } }));
        QVERIFY(!AgentActivityDetector::hasActiveAgent({ { u"node @anthropic-ai/claude-code"_s, 0.4 } }));
        QVERIFY(!AgentActivityDetector::hasActiveAgent({}));
    }

    void whatIsAnAgent_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("isAgent");
        const auto row = [](const char* command, bool isAgent) { QTest::newRow(command) << QString::fromUtf8(command) << isAgent; };
        row("claude", true);
        row("codex", true);
        row("/usr/local/bin/CLAUDE --resume", true);
        row("/opt/codex/ exec", true);
        row("   codex", true);
        row("/usr/bin/claude-desktop", false);
        row("vim claude", false);
        row("/bin/sh /usr/bin/claude", false);
        row("/usr/bin/claude /Applications/X.app/Y", false);
        row("/Applications/Claude.app/Contents/MacOS/Claude", false);
        row("/Applications/Claude.app/Contents/MacOS/claude", false);
        row("/Users/u/Library/Application Support/Claude/claude-code/1.0/Claude.app/Contents/MacOS/claude --x", true);
        row("/Users/u/Library/Claude/claude-code/1.0/bin/other", false);
        row("node /usr/lib/node_modules/@anthropic-ai/claude-code/cli.js", true);
        row("node /usr/lib/node_modules/@OpenAI/Codex/bin.js", true);
        row("/Applications/X.app/Contents/node kernel.js --session-id 7", true);
        row("/Applications/X.app/Contents/codex app-server", true);
        row("kernel.js  --session-id 7", false);
        row("", false);
        row(" ", false);
        row("/", false);
        row("[kworker/0:1-events]", false);
    }

    void whatIsAnAgent()
    {
        QFETCH(const QString, command);
        QFETCH(const bool, isAgent);
        QCOMPARE(AgentActivityDetector::hasActiveAgent({ { command, 50 } }), isAgent);
    }

    void oneAgentAmongManyIsEnough()
    {
        QVERIFY(AgentActivityDetector::hasActiveAgent({ { u"xterm"_s, 99 }, { u"claude"_s, 0.1 }, { u"codex"_s, 1 }, { u"vim"_s, 0 } }));
        QVERIFY(!AgentActivityDetector::hasActiveAgent({ { u"xterm"_s, 99 }, { u"claude"_s, 0.1 } }));
    }

    void theListingDecides()
    {
        ActivityScene scene;
        const ActivitySources sources = scene.sources();
        scene.processes = " 0.0 /sbin/init\n 7.1 /usr/bin/claude\n";
        QVERIFY(AgentActivityDetector::isAgentWorking(*sources.processes));
        scene.processes = " 0.0 /sbin/init\n 0.1 /usr/bin/claude\n";
        QVERIFY(!AgentActivityDetector::isAgentWorking(*sources.processes));
    }

    void withoutAListingNobodyWorks()
    {
        ActivityScene scene;
        const ActivitySources sources = scene.sources();
        scene.processes = std::nullopt;
        QVERIFY(!AgentActivityDetector::isAgentWorking(*sources.processes));
    }

    void aListingThatIsNotUtf8CountsAsNone()
    {
        ActivityScene scene;
        const ActivitySources sources = scene.sources();
        scene.processes = " 7.1 /usr/bin/claude\n 0.0 \xff\n";
        QVERIFY(!AgentActivityDetector::isAgentWorking(*sources.processes));
    }
};

QTEST_GUILESS_MAIN(TestAgentActivityDetector)
#include "test_agent_activity_detector.moc"
