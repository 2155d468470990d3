#include "macos/gnustep/fakes/fake_panels.h"
#include "macos/gnustep/fakes/fake_system.h"
#include "platform/macos/appkit_overlay_panels.h"
#include "support/contracts/overlay_panels_contract.h"
#include "support/key_content.h"
#include "support/off_the_main_thread.h"

#include <QGuiApplication>
#include <QQuickWindow>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestAppKitOverlayPanels : public OverlayPanelsContract {
    Q_OBJECT

    std::unique_ptr<OverlayPanels> makePanels() override
    {
        mac::begin();
        return std::make_unique<AppKitOverlayPanels>(m_contents);
    }

    static QQuickWindow& window() { return dynamic_cast<QQuickWindow&>(*mac::shownPanelWindow()); }
    static KeyItem& item() { return dynamic_cast<KeyItem&>(*window().contentItem()->childItems().constLast()); }

    [[nodiscard]] int shownPanels() override { return mac::shownPanels(); }
    [[nodiscard]] QRect shownFrame() override { return mac::shownPanelFrame(); }
    [[nodiscard]] bool hasButton() override { return item().acknowledge.has_value(); }
    void pressButton() override { QTest::keyClick(&window(), Qt::Key_Return); }
    void askToClose() override { window().close(); }
    [[nodiscard]] QRect display() const override { return { 0, 0, 800, 600 }; }
    [[nodiscard]] QRect otherDisplay() const override { return { 800, 0, 1024, 768 }; }

    KeyContentFactory m_contents;

private Q_SLOTS:
    void aPanelIsMadeAndSetUpInThisOrder()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        QCOMPARE(mac::calls(),
            QStringList({ u"panel 0,0 0x0 style 128 backing 2 defer NO"_s, u"level 1000"_s, u"collectionBehavior 257"_s, u"opaque YES"_s,
                u"hasShadow NO"_s, u"hidesOnDeactivate NO"_s, u"becomesKeyOnlyIfNeeded NO"_s, u"releasedWhenClosed NO"_s }));
    }

    void aPresentationIsFrameThenContentThenKeyAndFront()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        mac::calls().clear();
        panel->setFrame({ 1512, -98, 1920, 1080 });
        panel->setContent(std::nullopt);
        panel->orderFront();
        panel->orderOut();
        QCOMPARE(mac::calls(),
            QStringList({ u"frame 1512,-98 1920x1080 display YES"_s, u"contentView one"_s, u"makeFirstResponder"_s, u"makeKeyAndOrderFront none"_s,
                u"orderOut none"_s }));
    }

    void thePanelTakesTheKeyboardAndGivesItToItsContent()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        panel->setFrame(display());
        panel->setContent(std::nullopt);
        panel->orderFront();
        QVERIFY(mac::shownPanelCanBecomeKey());
        QVERIFY(mac::isShownPanelWindowFirstResponder());
        QVERIFY(window().isVisible());
    }

    void offTheMainThreadThePanelStopsTheProgram()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        panel->setFrame(display());
        panel->setContent(std::nullopt);
        panel->orderFront();
        QCOMPARE(lastWordsOffTheMainThread([] { (void)mac::shownPanelCanBecomeKey(); }),
            QByteArray("-[InteractiveBlockingPanel canBecomeKeyWindow] was called outside the main thread"));
    }

    void theContentFollowsThePanelsSize()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        panel->setFrame(display());
        panel->setContent(std::nullopt);
        panel->orderFront();
        QTRY_COMPARE(item().size(), QSizeF(800, 600));
        panel->setFrame({ 0, 0, 1024, 768 });
        QTRY_COMPARE(item().size(), QSizeF(1024, 768));
    }

    void eachContentIsAFreshScreenAndTheOldOneGoes()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        const int before = m_contents.made;
        panel->setFrame(display());
        panel->setContent(std::nullopt);
        const QPointer<QWindow> first = [&] {
            panel->orderFront();
            return mac::shownPanelWindow();
        }();
        panel->setContent(std::nullopt);
        QCOMPARE(m_contents.made, before + 2);
        QVERIFY(mac::shownPanelWindow() != first);
        QTRY_VERIFY(first.isNull());
    }
};

QTEST_MAIN(TestAppKitOverlayPanels)
#include "test_macos_panels.moc"
