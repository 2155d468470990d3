#include "platform/linux/x11_activation_monitor.h"
#include "support/contracts/activation_monitor_contract.h"
#include "support/x11_test_desktop.h"

#include <QGuiApplication>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <array>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// This program's own windows are taken for those of other applications, by what they say of themselves.
const OwnApplication nobody;

} // namespace

/// With real applications: one that names itself as GTK's do, one that is known by its class, and
/// one that says nothing of itself.
class TestX11ActivationMonitor : public ActivationMonitorContract {
    Q_OBJECT

    PanelWindows m_panels;
    std::unique_ptr<X11TestClient> m_client;
    std::unique_ptr<StartedApplication> m_first;
    std::unique_ptr<StartedApplication> m_second;
    std::unique_ptr<StartedApplication> m_nameless;

    std::unique_ptr<ActivationMonitor> makeMonitor() override { return std::make_unique<X11ActivationMonitor>(m_panels, nobody); }

    /// At a person's pace: of two wishes within one millisecond, the server may grant the older one last.
    void bringToFront(ActivationMonitor&, Front application) override
    {
        StartedApplication& started = application == Front::first ? *m_first : application == Front::second ? *m_second : *m_nameless;
        const xcb_window_t window = started.windows().at(0);
        m_client->activate(window);
        QVERIFY(m_client->waitForActive(window));
    }
    [[nodiscard]] QString identifierOf(Front application) const override
    {
        return application == Front::first ? u"org.xfce.mousepad.desktop"_s : u"debian-xterm.desktop"_s;
    }

    /// Before an observation whose every word counts: what earlier windows left behind must not be told in it.
    xcb_window_t restOnSecond()
    {
        const xcb_window_t window = m_second->windows().at(0);
        m_client->activate(window);
        return m_client->waitForActive(window) ? window : XCB_NONE;
    }

    /// The class alone makes it the calculator.
    [[nodiscard]] static X11TestClient::Look calculatorLook()
    {
        return { .instanceName = "galculator", .className = "Galculator", .geometry = QRect(100, 100, 200, 150) };
    }
    static constexpr auto calculator = "galculator.desktop";

private Q_SLOTS:
    void initTestCase()
    {
        m_client = std::make_unique<X11TestClient>();
        m_first = std::make_unique<StartedApplication>(*m_client, u"mousepad"_s);
        m_second = std::make_unique<StartedApplication>(*m_client, u"xterm"_s);
        m_nameless = std::make_unique<StartedApplication>(*m_client, u"xev"_s);
        QVERIFY(m_first->waitForWindows(1));
        QVERIFY(m_second->waitForWindows(1));
        QVERIFY(m_nameless->waitForWindows(1));
    }

    void cleanup() { m_client->destroyAll(); }

    void cleanupTestCase()
    {
        m_first.reset();
        m_second.reset();
        m_nameless.reset();
        m_client.reset();
    }

    void bothWindowsOfAnApplicationAreThatApplication()
    {
        X11TestClient::Look look = calculatorLook();
        const xcb_window_t one = m_client->show(look);
        look.geometry.translate(300, 0);
        const xcb_window_t other = m_client->show(look);
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        m_client->activate(one);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ QLatin1String(calculator) }), patience);
        m_client->activate(other);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ QLatin1String(calculator), QLatin1String(calculator) }), patience);
        m_client->destroy(one);
        m_client->destroy(other);
    }

    void nothingInFrontIsToldAsNoneAndTheSameWindowAfterwardsAsAnActivation()
    {
        const xcb_window_t window = m_client->show(calculatorLook());
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        // A window that no window manager looks after takes the keyboard, as a cover may do.
        const xcb_window_t cover = m_client->show({ .geometry = QRect(0, 0, 50, 50), .isOverrideRedirect = true });
        m_client->setInputFocus(cover);
        QTRY_COMPARE_WITH_TIMEOUT(told, Told({ std::nullopt }), patience);
        QVERIFY(run(u"xdotool"_s, { u"mousemove"_s, u"200"_s, u"200"_s, u"click"_s, u"1"_s }));
        QTRY_COMPARE_WITH_TIMEOUT(told, Told({ std::nullopt, QLatin1String(calculator) }), patience);
        m_client->destroy(cover);
        m_client->destroy(window);
    }

    void theSameWindowSaidTwiceIsOneActivation()
    {
        const xcb_window_t window = m_client->show(calculatorLook());
        const xcb_window_t other = m_second->windows().at(0);
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        // Both before the monitor can look, and then once more after it has looked.
        for (int i = 0; i < 2; ++i)
            m_client->setProperty(m_client->connection().root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, std::array { window });
        QCoreApplication::processEvents();
        m_client->setProperty(m_client->connection().root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, std::array { window });
        m_client->activate(other);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ u"debian-xterm.desktop"_s }), patience);
        m_client->destroy(window);
    }

    void aWindowThatWasLeftAndFoundAgainBeforeAnyoneLookedIsAnActivation()
    {
        const xcb_window_t window = m_client->show(calculatorLook());
        const xcb_window_t cover = m_client->show({ .geometry = QRect(0, 0, 50, 50), .isOverrideRedirect = true });
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        // The monitor stands in this thread, so it sees nothing of this until it is over.
        X11Windows& windows = m_client->windows();
        m_client->setInputFocus(cover);
        while (windows.activeWindow() != XCB_NONE)
            QThread::yieldCurrentThread();
        m_client->activate(window);
        while (windows.activeWindow() != window)
            QThread::yieldCurrentThread();
        QVERIFY(told.empty());
        QTRY_VERIFY_WITH_TIMEOUT(!named(told).empty(), patience);
        QCOMPARE(named(told).front(), std::optional(QString::fromLatin1(calculator)));
        m_client->destroy(cover);
        m_client->destroy(window);
    }

    void aPanelIsNotToldAndWhatItCoveredIsToldWhenItIsActivatedAgain()
    {
        const xcb_window_t window = m_client->show(calculatorLook());
        const xcb_window_t panel = m_client->create({ .geometry = QRect(0, 0, 1920, 1080) });
        m_panels.add(panel);
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        m_client->map(panel);
        QVERIFY(m_client->waitForActive(panel));
        m_client->activate(window);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ QLatin1String(calculator) }), patience);
        m_client->activate(panel);
        QVERIFY(m_client->waitForActive(panel));
        m_client->activate(window);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ QLatin1String(calculator), QLatin1String(calculator) }), patience);
        m_client->destroy(panel);
        m_panels.remove(panel);
        m_client->destroy(window);
    }

    void ourOrdinaryWindowIsAnApplicationLikeAnyOther()
    {
        X11ActivationMonitor monitor(m_panels, { .process = ::getpid(), .identifier = u"own.desktop"_s, .name = u"Own"_s });
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        QWindow window;
        window.resize(200, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window, patience));
        m_client->activate(static_cast<xcb_window_t>(window.winId()));
        QTRY_VERIFY_WITH_TIMEOUT(std::ranges::count(told, std::optional(u"own.desktop"_s)) > 0, patience);
    }

    void aClientWithoutAClassHasNoIdentifierUntilItSaysMore()
    {
        const xcb_window_t other = restOnSecond();
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        const xcb_window_t window = m_client->show({});
        QVERIFY(window != XCB_NONE);
        QTRY_VERIFY_WITH_TIMEOUT(!told.empty(), patience);
        QCOMPARE(named(told), Told());
        m_client->activate(other);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ u"debian-xterm.desktop"_s }), patience);
        m_client->setText(window, "WM_CLASS", QByteArray("galculator\0Galculator\0", 22));
        m_client->activate(window);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ u"debian-xterm.desktop"_s, QLatin1String(calculator) }), patience);
        m_client->destroy(window);
    }

    void aWindowThatIsGoneWhenItIsLookedAtHasNoIdentifier()
    {
        (void)restOnSecond();
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        // Named as active when it no longer exists: whoever looks it up gets BadWindow.
        const xcb_window_t window = m_client->create(calculatorLook());
        m_client->destroy(window);
        m_client->setProperty(m_client->connection().root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, std::array { window });
        QTRY_COMPARE_WITH_TIMEOUT(told, Told({ std::nullopt }), patience);
        const xcb_window_t other = m_client->show(calculatorLook());
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ QLatin1String(calculator) }), patience);
        m_client->destroy(other);
    }

    void windowsThatComeAndGoByTheHundredDoNoHarm()
    {
        (void)restOnSecond();
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        for (int i = 0; i < 200; ++i) {
            const xcb_window_t window = m_client->create(calculatorLook());
            m_client->map(window);
            if (i % 3 == 0)
                QCoreApplication::processEvents();
            m_client->destroy(window);
        }
        const xcb_window_t last = m_client->show({ .instanceName = "xterm", .className = "XTerm" });
        QTRY_VERIFY_WITH_TIMEOUT(!told.empty() && told.back() == u"debian-xterm.desktop"_s, patience);
        m_client->destroy(last);
    }

    void aMonitorMayBeDestroyedByItsObserver()
    {
        auto monitor = std::make_unique<X11ActivationMonitor>(m_panels, nobody);
        bool isGone = false;
        auto observer = monitor->observe([&](const std::optional<QString>&) {
            monitor.reset();
            isGone = true;
        });
        const xcb_window_t window = m_client->show(calculatorLook());
        QTRY_VERIFY_WITH_TIMEOUT(isGone, patience);
        m_client->destroy(window);
    }

    void aLateObserverIsNotToldOfWhatWasBefore()
    {
        const xcb_window_t window = m_client->show(calculatorLook());
        const xcb_window_t other = m_second->windows().at(0);
        X11ActivationMonitor monitor(m_panels, nobody);
        Told early;
        const auto first = monitor.observe([&](const std::optional<QString>& identifier) { early.push_back(identifier); });
        m_client->activate(other);
        X11Windows& windows = m_client->windows();
        while (windows.activeWindow() != other)
            QThread::yieldCurrentThread();
        // The monitor has not been able to tell anyone yet.
        Told late;
        const auto second = monitor.observe([&](const std::optional<QString>& identifier) { late.push_back(identifier); });
        QVERIFY(early.empty());
        QTRY_COMPARE_WITH_TIMEOUT(named(early), Told({ u"debian-xterm.desktop"_s }), patience);
        QCOMPARE(late, Told());
        m_client->activate(window);
        QTRY_COMPARE_WITH_TIMEOUT(named(late), Told({ QLatin1String(calculator) }), patience);
        m_client->destroy(window);
    }

    void aLostConnectionIsOpenedAgainAndWhatCameMeanwhileIsTold()
    {
        const xcb_window_t window = m_client->show(calculatorLook());
        const xcb_window_t other = m_second->windows().at(0);
        const OpenSockets others;
        X11ActivationMonitor monitor(m_panels, nobody);
        Told told;
        const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
        QTest::ignoreMessage(QtWarningMsg, "The connection to the X server was lost; applications are watched again when it is back.");
        QCOMPARE(others.cutNewOnes(), std::size_t(1));
        m_client->activate(other);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ u"debian-xterm.desktop"_s }), patience);
        m_client->activate(window);
        QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ u"debian-xterm.desktop"_s, QLatin1String(calculator) }), patience);
        m_client->destroy(window);
    }

    void withoutAnXServerNothingIsToldAndNothingFails()
    {
        (void)restOnSecond();
        const QByteArray display = qgetenv("DISPLAY");
        qputenv("DISPLAY", ":65000");
        QTest::ignoreMessage(QtWarningMsg, "Applications cannot be watched. The X display cannot be used: nothing answers there.");
        {
            X11ActivationMonitor monitor(m_panels, nobody);
            Told told;
            const auto observer = monitor.observe([&](const std::optional<QString>& identifier) { told.push_back(identifier); });
            QVERIFY(told.empty());
            // It tries again by itself.
            qputenv("DISPLAY", display);
            const auto isWatching = [this, before = m_client->clientsOfThisProcess()] { return m_client->clientsOfThisProcess() == before + 1; };
            QTRY_VERIFY_WITH_TIMEOUT(isWatching(), patience);
            const xcb_window_t window = m_client->show(calculatorLook());
            QTRY_COMPARE_WITH_TIMEOUT(named(told), Told({ QLatin1String(calculator) }), patience);
            m_client->destroy(window);
        }
    }
};

QTEST_MAIN(TestX11ActivationMonitor)
#include "test_x11_activation_monitor.moc"
