#include "platform/linux/browser_named_applications.h"
#include "support/contracts/idle_source_contract.h"
#include "support/contracts/process_lister_contract.h"
#include "support/contracts/script_runner_contract.h"
#include "support/fake_activity_sources.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestFakeIdleSource : public IdleSourceContract {
    Q_OBJECT

    std::unique_ptr<IdleSource> makeSource() override { return std::make_unique<FakeIdleSource>(m_scene); }
    void touch() override { m_scene.idle = { 0 }; }
    void pass(double seconds) override { m_scene.idle.at(0) += seconds; }

    ActivityScene m_scene;
};

class TestFakeScriptRunner : public ScriptRunnerContract {
    Q_OBJECT

    std::unique_ptr<ScriptRunner> makeRunner() override { return std::make_unique<FakeScriptRunner>(m_scene); }
    QString bringOneToTheFront() override
    {
        m_scene.answers.insert(ScriptId::frontProcess, u"Editor"_s);
        return u"Editor"_s;
    }
    void leaveNothingInFront() override { m_scene.answers.remove(ScriptId::frontProcess); }

    ActivityScene m_scene;
};

class TestFakeProcessLister : public ProcessListerContract {
    Q_OBJECT

    std::unique_ptr<ProcessLister> makeLister() override
    {
        m_scene.processes = " 0.0 /sbin/init\n";
        return std::make_unique<FakeProcessLister>(m_scene);
    }

    ActivityScene m_scene;
};

class TestBrowserNamedApplications : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aBuildOfABrowserBearsANameThatTellsIt_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected");
        QTest::newRow("Chromium") << u"com.google.Chrome"_s << u"Chromium Web Browser"_s << u"Google Chrome"_s;
        QTest::newRow("Chrome beta") << u"com.google.Chrome"_s << u"Google Chrome (beta)"_s << u"Google Chrome (beta)"_s;
        QTest::newRow("Firefox ESR") << u"org.mozilla.firefox"_s << u"Firefox ESR"_s << u"Firefox ESR"_s;
        QTest::newRow("Brave") << u"com.brave.Browser"_s << u"Brave Web Browser"_s << u"Brave Web Browser"_s;
        QTest::newRow("no browser") << u"galculator.desktop"_s << u"Galculator"_s << u"Galculator"_s;
    }

    void aBuildOfABrowserBearsANameThatTellsIt()
    {
        QFETCH(const QString, identifier);
        QFETCH(const QString, name);
        QFETCH(const QString, expected);
        ActivityScene scene;
        scene.running = { { .bundleIdentifier = identifier, .localizedName = name }, { .bundleIdentifier = std::nullopt, .localizedName = name } };
        scene.front = scene.running[0];
        BrowserNamedApplications applications(std::make_unique<SceneApplications>(scene));
        QCOMPARE(applications.frontmost()->localizedName, std::optional(expected));
        QCOMPARE(applications.all().at(0).localizedName, std::optional(expected));
        QCOMPARE(applications.all().at(1).localizedName, std::optional(name));
    }

    void aBrowserWithoutNameGetsOneAndNothingInFrontStaysNothing()
    {
        ActivityScene scene;
        BrowserNamedApplications applications(std::make_unique<SceneApplications>(scene));
        QVERIFY(!applications.frontmost().has_value());
        scene.front = RunningApplication { .bundleIdentifier = u"org.mozilla.firefox"_s, .localizedName = std::nullopt };
        QCOMPARE(applications.frontmost()->localizedName, std::optional(u"Firefox"_s));
        applications.hide(u"a.b"_s);
        QVERIFY(scene.log.calls.contains(u"hide a.b"_s));
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    int failures = 0;
    failures += QTest::qExec(std::make_unique<TestFakeIdleSource>().get(), argc, argv);
    failures += QTest::qExec(std::make_unique<TestFakeScriptRunner>().get(), argc, argv);
    failures += QTest::qExec(std::make_unique<TestFakeProcessLister>().get(), argc, argv);
    failures += QTest::qExec(std::make_unique<TestBrowserNamedApplications>().get(), argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_activity_source_doubles.moc"
