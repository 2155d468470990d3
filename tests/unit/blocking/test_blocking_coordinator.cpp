#include "blocking/blocking_coordinator.h"

#include "support/fake_overlay_panels.h"
#include "support/fake_running_applications.h"
#include "support/fake_screens.h"
#include "support/off_the_main_thread.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

const Screen left { 11, QRect(0, 0, 1920, 1080) };
const Screen right { 22, QRect(1920, 0, 2560, 1440) };
const BlockedTarget editor = BlockedTarget::application(u"org.example.Editor.desktop"_s);

} // namespace

class TestBlockingCoordinator : public QObject {
    Q_OBJECT

private:
    struct House {
        CallLog log;
        FakeScreens screens { { left, right } };
        FakeOverlayPanels panels { log };
        FakeRunningApplications running { log };
        std::unique_ptr<BlockingCoordinator> coordinator = std::make_unique<BlockingCoordinator>(screens, panels, running);
    };

private Q_SLOTS:
    void coversTheDisplayAskedForOverItsWholeFrame()
    {
        House house;
        house.coordinator->present(editor, right.number);
        QCOMPARE(house.log.take(),
            QStringList({ u"panels.make"_s, u"panel.setFrame 1920,0 2560x1440"_s, u"panel.setContent acknowledge"_s, u"panel.orderFront"_s }));
    }

    void aSecondPresentationUsesThePanelAgainWithFreshContentAndFrame()
    {
        House house;
        house.coordinator->present(editor, left.number);
        house.screens.disconnect(left.number);
        house.screens.connect({ left.number, QRect(0, 0, 3840, 2160) });
        (void)house.log.take();
        house.coordinator->present(editor, left.number);
        QCOMPARE(house.log.take(), QStringList({ u"panel.setFrame 0,0 3840x2160"_s, u"panel.setContent acknowledge"_s, u"panel.orderFront"_s }));
        QCOMPARE(house.panels.panels().size(), 1U);
        QCOMPARE(house.panels.panels().front()->contents, 2);
    }

    void anUnknownNumberTakesTheMainDisplayAndIsFiledUnderItself()
    {
        House house;
        house.screens.setKeyWindowScreen(right.number);
        house.coordinator->present(editor, 0);
        QCOMPARE(house.panels.panels().front()->frame, right.frame);

        // Under its own number: the display's own number has a panel of its own, and 0 uses the first one again.
        house.coordinator->present(editor, right.number);
        QCOMPARE(house.panels.panels().size(), 2U);
        house.coordinator->present(editor, 0);
        QCOMPARE(house.panels.panels().size(), 2U);
        QCOMPARE(house.panels.panels().front()->fronts, 2);
    }

    void withoutAnyDisplayNothingIsShownOrStored()
    {
        House house;
        house.screens.disconnectAll();
        house.coordinator->present(editor, left.number);
        QCOMPARE(house.log.take(), QStringList());
        house.coordinator->dismiss();
        QCOMPARE(house.log.take(), QStringList());
    }

    void dismissHidesEveryPanelAndKeepsThem()
    {
        House house;
        house.coordinator->present(editor, left.number);
        house.coordinator->present(editor, right.number);
        QCOMPARE(house.panels.shownCount(), 2);
        (void)house.log.take();
        house.coordinator->dismiss();
        QCOMPARE(house.log.take(), QStringList({ u"panel.orderOut"_s, u"panel.orderOut"_s }));
        QCOMPARE(house.panels.shownCount(), 0);
        QVERIFY(house.panels.panels()[0]->alive && house.panels.panels()[0]->hasContent);
        QVERIFY(house.panels.panels()[1]->alive && house.panels.panels()[1]->hasContent);
    }

    void dismissWithoutPanelsDoesNothing()
    {
        House house;
        house.coordinator->dismiss();
        QCOMPARE(house.log.take(), QStringList());
    }

    void acknowledgingHidesTheApplicationAndThenEveryPanel()
    {
        House house;
        house.running.start({ .bundleIdentifier = u"org.example.Editor.desktop"_s, .localizedName = u"Editor"_s });
        house.running.start({ .bundleIdentifier = u"org.example.Other.desktop"_s, .localizedName = u"Other"_s });
        house.running.start({ .bundleIdentifier = u"org.example.Editor.desktop"_s, .localizedName = u"Editor"_s });
        house.coordinator->present(editor, left.number);
        house.coordinator->present(editor, right.number);
        (void)house.log.take();
        (*house.panels.panels().front()->acknowledge)();
        QCOMPARE(house.log.take(), QStringList({ u"hide org.example.Editor.desktop"_s, u"panel.orderOut"_s, u"panel.orderOut"_s }));
        QVERIFY(house.running.isHidden(u"org.example.Editor.desktop"_s));
        QVERIFY(!house.running.isHidden(u"org.example.Other.desktop"_s));
    }

    void aDomainHasNoButton()
    {
        House house;
        house.coordinator->present(BlockedTarget::domain(u"news.example"_s, u"news"_s), left.number);
        QCOMPARE(
            house.log.take(), QStringList({ u"panels.make"_s, u"panel.setFrame 0,0 1920x1080"_s, u"panel.setContent"_s, u"panel.orderFront"_s }));
        QVERIFY(!house.panels.panels().front()->acknowledge);
    }

    void theButtonDoesNothingOnceTheCoordinatorIsGone()
    {
        House house;
        house.coordinator->present(editor, left.number);
        Callback<> acknowledge = std::move(*house.panels.panels().front()->acknowledge);
        house.coordinator.reset();
        (void)house.log.take();
        acknowledge();
        QCOMPARE(house.log.take(), QStringList());
    }

    void offTheMainThreadNothingIsDone()
    {
        House house;
        QCOMPARE(lastWordsOffTheMainThread([&house] { house.coordinator->present(editor, left.number); }),
            QByteArray("BlockingCoordinator::present was called outside the main thread"));
        QCOMPARE(lastWordsOffTheMainThread([&house] { house.coordinator->dismiss(); }),
            QByteArray("BlockingCoordinator::dismiss was called outside the main thread"));
        QCOMPARE(lastWordsOffTheMainThread([] { }), QByteArray());
    }

    void targetsAreEqualCaseByCase()
    {
        QCOMPARE(BlockedTarget::application(u"a.b"_s), BlockedTarget::application(u"a.b"_s));
        QVERIFY(BlockedTarget::application(u"a.b"_s) != BlockedTarget::application(u"a.B"_s));
        QCOMPARE(BlockedTarget::domain(u"a"_s, u"b"_s), BlockedTarget::domain(u"a"_s, u"b"_s));
        QVERIFY(BlockedTarget::domain(u"a"_s, u"b"_s) != BlockedTarget::domain(u"a"_s, u"c"_s));
        QVERIFY(BlockedTarget::domain(u"a.b"_s, QString()) != BlockedTarget::application(u"a.b"_s));
    }
};

QTEST_GUILESS_MAIN(TestBlockingCoordinator)
#include "test_blocking_coordinator.moc"
