#pragma once

#include "platform/overlay_panels.h"

#include <QObject>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every OverlayPanels does.
class OverlayPanelsContract : public QObject {
    Q_OBJECT

protected:
    /// Called anew for each test.
    virtual std::unique_ptr<OverlayPanels> makePanels() = 0;

    /// How many panels are on screen.
    [[nodiscard]] virtual int shownPanels() = 0;
    /// Where the panel that is on screen stands.
    [[nodiscard]] virtual QRect shownFrame() = 0;
    /// Whether what the panel on screen shows has a button.
    [[nodiscard]] virtual bool hasButton() = 0;
    /// Presses that button as a user does, by the keyboard where there is one.
    virtual void pressButton() = 0;
    /// Asks the panel that is on screen to close, as a window manager does for its user.
    virtual void askToClose() = 0;

    [[nodiscard]] virtual QRect display() const = 0;
    /// Another display; where there is only one, another part of it.
    [[nodiscard]] virtual QRect otherDisplay() const = 0;

    static constexpr int patience = 15'000;

private Q_SLOTS:
    void aNewPanelIsHidden()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        QVERIFY(panel);
        QCOMPARE(shownPanels(), 0);
    }

    void orderedFrontItFillsItsFrameAndHasTheKeyboard()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        int pressed = 0;
        panel->setFrame(display());
        panel->setContent([&pressed] { ++pressed; });
        panel->orderFront();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        QTRY_COMPARE_WITH_TIMEOUT(shownFrame(), display(), patience);
        QVERIFY(hasButton());
        pressButton();
        QTRY_COMPARE_WITH_TIMEOUT(pressed, 1, patience);
    }

    void withoutAnActionThereIsNoButton()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        panel->setFrame(display());
        panel->setContent(std::nullopt);
        panel->orderFront();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        QVERIFY(!hasButton());
    }

    void orderedOutItIsGoneAndCanComeBackWithOtherContent()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        int first = 0;
        int second = 0;
        panel->setFrame(display());
        panel->setContent([&first] { ++first; });
        panel->orderFront();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        panel->orderOut();
        panel->orderOut();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 0, patience);

        panel->setFrame(display());
        panel->setContent([&second] { ++second; });
        panel->orderFront();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        QTRY_COMPARE_WITH_TIMEOUT(shownFrame(), display(), patience);
        pressButton();
        QTRY_COMPARE_WITH_TIMEOUT(second, 1, patience);
        QCOMPARE(first, 0);
    }

    void newContentTakesThePlaceOfWhatIsShown()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        int first = 0;
        int second = 0;
        panel->setFrame(display());
        panel->setContent([&first] { ++first; });
        panel->orderFront();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        panel->setContent([&second] { ++second; });
        panel->orderFront();
        pressButton();
        QTRY_COMPARE_WITH_TIMEOUT(second, 1, patience);
        QCOMPARE(first, 0);
        QCOMPARE(shownPanels(), 1);
    }

    void shownAlreadyItGoesToTheDisplayThatItIsPresentedFor()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        int pressed = 0;
        for (const QRect& frame : { display(), otherDisplay() }) {
            panel->setFrame(frame);
            panel->setContent([&pressed] { ++pressed; });
            panel->orderFront();
            // A window manager may have other ideas in between, so it counts once.
            QVERIFY(QTest::qWaitFor([&] { return shownPanels() == 1 && shownFrame() == frame; }, patience));
        }
        pressButton();
        QTRY_COMPARE_WITH_TIMEOUT(pressed, 1, patience);
    }

    void theActionMayOrderThePanelOut()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        panel->setFrame(display());
        panel->setContent([&panel] { panel->orderOut(); });
        panel->orderFront();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        pressButton();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 0, patience);
    }

    void theUserCannotCloseIt()
    {
        const auto panels = makePanels();
        const auto panel = panels->make();
        int pressed = 0;
        panel->setFrame(display());
        panel->setContent([&pressed] { ++pressed; });
        panel->orderFront();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        askToClose();
        pressButton(); // answered after the request to close
        QTRY_COMPARE_WITH_TIMEOUT(pressed, 1, patience);
        QCOMPARE(shownPanels(), 1);
    }

    void aPanelThatIsDestroyedIsGone()
    {
        const auto panels = makePanels();
        auto panel = panels->make();
        panel->setFrame(display());
        panel->setContent(std::nullopt);
        panel->orderFront();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 1, patience);
        panel.reset();
        QTRY_COMPARE_WITH_TIMEOUT(shownPanels(), 0, patience);
    }
};

} // namespace orvanta::testing
