#include "platform/linux/qt_screens.h"
#include "support/contracts/screens_contract.h"
#include "support/x11_test_desktop.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

/// On a real X server with two monitors, L and R, in the pixels of the server and with a scale.
class TestQtScreens : public ScreensContract {
    Q_OBJECT

    std::unique_ptr<X11TestClient> m_client;
    xcb_window_t m_window = XCB_NONE;

    std::unique_ptr<Screens> makeScreens() override
    {
        closeWindow();
        if (QGuiApplication::screens().size() != 2) {
            (void)run(u"xrandr"_s, { u"--output"_s, u"screen"_s, u"--auto"_s });
            (void)run(u"xrandr"_s, { u"--setmonitor"_s, u"L"_s, u"960/254x1080/285+0+0"_s, u"screen"_s });
            plugInRight();
        }
        return std::make_unique<QtScreens>();
    }
    void disconnectRight(Screens&) override { QVERIFY(run(u"xrandr"_s, { u"--delmonitor"_s, u"R"_s })); }
    void connectRight(Screens&) override { plugInRight(); }
    void disconnectAll(Screens&) override
    {
        QVERIFY(run(u"xrandr"_s, { u"--delmonitor"_s, u"R"_s }));
        QVERIFY(run(u"xrandr"_s, { u"--delmonitor"_s, u"L"_s }));
        // It complains that no screen may be empty, after the output is off.
        (void)run(u"xrandr"_s, { u"--output"_s, u"screen"_s, u"--off"_s });
    }
    void putKeyWindow(Screens&, const QRect& frame) override
    {
        closeWindow();
        // Half beyond its display's left edge, but with its centre inside.
        m_window = m_client->show({ .geometry = QRect(std::max(frame.x() - 90, 0), 300, 200, 150) });
        QVERIFY(m_window != XCB_NONE);
    }
    [[nodiscard]] std::vector<QRect> frames() const override
    {
        const double scale = qEnvironmentVariable("QT_SCALE_FACTOR", u"1"_s).toDouble();
        const QSize size(qRound(960 / scale), qRound(1080 / scale));
        return { QRect(QPoint(0, 0), size), QRect(QPoint(960, 0), size) };
    }

    void closeWindow()
    {
        if (m_window != XCB_NONE)
            m_client->destroy(std::exchange(m_window, XCB_NONE));
        QVERIFY(m_client->waitForNoActive());
    }

    static void plugInRight() { QVERIFY(run(u"xrandr"_s, { u"--setmonitor"_s, u"R"_s, u"960/254x1080/285+960+0"_s, u"none"_s })); }

private Q_SLOTS:
    void initTestCase() { m_client = std::make_unique<X11TestClient>(); }
    void cleanupTestCase() { m_client.reset(); }

    void theNumbersAreThoseOfTheOutputsNames()
    {
        const auto screens = makeScreens();
        QTRY_COMPARE_WITH_TIMEOUT(screens->all().size(), std::size_t(2), patience);
        QCOMPARE(screens->all().at(0).number, screenNumberOfName(u"L"_s));
        QCOMPARE(screens->all().at(1).number, screenNumberOfName(u"R"_s));
    }

    void aWindowThatNoManagerLooksAfterMayHoldTheKeyboard()
    {
        const auto screens = makeScreens();
        QTRY_COMPARE_WITH_TIMEOUT(screens->all().size(), std::size_t(2), patience);
        m_window = m_client->show({ .geometry = QRect(1200, 10, 50, 50), .isOverrideRedirect = true });
        m_client->setInputFocus(m_window);
        QTRY_COMPARE_WITH_TIMEOUT(screens->main(), std::optional(screens->all().at(1)), patience);
    }

    void withoutAnXServerToAskThePrimaryDisplayIsTheMainOne()
    {
        (void)makeScreens();
        const QtScreens screens([] { return std::nullopt; });
        QTRY_COMPARE_WITH_TIMEOUT(screens.all().size(), std::size_t(2), patience);
        QCOMPARE(screens.main(), std::optional(screens.all().at(0)));
    }
};

QTEST_MAIN(TestQtScreens)
#include "test_qt_screens.moc"
