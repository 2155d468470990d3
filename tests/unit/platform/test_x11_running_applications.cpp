#include "platform/linux/x11_panel_windows.h"
#include "platform/linux/x11_running_applications.h"
#include "support/contracts/running_applications_contract.h"
#include "support/x11_test_desktop.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <thread>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// This program's own windows are taken for those of other applications, by what they say of themselves.
const OwnApplication nobody;

using Use = X11RunningApplications::Use;

} // namespace

/// With real applications: an editor with two windows in one process, a calculator, and a program that says nothing of
/// itself.
class TestX11RunningApplications : public RunningApplicationsContract {
    Q_OBJECT

    QTemporaryDir m_folder;
    std::unique_ptr<X11TestClient> m_client;
    std::unique_ptr<StartedApplication> m_first;
    std::unique_ptr<StartedApplication> m_second;
    std::unique_ptr<StartedApplication> m_nameless;
    Use m_use;

    StartedApplication& started(Running application)
    {
        return application == Running::first ? *m_first : application == Running::second ? *m_second : *m_nameless;
    }

    std::unique_ptr<RunningApplications> makeApplications() override
    {
        for (const Running application : { Running::nameless, Running::second, Running::first }) {
            for (const xcb_window_t window : started(application).windows()) {
                m_client->activate(window);
                (void)m_client->waitForActive(window);
            }
        }
        return std::make_unique<X11RunningApplications>(m_use, nobody);
    }
    /// At a person's pace: of two wishes within one millisecond, the server may grant the older one last.
    void bringToFront(RunningApplications&, Running application) override
    {
        const xcb_window_t window = started(application).windows().at(0);
        m_client->activate(window);
        QVERIFY(m_client->waitForActive(window));
    }
    void leaveNothingInFront(RunningApplications&) override
    {
        m_client->setInputFocus(m_client->show({ .geometry = QRect(0, 0, 50, 50), .isOverrideRedirect = true }));
    }
    bool isHidden(RunningApplications&, Running application) override { return !started(application).isViewable(); }
    [[nodiscard]] QString identifierOf(Running application) const override
    {
        return application == Running::first ? u"org.xfce.mousepad.desktop"_s : u"galculator.desktop"_s;
    }
    [[nodiscard]] QString nameOf(Running application) const override { return application == Running::first ? u"Mousepad"_s : u"Galculator"_s; }

    static std::optional<RunningApplication> find(const std::vector<RunningApplication>& all, const QString& name)
    {
        const auto found = std::ranges::find(all, std::optional(name), &RunningApplication::localizedName);
        return found == all.end() ? std::nullopt : std::optional(*found);
    }

public:
    explicit TestX11RunningApplications(Use use) : m_use(use) { }

private Q_SLOTS:
    void initTestCase()
    {
        m_client = std::make_unique<X11TestClient>();
        QFile one(m_folder.filePath(u"one.txt"_s));
        QFile two(m_folder.filePath(u"two.txt"_s));
        QVERIFY(one.open(QFile::WriteOnly) && two.open(QFile::WriteOnly));
        m_nameless = std::make_unique<StartedApplication>(*m_client, u"xev"_s);
        m_second = std::make_unique<StartedApplication>(*m_client, u"galculator"_s);
        m_first = std::make_unique<StartedApplication>(*m_client, u"mousepad"_s, QStringList { one.fileName() });
        QVERIFY(m_nameless->waitForWindows(1));
        QVERIFY(m_second->waitForWindows(1));
        QVERIFY(m_first->waitForWindows(1));
        // The second copy hands its file to the first and ends.
        QVERIFY(run(u"mousepad"_s, { u"--opening-mode=window"_s, two.fileName() }));
        QVERIFY(m_first->waitForWindows(2));
    }

    void cleanup() { m_client->destroyAll(); }

    void cleanupTestCase()
    {
        m_first.reset();
        m_second.reset();
        m_nameless.reset();
        m_client.reset();
    }

    void everyWindowOfTheApplicationIsHidden()
    {
        const auto applications = makeApplications();
        const std::vector<xcb_window_t> windows = m_first->windows();
        QCOMPARE(windows.size(), std::size_t(2));
        for (const xcb_window_t window : windows)
            QVERIFY(m_client->isViewable(window));
        applications->hide(identifierOf(Running::first));
        for (const xcb_window_t window : windows)
            QTRY_VERIFY_WITH_TIMEOUT(!m_client->isViewable(window), patience);
    }

    void anApplicationThatNeverTakesTheKeyboardIsListedUnderItsClass()
    {
        StartedApplication clock(*m_client, u"xclock"_s);
        QVERIFY(clock.waitForWindows(1));
        X11RunningApplications applications(m_use, nobody);
        const auto found = find(applications.all(), u"XClock"_s);
        QVERIFY(found.has_value());
        QCOMPARE(*found, (RunningApplication { .bundleIdentifier = std::nullopt, .localizedName = u"XClock"_s }));
        QCOMPARE(
            find(applications.all(), u"xev"_s), std::optional(RunningApplication { .bundleIdentifier = std::nullopt, .localizedName = u"xev"_s }));
    }

    void everyProcessOfTheApplicationIsHidden()
    {
        StartedApplication one(*m_client, u"xterm"_s);
        StartedApplication other(*m_client, u"xterm"_s);
        QVERIFY(one.waitForWindows(1));
        QVERIFY(other.waitForWindows(1));
        X11RunningApplications applications(m_use, nobody);
        const auto all = applications.all();
        QCOMPARE(std::ranges::count(all, std::optional(u"debian-xterm.desktop"_s), &RunningApplication::bundleIdentifier), 1);
        applications.hide(u"debian-xterm.desktop"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!one.isViewable() && !other.isViewable(), patience);
    }

    void aDialogIsHiddenAlongWithItsWindow()
    {
        const xcb_window_t window = m_client->show({ .instanceName = "xterm", .className = "XTerm" });
        const xcb_window_t dialog
            = m_client->show({ .instanceName = "xterm", .className = "XTerm", .geometry = QRect(150, 150, 50, 50), .transientFor = window });
        X11RunningApplications applications(m_use, nobody);
        applications.hide(u"debian-xterm.desktop"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!m_client->isViewable(window) && !m_client->isViewable(dialog), patience);
        m_client->destroy(dialog);
        m_client->destroy(window);
    }

    void windowsThatSayTheyAreEachOthersDialogsAreHidden()
    {
        const xcb_window_t one = m_client->show({ .instanceName = "xterm", .className = "XTerm" });
        const xcb_window_t other
            = m_client->show({ .instanceName = "xterm", .className = "XTerm", .geometry = QRect(150, 150, 50, 50), .transientFor = one });
        m_client->setProperty(one, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, std::array { other });
        X11RunningApplications applications(m_use, nobody);
        applications.hide(u"debian-xterm.desktop"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!m_client->isViewable(one) && !m_client->isViewable(other), patience);
        m_client->destroy(other);
        m_client->destroy(one);
    }

    void whatIsTakenAwayAfterwardsDoesNotBringTheHiddenApplicationBack()
    {
        const auto applications = makeApplications();
        for (int round = 0; round < 10; ++round) {
            const xcb_window_t editor = m_first->windows().at(0);
            m_client->activate(editor);
            QVERIFY(m_client->waitForActive(editor));
            const xcb_window_t cover = m_client->show({ .geometry = QRect(0, 0, 1920, 1080) });
            // The wish goes over the adapter's connection, the cover over another.
            applications->hide(identifierOf(Running::first));
            m_client->destroy(cover);
            QTRY_VERIFY_WITH_TIMEOUT(!m_first->isViewable(), patience);
            const xcb_window_t active = m_client->windows().activeWindow();
            QCOMPARE(std::ranges::count(m_first->windows(), active), 0);
        }
    }

    void beneathOurPanelTheApplicationIsStillInFront()
    {
        const auto applications = makeApplications();
        bringToFront(*applications, Running::second);
        QVERIFY(m_client->waitForActive(m_second->windows().at(0)));
        for (const bool isOverrideRedirect : { false, true }) {
            const xcb_window_t panel = m_client->create({ .geometry = QRect(0, 0, 1920, 1080), .isOverrideRedirect = isOverrideRedirect });
            markPanelWindow(m_client->connection().raw(), panel);
            m_client->map(panel);
            if (isOverrideRedirect) {
                m_client->setInputFocus(panel);
                QVERIFY(m_client->waitForNoActive());
            } else {
                QVERIFY(m_client->waitForActive(panel));
            }
            const auto front = applications->frontmost();
            QVERIFY(front.has_value());
            QCOMPARE(front->bundleIdentifier, std::optional(identifierOf(Running::second)));
            for (const RunningApplication& application : applications->all())
                QVERIFY(application.localizedName.has_value());
            m_client->destroy(panel);
            bringToFront(*applications, Running::second);
            QVERIFY(m_client->waitForActive(m_second->windows().at(0)));
        }
    }

    void docksAndDesktopsAreAccessoriesAndAreNotHidden()
    {
        const xcb_window_t dock = m_client->create({ .instanceName = "taskbar", .className = "Taskbar" });
        m_client->setProperty(dock, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, std::array { m_client->atom("_NET_WM_WINDOW_TYPE_DOCK") });
        m_client->map(dock);
        X11RunningApplications applications(m_use, nobody);
        // Windows without an identifier are told apart by their processes, and all of these are of one.
        const auto isAccessory = [&applications] {
            const auto found = find(applications.all(), u"Taskbar"_s);
            return found && found->activationPolicy == ActivationPolicy::accessory;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isAccessory(), patience);
        const xcb_window_t window = m_client->show({ .instanceName = "taskbar", .className = "Taskbar" });
        const auto isRegular = [&applications] {
            const auto found = find(applications.all(), u"Taskbar"_s);
            return found && found->activationPolicy == ActivationPolicy::regular;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isRegular(), patience);
        m_client->destroy(window);
        m_client->destroy(dock);
    }

    void aWindowThatChangesItsClassChangesItsApplication()
    {
        const xcb_window_t window = m_client->show({});
        X11RunningApplications applications(m_use, nobody);
        const auto before = applications.frontmost();
        QVERIFY(before && !before->bundleIdentifier);
        m_client->setText(window, "WM_CLASS", QByteArray("xterm\0XTerm\0", 12));
        const auto isTerminal = [&applications] {
            const auto after = applications.frontmost();
            return after && after->bundleIdentifier == u"debian-xterm.desktop"_s;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isTerminal(), patience);
        m_client->destroy(window);
    }

    void clientsThatDieWhileTheyAreListedAreLeftOut()
    {
        const auto applications = makeApplications();
        const auto before = applications->all();
        // Another client on a thread of its own, which opens and destroys windows as fast as it can.
        std::atomic<bool> isOver = false;
        std::atomic<int> windows = 0;
        std::thread churn([&] {
            X11TestClient client;
            while (!isOver) {
                const xcb_window_t window = client.create({ .instanceName = "xterm", .className = "XTerm" });
                client.map(window);
                client.destroy(window);
                ++windows;
            }
        });
        for (int i = 0; i < 300 || windows < 100; ++i) {
            const auto all = applications->all();
            for (const QString& identifier : { identifierOf(Running::first), identifierOf(Running::second) })
                QVERIFY(std::ranges::find(all, std::optional(identifier), &RunningApplication::bundleIdentifier) != all.end());
            (void)applications->frontmost();
        }
        isOver = true;
        churn.join();
        QTRY_VERIFY_WITH_TIMEOUT(applications->all() == before, patience);
    }

    void itWaitsForTheServerTwiceAtMostAndNotAtAllForWhatItFollows()
    {
        (void)makeApplications();
        X11RunningApplications applications(m_use, nobody);
        const auto costOf = [&applications](const auto& question) {
            const auto before = applications.roundTrips();
            question();
            return applications.roundTrips() - before;
        };
        const auto ask = [&applications] { (void)applications.all(); };
        const std::uint64_t wanted = m_use == Use::periodic ? 0 : 2;
        // The window manager may still be busy with the windows.
        QTRY_COMPARE_WITH_TIMEOUT(costOf(ask), wanted, patience);
        const auto first = applications.all();
        QCOMPARE(costOf([&] {
            for (int i = 0; i < 20; ++i)
                QVERIFY(applications.all() == first);
        }),
            wanted * 20);

        // What changes is asked for.
        const xcb_window_t window = m_client->show({ .instanceName = "xterm", .className = "XTerm" });
        QTRY_COMPARE_WITH_TIMEOUT(applications.all().size(), first.size() + 1, patience);
        QTRY_COMPARE_WITH_TIMEOUT(costOf(ask), wanted, patience);
        m_client->destroy(window);
    }

    void anotherThreadMayHaveItsOwn()
    {
        (void)makeApplications();
        const auto expected = X11RunningApplications(m_use, nobody).all();
        std::vector<RunningApplication> found;
        std::thread([&] { found = X11RunningApplications(m_use, nobody).all(); }).join();
        QVERIFY(found == expected);
        QVERIFY(found.size() >= 3);
    }

    void aLostConnectionIsOpenedAgain()
    {
        (void)makeApplications();
        const OpenSockets others;
        X11RunningApplications applications(m_use, nobody);
        const auto before = applications.all();
        QCOMPARE(others.cutNewOnes(), std::size_t(1));
        QVERIFY(applications.all() == before);
        QCOMPARE(others.cutNewOnes(), std::size_t(1));
        applications.hide(identifierOf(Running::first));
        QTRY_VERIFY_WITH_TIMEOUT(!m_first->isViewable(), patience);
    }

    void withoutAnXServerThereIsNothing()
    {
        const QByteArray display = qgetenv("DISPLAY");
        qputenv("DISPLAY", ":65000");
        QTest::ignoreMessage(QtWarningMsg, "The X display cannot be used: nothing answers there.");
        X11RunningApplications applications(m_use, nobody);
        QVERIFY(applications.all().empty());
        QVERIFY(!applications.frontmost().has_value());
        applications.hide(u"x.desktop"_s);
        qputenv("DISPLAY", display);
        QVERIFY(!applications.all().empty());
    }
};

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    TestX11RunningApplications occasional(Use::occasional);
    TestX11RunningApplications periodic(Use::periodic);
    const int failures = QTest::qExec(&occasional, argc, argv);
    return failures + QTest::qExec(&periodic, argc, argv);
}

#include "test_x11_running_applications.moc"
