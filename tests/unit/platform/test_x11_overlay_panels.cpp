#include "platform/linux/x11_cover_inspection.h"
#include "platform/linux/x11_overlay_panels.h"
#include "platform/linux/x11_panel_windows.h"
#include "support/contracts/overlay_panels_contract.h"
#include "support/key_content.h"
#include "support/x11_test_desktop.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QScreen>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

/// The covers on a real X server under a real window manager; with --no-wm (ORVANTA_TEST_NO_WM set), without one.
class TestX11OverlayPanels : public OverlayPanelsContract {
    Q_OBJECT

protected:
    std::unique_ptr<OverlayPanels> makePanels() override
    {
        auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        return std::make_unique<X11OverlayPanels>(m_contents, x11->connection(), m_panelWindows);
    }

    [[nodiscard]] int shownPanels() override
    {
        int shown = 0;
        for (QWindow* window : covers())
            shown += m_client.isViewable(static_cast<xcb_window_t>(window->winId())) ? 1 : 0;
        return shown;
    }

    [[nodiscard]] QRect shownFrame() override { return m_client.windows().geometry(shownWindow()).value_or(QRect()); }

    [[nodiscard]] bool hasButton() override
    {
        const KeyItem* item = shownItem();
        return item && item->acknowledge.has_value();
    }

    void pressButton() override
    {
        QTRY_VERIFY_WITH_TIMEOUT(inspect().hasKeyboard, patience);
        QVERIFY(run(u"xdotool"_s, { u"key"_s, u"Return"_s }));
    }

    void askToClose() override { QVERIFY(run(u"wmctrl"_s, { u"-i"_s, u"-c"_s, u"0x%1"_s.arg(shownWindow(), 0, 16) })); }

    [[nodiscard]] QRect display() const override { return QGuiApplication::primaryScreen()->geometry(); }
    [[nodiscard]] QRect otherDisplay() const override
    {
        const auto screens = QGuiApplication::screens();
        return screens.size() > 1 ? screens.at(1)->geometry() : display().adjusted(display().width() / 2, 0, 0, 0);
    }

private:
    static constexpr int patience = OverlayPanelsContract::patience;

    [[nodiscard]] static QList<QQuickWindow*> covers()
    {
        QList<QQuickWindow*> result;
        for (QWindow* window : QGuiApplication::topLevelWindows())
            if (auto* cover = qobject_cast<QQuickWindow*>(window); cover && cover->handle())
                result << cover;
        return result;
    }
    [[nodiscard]] QQuickWindow* shownCover()
    {
        for (QQuickWindow* cover : covers())
            if (cover->isVisible())
                return cover;
        return nullptr;
    }
    [[nodiscard]] KeyItem* shownItem()
    {
        for (QQuickItem* item : shownCover()->contentItem()->childItems())
            if (auto* content = dynamic_cast<KeyItem*>(item); content && content->isVisible())
                return content;
        return nullptr;
    }
    [[nodiscard]] xcb_window_t shownWindow() { return shownCover() ? static_cast<xcb_window_t>(shownCover()->winId()) : XCB_NONE; }
    [[nodiscard]] CoverFacts inspect() { return inspectCover(m_client.connection().raw(), m_client.connection().root(), shownWindow()); }
    [[nodiscard]] std::optional<CoverDefect> defect() { return coverDefect(inspect(), display(), m_panelWindows); }

    /// Without a defect for a while: what was asked of the window manager last may still be on its way.
    [[nodiscard]] bool settles()
    {
        QElapsedTimer sound;
        return QTest::qWaitFor(
            [&] {
                if (defect())
                    sound.invalidate();
                else if (!sound.isValid())
                    sound.start();
                return sound.isValid() && sound.elapsed() > 500;
            },
            patience);
    }

    [[nodiscard]] std::unique_ptr<OverlayPanel> present(OverlayPanels& panels)
    {
        auto panel = panels.make();
        panel->setFrame(display());
        panel->setContent([] { });
        panel->orderFront();
        return panel;
    }

    KeyContentFactory m_contents;
    PanelWindows m_panelWindows;
    X11TestClient m_client;

    /// What the next cover to be shown will show, while that is hidden.
    [[nodiscard]] static KeyItem* nextItem()
    {
        for (QQuickWindow* cover : covers())
            for (QQuickItem* item : cover->contentItem()->childItems())
                if (auto* content = dynamic_cast<KeyItem*>(item); content && content->isVisible() && !cover->isVisible())
                    return content;
        return nullptr;
    }

private Q_SLOTS:
    void theNextScreenIsPaintedWhileNothingIsShown()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        QTRY_VERIFY_WITH_TIMEOUT(nextItem() && nextItem()->painted == 1, patience);
        QCOMPARE(shownPanels(), 0);

        KeyItem* first = nextItem();
        panel->setFrame(display());
        panel->setContent([] { });
        panel->orderFront();
        QTRY_VERIFY_WITH_TIMEOUT(!defect(), patience);
        QCOMPARE(shownItem(), first);

        panel->orderOut();
        QTRY_VERIFY_WITH_TIMEOUT(nextItem() && nextItem()->painted == 1, patience);
        QCOMPARE(shownPanels(), 0);
    }

    void coversAFullScreenClientThatHasTheKeyboard()
    {
        const xcb_window_t game = m_client.show({ .instanceName = "game", .className = "Game" });
        QVERIFY(run(u"wmctrl"_s, { u"-i"_s, u"-r"_s, u"0x%1"_s.arg(game, 0, 16), u"-b"_s, u"add,fullscreen"_s }));
        QTRY_COMPARE_WITH_TIMEOUT(m_client.windows().geometry(game), std::optional(display()), patience);
        const auto panels = makePanels();
        const auto panel = present(*panels);
        QTRY_VERIFY_WITH_TIMEOUT(!defect(), patience);
        m_client.destroy(game);
    }

    void staysOnEveryVirtualDesktop()
    {
        const auto panels = makePanels();
        const auto panel = present(*panels);
        QTRY_VERIFY_WITH_TIMEOUT(!defect(), patience);
        for (const QString& desktop : { u"2"_s, u"0"_s }) {
            QVERIFY(run(u"wmctrl"_s, { u"-s"_s, desktop }));
            QTRY_COMPARE_WITH_TIMEOUT(m_client.windows().desktop().currentDesktop, desktop.toUInt(), patience);
            QTRY_VERIFY_WITH_TIMEOUT(inspect().isViewable, patience);
        }
    }

    void aWindowThatComesUpLaterIsCoveredWhenPresentedAgain()
    {
        const auto panels = makePanels();
        const auto panel = present(*panels);
        QTRY_VERIFY_WITH_TIMEOUT(!defect(), patience);
        const xcb_window_t late = m_client.create({ .instanceName = "late", .className = "Late" });
        m_client.map(late);
        QTRY_VERIFY_WITH_TIMEOUT(m_client.isViewable(late), patience);
        panel->setContent([] { });
        panel->orderFront();
        QTRY_VERIFY_WITH_TIMEOUT(!defect(), patience);
        m_client.destroy(late);
    }

    void aScreenThatComesWhileTheFrameChangesFillsTheDisplayInTheEnd()
    {
        const auto panels = makePanels();
        const auto panel = present(*panels);
        QTRY_VERIFY_WITH_TIMEOUT(!defect(), patience);
        panel->setFrame(display().adjusted(0, 0, 0, -display().height() / 3));
        panel->setContent([] { });
        panel->setFrame(display());
        panel->orderFront();
        QVERIFY(settles());
        QTRY_COMPARE_WITH_TIMEOUT(shownItem()->size(), QSizeF(display().size()), patience);
    }

    void takesTheKeyboardBackFromWhoeverTookIt()
    {
        const auto panels = makePanels();
        const auto panel = present(*panels);
        QTRY_VERIFY_WITH_TIMEOUT(!defect(), patience);
        m_client.setInputFocus(m_client.connection().root());
        QTRY_VERIFY_WITH_TIMEOUT(inspect().hasKeyboard, patience);
    }

    void theNextScreenIsMadeAheadOfNeed()
    {
        const auto panels = makePanels();
        QTRY_VERIFY_WITH_TIMEOUT(!covers().isEmpty(), patience);
        const int before = m_contents.made;
        const auto panel = panels->make();
        panel->setFrame(display());
        panel->setContent(std::nullopt);
        QCOMPARE(m_contents.made, before);
    }

    void panelsAreKnownAsSuchAsLongAsTheyExist()
    {
        const auto panels = makePanels();
        auto panel = present(*panels);
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        const xcb_window_t window = shownWindow();
        QVERIFY(m_panelWindows.contains(window));
        panel.reset();
        QVERIFY(!m_panelWindows.contains(window));
    }

    void eachDefectIsNamed_data()
    {
        QTest::addColumn<int>("defect"); // -1: none
        QTest::addColumn<bool>("isViewable");
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<bool>("hasKeyboard");
        QTest::addColumn<QRect>("above"); // empty: nothing above
        const QRect whole(0, 0, 800, 600);
        QTest::newRow("none") << -1 << true << whole << true << QRect();
        QTest::newRow("not mapped") << static_cast<int>(CoverDefect::notMapped) << false << whole << true << QRect();
        QTest::newRow("too small") << static_cast<int>(CoverDefect::wrongFrame) << true << QRect(0, 20, 800, 580) << true << QRect();
        QTest::newRow("beneath") << static_cast<int>(CoverDefect::beneathAWindow) << true << whole << true << QRect(700, 500, 300, 300);
        QTest::newRow("a window above on another display") << -1 << true << whole << true << QRect(800, 0, 300, 300);
        QTest::newRow("no keyboard") << static_cast<int>(CoverDefect::noKeyboard) << true << whole << false << QRect();
    }

    void eachDefectIsNamed()
    {
        QFETCH(int, defect);
        QFETCH(bool, isViewable);
        QFETCH(QRect, frame);
        QFETCH(bool, hasKeyboard);
        QFETCH(QRect, above);
        CoverFacts facts { .isViewable = isViewable, .frame = frame, .hasKeyboard = hasKeyboard, .keyboard = XCB_NONE, .windowsAbove = {} };
        if (!above.isEmpty())
            facts.windowsAbove.push_back({ 77, above });
        PanelWindows panels;
        const auto found = coverDefect(facts, QRect(0, 0, 800, 600), panels);
        QCOMPARE(found ? static_cast<int>(*found) : -1, defect);
        if (found)
            QVERIFY(!coverDefectText(*found).isEmpty());
        panels.add(77); // another of our covers may stand above
        if (found == CoverDefect::beneathAWindow)
            QVERIFY(!coverDefect(facts, QRect(0, 0, 800, 600), panels));
    }
};

QTEST_MAIN(TestX11OverlayPanels)
#include "test_x11_overlay_panels.moc"
