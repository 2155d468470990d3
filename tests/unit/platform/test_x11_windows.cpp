#include "platform/linux/x11_panel_windows.h"
#include "platform/linux/x11_windows.h"
#include "support/x11_test_desktop.h"

#include <QGuiApplication>
#include <QTest>

#include <algorithm>
#include <array>
#include <sys/socket.h>
#include <unistd.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestX11Windows : public QObject {
    Q_OBJECT

    std::unique_ptr<X11TestClient> m_client;
    std::unique_ptr<X11Connection> m_connection;

    X11Window described(X11Windows& windows, xcb_window_t window)
    {
        const auto found = windows.describe(std::array { window });
        return found.empty() ? X11Window() : found.front();
    }

private Q_SLOTS:
    /// One client for all tests: the numbers of its windows never come back, which would confuse window managers.
    void initTestCase() { m_client = std::make_unique<X11TestClient>(); }
    void cleanupTestCase() { m_client.reset(); }

    void init()
    {
        auto opened = X11Connection::open();
        QVERIFY(opened.has_value());
        m_connection = std::move(*opened);
    }

    void cleanup()
    {
        m_connection.reset();
        m_client->destroyAll();
    }

    void everythingAWindowSaysIsRead()
    {
        const xcb_window_t owner = m_client->show({ .instanceName = "one", .className = "One" });
        const xcb_window_t window = m_client->create({ .instanceName = "two", .className = "Two", .transientFor = owner });
        m_client->setText(window, "_GTK_APPLICATION_ID", "org.example.Two");
        m_client->setProperty(window, "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, std::array { 0xFFFFFFFFU });
        m_client->setProperty(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, std::array { m_client->atom("_NET_WM_WINDOW_TYPE_DOCK") });
        m_client->setProperty(window, "_NET_WM_STATE", XCB_ATOM_ATOM,
            std::array { m_client->atom("_NET_WM_STATE_SKIP_TASKBAR"), m_client->atom("_NET_WM_STATE_HIDDEN") });
        markPanelWindow(m_client->connection().raw(), window);
        m_client->connection().roundTrip();

        X11Windows windows(*m_connection, X11Windows::Memory::none);
        const X11Window found = described(windows, window);
        QCOMPARE(found.id, window);
        QCOMPARE(found.instanceName, QByteArray("two"));
        QCOMPARE(found.className, QByteArray("Two"));
        QCOMPARE(found.gtkApplicationId, QByteArray("org.example.Two"));
        QCOMPARE(found.process, ::getpid());
        QCOMPARE(found.transientFor, owner);
        QCOMPARE(found.desktop, std::optional(0xFFFFFFFFU));
        QVERIFY(found.isDesktopOrDock && found.isHidden && found.skipsTaskbar && found.isPanel);
        QCOMPARE(windows.roundTrips(), std::uint64_t(1));
        QCOMPARE(described(windows, owner).isPanel, false);
    }

    void propertiesOfTheWrongKindAreTakenForMissing()
    {
        const xcb_window_t window = m_client->create({});
        m_client->setProperty(window, "WM_CLASS", XCB_ATOM_CARDINAL, std::array { 1U, 2U });
        m_client->setText(window, "_NET_WM_DESKTOP", "text");
        m_client->setText(window, "WM_TRANSIENT_FOR", "text");
        m_client->setText(window, "_NET_WM_STATE", QByteArray(100'000, 'x'));
        m_client->setText(window, "_GTK_APPLICATION_ID", QByteArray(100'000, 'x'));
        X11Windows windows(*m_connection, X11Windows::Memory::none);
        const X11Window found = described(windows, window);
        QCOMPARE(found.id, window);
        QCOMPARE(found.instanceName, QByteArray());
        QCOMPARE(found.className, QByteArray());
        QCOMPARE(found.transientFor, xcb_window_t { XCB_NONE });
        QCOMPARE(found.desktop, std::optional<std::uint32_t>());
        QVERIFY(!found.isHidden);
        QCOMPARE(found.gtkApplicationId.size(), 1024);
    }

    void aClassWithoutItsSecondPartIsHalfEmpty()
    {
        const xcb_window_t window = m_client->create({});
        X11Windows windows(*m_connection, X11Windows::Memory::none);
        for (const QByteArray& value : { QByteArray("only"), QByteArray("only\0", 5), QByteArray("only\0\0", 6) }) {
            m_client->setText(window, "WM_CLASS", value);
            QCOMPARE(described(windows, window).instanceName, QByteArray("only"));
            QCOMPARE(described(windows, window).className, QByteArray());
        }
    }

    void windowsThatAreGoneAreLeftOut()
    {
        const xcb_window_t one = m_client->create({ .instanceName = "one", .className = "One" });
        const xcb_window_t gone = m_client->create({});
        const xcb_window_t two = m_client->create({ .instanceName = "two", .className = "Two" });
        m_client->destroy(gone);
        for (const auto memory : { X11Windows::Memory::none, X11Windows::Memory::followed }) {
            X11Windows windows(*m_connection, memory);
            const auto found = windows.describe(std::array { two, gone, xcb_window_t { XCB_NONE }, one });
            QCOMPARE(found.size(), std::size_t(2));
            QCOMPARE(found.at(0).id, two);
            QCOMPARE(found.at(1).id, one);
        }
    }

    void aFollowedMemoryAsksOnlyForWhatHasChanged()
    {
        const xcb_window_t window = m_client->show({ .instanceName = "one", .className = "One" });
        X11Windows windows(*m_connection, X11Windows::Memory::followed);
        QCOMPARE(windows.desktop().activeWindow, window);
        QCOMPARE(described(windows, window).className, QByteArray("One"));
        // The window manager may still be busy with the new window's state.
        const auto isRemembered = [&] {
            (void)windows.desktop();
            const auto before = windows.roundTrips();
            return described(windows, window).className == "One" && windows.roundTrips() == before;
        };
        QVERIFY(QTest::qWaitFor(isRemembered, patience));

        // A title does not tell the application.
        m_client->setText(window, "WM_NAME", "title");
        QVERIFY(isRemembered());

        m_client->setText(window, "WM_CLASS", QByteArray("two\0Two\0", 8));
        QTRY_COMPARE_WITH_TIMEOUT(described(windows, window).className, QByteArray("Two"), patience);

        m_client->destroy(window);
        QTRY_COMPARE_WITH_TIMEOUT(described(windows, window).id, xcb_window_t { XCB_NONE }, patience);
    }

    void aFollowedDesktopIsAskedForOnlyWhenItHasChanged()
    {
        const xcb_window_t one = m_client->show({ .instanceName = "one", .className = "One" });
        const xcb_window_t two = m_client->show({ .instanceName = "two", .className = "Two" });
        X11Windows windows(*m_connection, X11Windows::Memory::followed);
        // The window manager may still be busy with the new windows.
        const auto isRemembered = [&] {
            const auto before = windows.roundTrips();
            (void)windows.desktop();
            return windows.roundTrips() == before;
        };
        const auto comes = [](const auto& condition) { return QTest::qWaitFor(condition, patience); };
        QVERIFY(comes(isRemembered));

        m_client->activate(one);
        QVERIFY(comes([&] { return windows.desktop().activeWindow == one; }));
        m_client->activate(two);
        QVERIFY(comes([&] { return windows.desktop().activeWindow == two && windows.desktop().stacking.back() == two; }));
        const xcb_window_t three = m_client->show({ .instanceName = "three", .className = "Three" });
        QVERIFY(comes([&] { return std::ranges::count(windows.desktop().clients, three) == 1; }));
        m_client->destroy(three);
        QVERIFY(comes([&] { return std::ranges::count(windows.desktop().clients, three) == 0; }));
        QVERIFY(comes(isRemembered));
        // And is what anybody finds who asks for it afresh.
        X11Windows others(*m_connection, X11Windows::Memory::none);
        const X11Desktop fresh = others.desktop();
        const X11Desktop remembered = windows.desktop();
        QCOMPARE(remembered.activeWindow, fresh.activeWindow);
        QCOMPARE(remembered.currentDesktop, fresh.currentDesktop);
        QCOMPARE(remembered.clients, fresh.clients);
        QCOMPARE(remembered.stacking, fresh.stacking);
    }

    void theDesktopTellsClientsAndTheirOrder()
    {
        const xcb_window_t one = m_client->show({ .instanceName = "one", .className = "One" });
        const xcb_window_t two = m_client->show({ .instanceName = "two", .className = "Two" });
        m_client->activate(one);
        QVERIFY(m_client->waitForActive(one));
        X11Windows windows(*m_connection, X11Windows::Memory::none);
        QTRY_COMPARE_WITH_TIMEOUT(windows.desktop().stacking, std::vector<xcb_window_t>({ two, one }), patience);
        const X11Desktop desktop = windows.desktop();
        QCOMPARE(desktop.activeWindow, one);
        QCOMPARE(desktop.clients, std::vector<xcb_window_t>({ one, two }));
        QCOMPARE(desktop.currentDesktop, 0U);

        const auto children = windows.rootChildren();
        const auto frame = windows.topLevelOf(one);
        QVERIFY(frame.has_value());
        const auto other = windows.topLevelOf(two);
        QVERIFY(other.has_value());
        QVERIFY(std::ranges::find(children, *other) < std::ranges::find(children, *frame));
        QVERIFY(std::ranges::find(children, *frame) != children.end());
        QCOMPARE(windows.topLevelOf(m_connection->root()), std::optional<xcb_window_t>());
    }

    void geometryIsOnTheRoot()
    {
        X11Windows windows(*m_connection, X11Windows::Memory::none);
        const xcb_window_t bare = m_client->show({ .geometry = QRect(700, 40, 120, 90), .isOverrideRedirect = true });
        QCOMPARE(windows.geometry(bare), std::optional(QRect(700, 40, 120, 90)));
        const xcb_window_t managed = m_client->show({ .geometry = QRect(300, 200, 320, 240) });
        const std::optional<QRect> geometry = windows.geometry(managed);
        QVERIFY(geometry.has_value());
        QCOMPARE(geometry->size(), QSize(320, 240));
        // Its frame's title is above it.
        QVERIFY(geometry->y() > 200);
        m_client->destroy(managed);
        QCOMPARE(windows.geometry(managed), std::optional<QRect>());
    }

    void iconifyingHidesAWindow()
    {
        const xcb_window_t window = m_client->show({});
        X11Windows windows(*m_connection, X11Windows::Memory::none);
        windows.iconify(std::array { window });
        QTRY_VERIFY_WITH_TIMEOUT(!m_client->isViewable(window), patience);
        QTRY_VERIFY_WITH_TIMEOUT(described(windows, window).isHidden, patience);
    }

    void onlyOurOwnPanelsCount()
    {
        X11Windows windows(*m_connection, X11Windows::Memory::none);
        const xcb_window_t panel = m_client->create({ .geometry = QRect(0, 0, 50, 50), .isOverrideRedirect = true });
        QVERIFY(!windows.isUnmanagedPanelShown());
        markPanelWindow(m_client->connection().raw(), panel);
        m_client->connection().roundTrip();
        QVERIFY(!windows.isUnmanagedPanelShown());
        m_client->map(panel);
        QVERIFY(windows.isUnmanagedPanelShown());
        m_client->unmap(panel);
        QVERIFY(!windows.isUnmanagedPanelShown());

        // Another application that marks its window is not believed.
        StartedApplication other(*m_client, u"xclock"_s);
        QVERIFY(other.waitForWindows(1));
        markPanelWindow(m_client->connection().raw(), other.windows().at(0));
        m_client->connection().roundTrip();
        QVERIFY(!described(windows, other.windows().at(0)).isPanel);
    }

    void watchingTellsOfEventsThroughTheEventLoop()
    {
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_connection->raw(), m_connection->root(), XCB_CW_EVENT_MASK, &events);
        m_connection->roundTrip();
        int changes = 0;
        m_connection->watch([&] {
            while (const X11Event event = m_connection->nextEvent()) {
                const auto* notify = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
                changes += (event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY && notify->atom == m_client->atom("_ORVANTA_TEST") ? 1 : 0;
            }
        });
        for (int i = 1; i <= 3; ++i) {
            m_client->setText(m_client->connection().root(), "_ORVANTA_TEST", "x");
            QTRY_COMPARE_WITH_TIMEOUT(changes, i, patience);
        }
    }

    void aLostConnectionAnswersNothingAndIsWatchedNoLonger()
    {
        const xcb_window_t window = m_client->show({ .instanceName = "one", .className = "One" });
        int calls = 0;
        m_connection->watch([&] {
            ++calls;
            while (m_connection->nextEvent()) { }
        });
        QVERIFY(!m_connection->isLost());
        QCOMPARE(::shutdown(xcb_get_file_descriptor(m_connection->raw()), SHUT_RDWR), 0);
        QTRY_VERIFY_WITH_TIMEOUT(m_connection->isLost(), patience);
        const int before = calls;
        for (int i = 0; i < 100; ++i)
            QCoreApplication::processEvents();
        QCOMPARE(calls, before);

        X11Windows windows(*m_connection, X11Windows::Memory::followed);
        QCOMPARE(windows.activeWindow(), xcb_window_t { XCB_NONE });
        QCOMPARE(windows.focusWindow(), xcb_window_t { XCB_NONE });
        QVERIFY(windows.desktop().clients.empty());
        QVERIFY(windows.describe(std::array { window }).empty());
        QVERIFY(windows.rootChildren().empty());
        QCOMPARE(windows.geometry(window), std::optional<QRect>());
        QCOMPARE(windows.topLevelOf(window), std::optional<xcb_window_t>());
        QVERIFY(!windows.isUnmanagedPanelShown());
        windows.iconify(std::array { window });
    }

    void aDisplayThatDoesNotExistIsAnError()
    {
        QCOMPARE(X11Connection::open(":65000").error(), PlatformError { u"The X display cannot be used: nothing answers there."_s });
        QCOMPARE(X11Connection::open("no display").error(), PlatformError { u"The X display cannot be used: its name is not understood."_s });
    }
};

QTEST_MAIN(TestX11Windows)
#include "test_x11_windows.moc"
