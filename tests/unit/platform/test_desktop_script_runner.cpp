#include "platform/linux/browser_named_applications.h"
#include "platform/linux/desktop_script_runner.h"
#include "platform/linux/x11_running_applications.h"

#include "support/contracts/script_runner_contract.h"
#include "support/x11_test_desktop.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>

#include <csignal>
#include <sys/types.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// A browser takes its time to start, above all for the first time and on a machine that builds.
constexpr int browserPatience = 90'000;

/// Long enough that a thousand of them would outlast the test, were each of a thousand questions to wait.
constexpr std::chrono::milliseconds questionPatience { 3000 };

/// A script runner on a connection and a thread like the tracker's.
class OwnRunner final : public ScriptRunner {
public:
    [[nodiscard]] std::optional<QString> run(const Script& script) override { return m_runner.run(script); }

private:
    BrowserNamedApplications m_applications { std::make_unique<X11RunningApplications>(X11RunningApplications::Use::periodic, OwnApplication()) };
    DesktopScriptRunner m_runner { m_applications, questionPatience };
};

/// A real browser with a profile of its own, which ends with this.
class Browser {
public:
    explicit Browser(QStringList command)
    {
        const QString program = command.takeFirst();
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(program, command);
        if (!m_process.waitForStarted(20'000))
            qFatal("the browser did not start");
    }
    ~Browser()
    {
        resume();
        m_process.terminate();
        if (!m_process.waitForFinished(10'000)) {
            m_process.kill();
            m_process.waitForFinished(10'000);
        }
    }
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    void stop() { ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP); }
    void resume() { ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT); }

private:
    QProcess m_process;
};

} // namespace

/// With a real terminal and real browsers, which show pages of the test's own.
class TestDesktopScriptRunner : public ScriptRunnerContract {
    Q_OBJECT

    std::unique_ptr<ScriptRunner> makeRunner() override { return std::make_unique<OwnRunner>(); }

    QString bringOneToTheFront() override
    {
        if (!m_application) {
            m_application = std::make_unique<StartedApplication>(m_client, u"galculator"_s);
            if (!m_application->waitForWindows(1))
                qFatal("no window came");
        }
        const xcb_window_t window = m_application->windows().at(0);
        m_client.activate(window);
        if (!m_client.waitForActive(window))
            qFatal("the window did not come to the front");
        return u"Galculator"_s;
    }

    void leaveNothingInFront() override { m_client.setInputFocus(m_client.show({ .geometry = QRect(0, 0, 50, 50), .isOverrideRedirect = true })); }

    X11TestClient m_client;
    QTemporaryDir m_folder;
    std::unique_ptr<StartedApplication> m_application;

    QString page(const QString& name, const QString& title)
    {
        QFile file(m_folder.filePath(name));
        if (!file.open(QFile::WriteOnly))
            qFatal("no page");
        file.write("<!doctype html><meta charset=utf-8><title>" + title.toUtf8() + "</title><p>page<iframe srcdoc='<title>inner</title>'></iframe>");
        return QUrl::fromLocalFile(file.fileName()).toString();
    }

    /// How each browser is started, and which script asks it.
    QStringList command(const QString& browser, const QString& url)
    {
        const QString profile = m_folder.filePath(browser);
        QDir().mkpath(profile);
        if (browser == u"firefox-esr"_s) {
            QFile settings(profile + u"/user.js"_s);
            if (!settings.open(QFile::WriteOnly))
                qFatal("no profile");
            settings.write("user_pref('browser.shell.checkDefaultBrowser', false);\n"
                           "user_pref('browser.aboutwelcome.enabled', false);\n"
                           "user_pref('datareporting.policy.dataSubmissionEnabled', false);\n"
                           "user_pref('network.captive-portal-service.enabled', false);\n"
                           "user_pref('app.update.enabled', false);\n"
                           "user_pref('network.connectivity-service.enabled', false);\n");
            return { browser, u"--no-remote"_s, u"--profile"_s, profile, url };
        }
        return { browser, u"--force-renderer-accessibility"_s, u"--no-sandbox"_s, u"--password-store=basic"_s, u"--disable-background-networking"_s,
            u"--disable-component-update"_s, u"--disable-sync"_s, u"--no-first-run"_s, u"--user-data-dir="_s + profile, url };
    }

private Q_SLOTS:
    void initTestCase()
    {
        // As a screen reader does that starts: accessibility is on in the session.
        QCOMPARE(QProcess::execute(u"gdbus"_s,
                     { u"call"_s, u"--session"_s, u"--dest"_s, u"org.a11y.Bus"_s, u"--object-path"_s, u"/org/a11y/bus"_s, u"--method"_s,
                         u"org.freedesktop.DBus.Properties.Set"_s, u"org.a11y.Status"_s, u"IsEnabled"_s, u"<true>"_s }),
            0);
    }

    void cleanup() { m_client.destroyAll(); }

    void cleanupTestCase() { m_application.reset(); }

    void aBrowserTellsItsTabAndIsNotWaitedForTwiceWhileItIsStopped_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("processName");
        QTest::addColumn<int>("script");
        QTest::newRow("Firefox ESR") << u"firefox-esr"_s << u"Firefox ESR"_s << static_cast<int>(ScriptId::firefoxTab);
        QTest::newRow("Chromium") << u"chromium"_s << u"Google Chrome"_s << static_cast<int>(ScriptId::chromeTab);
    }

    void aBrowserTellsItsTabAndIsNotWaitedForTwiceWhileItIsStopped()
    {
        QFETCH(const QString, program);
        QFETCH(const QString, processName);
        QFETCH(const int, script);
        const auto id = static_cast<ScriptId>(script);
        const QString url = page(program + u".html"_s, u"A page \u00e9 "_s + program);
        const QString expected = url + u"\nA page \u00e9 "_s + program;

        OwnRunner runner;
        Browser browser(command(program, url));
        QTRY_COMPARE_WITH_TIMEOUT(run(runner, id), std::optional(expected), browserPatience);
        QTRY_COMPARE_WITH_TIMEOUT(run(runner, ScriptId::frontProcess), std::optional(processName), 20'000);

        browser.stop();
        QTRY_VERIFY_WITH_TIMEOUT(!run(runner, id).has_value(), 20'000);
        // Each of these would take seconds, were it to wait.
        for (int question = 0; question < 1000; ++question)
            QVERIFY(!run(runner, id).has_value());
        // Others are answered meanwhile.
        QVERIFY(run(runner, ScriptId::frontProcess).has_value());

        browser.resume();
        QTRY_COMPARE_WITH_TIMEOUT(run(runner, id), std::optional(expected), browserPatience);
    }
};

QTEST_MAIN(TestDesktopScriptRunner)
#include "test_desktop_script_runner.moc"
