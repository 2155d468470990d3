#include "blocking/breathing_clock.h"

#include <QQuickWindow>
#include <QTest>

#include <memory>

using namespace orvanta;

namespace {

constexpr int patience = 15'000; // milliseconds
constexpr int manyFrames = 12;

/// A window with a clock in it and something that is redrawn with each level, as the light is.
class ClockWindow {
public:
    ClockWindow()
    {
        m_window.resize(40, 40);
        clock->setParentItem(m_window.contentItem());
        QObject::connect(clock.get(), &BreathingClock::levelChanged, &m_window, &QQuickWindow::update);
        QObject::connect(&m_window, &QQuickWindow::frameSwapped, &m_window, [this] { ++frames; });
    }

    [[nodiscard]] bool show()
    {
        m_window.show();
        return QTest::qWaitForWindowExposed(&m_window);
    }

    [[nodiscard]] QQuickWindow& window() { return m_window; }

    int frames = 0;

private:
    QQuickWindow m_window;

public:
    std::unique_ptr<BreathingClock> clock = std::make_unique<BreathingClock>();
};

/// How many frames `still` shows while another window breathes for a good while; what was under way before is let pass.
int framesMeanwhile(ClockWindow& still)
{
    ClockWindow breathing;
    if (!breathing.show() || !QTest::qWaitFor([&] { return breathing.frames >= 3; }, patience))
        return -1;
    still.frames = 0;
    breathing.frames = 0;
    return QTest::qWaitFor([&] { return breathing.frames >= manyFrames; }, patience) ? still.frames : -1;
}

} // namespace

class TestBreathingClock : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keepsAVisibleWindowBreathing()
    {
        ClockWindow window;
        QVERIFY(!window.clock->isRunning());
        QVERIFY(window.show());
        QVERIFY(window.clock->isRunning());
        const double before = window.clock->level();
        QTRY_VERIFY_WITH_TIMEOUT(window.frames >= manyFrames, patience);
        QVERIFY(window.clock->level() != before);
    }

    void asksForNoFrameWithReducedMotion()
    {
        ClockWindow window;
        window.clock->setReduceMotion(true);
        QVERIFY(window.show());
        QTRY_VERIFY_WITH_TIMEOUT(window.frames > 0, patience);
        QVERIFY(!window.clock->isRunning());
        QCOMPARE(framesMeanwhile(window), 0);
    }

    void asksForNoFrameWhileTheWindowIsHidden()
    {
        ClockWindow window;
        QVERIFY(window.show());
        QTRY_VERIFY_WITH_TIMEOUT(window.frames > 0, patience);
        window.window().hide();
        QVERIFY(!window.clock->isRunning());
        QCOMPARE(framesMeanwhile(window), 0);
        QVERIFY(window.show());
        QVERIFY(window.clock->isRunning());
        QTRY_VERIFY_WITH_TIMEOUT(window.frames > 1, patience);
    }

    void asksForNoFrameWhileTheScreenIsNotShownInItsWindow()
    {
        ClockWindow window;
        QVERIFY(window.show());
        QTRY_VERIFY_WITH_TIMEOUT(window.frames > 0, patience);
        window.clock->setVisible(false);
        QVERIFY(!window.clock->isRunning());
        QCoreApplication::processEvents();
        QCOMPARE(framesMeanwhile(window), 0);
        window.clock->setVisible(true);
        QVERIFY(window.clock->isRunning());
    }

    void stopsWhenItLeavesItsWindow()
    {
        ClockWindow window;
        QVERIFY(window.show());
        QVERIFY(window.clock->isRunning());
        window.clock->setParentItem(nullptr);
        QVERIFY(!window.clock->isRunning());
        window.clock->setParentItem(window.window().contentItem());
        QVERIFY(window.clock->isRunning());
    }

    void outlivesItsWindow()
    {
        auto clock = std::make_unique<BreathingClock>();
        {
            QQuickWindow window;
            clock->setParentItem(window.contentItem());
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            QVERIFY(clock->isRunning());
        }
        QVERIFY(!clock->isRunning());
    }

    void readsTheTimeItIsGiven()
    {
        BreathingClock clock;
        clock.setTimeSource([] { return 4.0; });
        QCOMPARE(clock.level(), 1.0);
        QCOMPARE(clock.innerGlowOpacity(), 0.68);
        QCOMPARE(clock.middleGlowOpacity(), 0.22);
        QCOMPARE(clock.glowScale(), 1.08);
        QCOMPARE(clock.glowLayerOpacity(), 0.92);
        clock.setTimeSource([] { return 12.0; });
        QCOMPARE(clock.level(), 0.5);
    }

    void standsAtItsReducedLevelWithReducedMotion()
    {
        BreathingClock clock;
        clock.setTimeSource([] { return 4.0; });
        clock.setReduceMotion(true);
        QCOMPARE(clock.level(), 0.62);
        QCOMPARE(clock.innerGlowOpacity(), 0.5508);
        QCOMPARE(clock.middleGlowOpacity(), 0.182);
        QCOMPARE(clock.glowScale(), 0.9812);
        QCOMPARE(clock.glowLayerOpacity(), 0.6996);
        clock.setReduceMotion(false);
        QCOMPARE(clock.level(), 1.0);
    }

    void showsTheTimeOfTheMomentWhenItIsShownAgain()
    {
        double now = 4;
        ClockWindow window;
        window.clock->setTimeSource([&now] { return now; });
        QCOMPARE(window.clock->level(), 1.0);
        now = 2;
        QVERIFY(window.show());
        QCOMPARE(window.clock->level(), 0.5);
    }

    void twoScreensBreatheInStep()
    {
        double now = 1;
        BreathingClock one;
        BreathingClock other;
        one.setTimeSource([&now] { return now; });
        other.setTimeSource([&now] { return now + 10; });
        QCOMPARE(one.level(), other.level());
    }
};

QTEST_MAIN(TestBreathingClock)
#include "test_breathing_clock.moc"
