#include "blocking/blocking_view_factory.h"

#include "blocking/breathing_clock.h"
#include "support/fake_motion_preference.h"

#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;

namespace {

constexpr int patience = 15'000; // milliseconds

QQuickItem* reply(OverlayContent& content)
{
    return content.item().findChild<QQuickItem*>(QStringLiteral("acknowledgeApplicationBlock"));
}

BreathingClock& clock(OverlayContent& content)
{
    return *content.item().findChild<BreathingClock*>(QStringLiteral("breathing"));
}

} // namespace

class TestBlockingViewFactory : public QObject {
    Q_OBJECT

    QQmlEngine m_engine;
    FakeMotionPreference m_motion;

private Q_SLOTS:
    void init() { m_motion.setReduceMotion(false); }

    void makesAScreenWithoutAReply()
    {
        BlockingViewFactory factory(m_engine, m_motion);
        const auto content = factory.make();
        content->setAcknowledge(std::nullopt);
        QVERIFY(!reply(*content));
    }

    void theReplyRunsTheAction()
    {
        BlockingViewFactory factory(m_engine, m_motion);
        const auto content = factory.make();
        int runs = 0;
        content->setAcknowledge([&runs] { ++runs; });
        QVERIFY(reply(*content));
        QCOMPARE(runs, 0);
        QVERIFY(QMetaObject::invokeMethod(&content->item(), "acknowledged"));
        QCOMPARE(runs, 1);
    }

    void nothingCarriesOverToTheNextScreen()
    {
        BlockingViewFactory factory(m_engine, m_motion);
        int runs = 0;
        const auto first = factory.make();
        first->setAcknowledge([&runs] { ++runs; });
        const auto second = factory.make();
        second->setAcknowledge(std::nullopt);
        QVERIFY(&first->item() != &second->item());
        QVERIFY(!reply(*second));
        QVERIFY(QMetaObject::invokeMethod(&second->item(), "acknowledged"));
        QCOMPARE(runs, 0);
    }

    void screensStartWithTheMotionPreferenceAndFollowIt()
    {
        m_motion.setReduceMotion(true);
        BlockingViewFactory factory(m_engine, m_motion);
        const auto early = factory.make();
        QVERIFY(clock(*early).reduceMotion());
        m_motion.setReduceMotion(false);
        QVERIFY(!clock(*early).reduceMotion());
        const auto late = factory.make();
        QVERIFY(!clock(*late).reduceMotion());
        m_motion.setReduceMotion(true);
        QVERIFY(clock(*early).reduceMotion());
        QVERIFY(clock(*late).reduceMotion());
    }

    void aScreenThatIsGoneFollowsNothing()
    {
        BlockingViewFactory factory(m_engine, m_motion);
        QPointer<QQuickItem> item;
        {
            const auto content = factory.make();
            item = &content->item();
        }
        m_motion.setReduceMotion(true);
        QTRY_VERIFY_WITH_TIMEOUT(!item, patience);
        m_motion.setReduceMotion(false);
    }

    void aScreenThatIsGoneIsTakenOutOfItsWindowAtOnce()
    {
        BlockingViewFactory factory(m_engine, m_motion);
        QQuickWindow window;
        auto content = factory.make();
        content->item().setParentItem(window.contentItem());
        QCOMPARE(window.contentItem()->childItems().size(), 1);
        content.reset();
        QVERIFY(window.contentItem()->childItems().isEmpty());
    }

    void theActionMayEndTheScreenThatItWasPressedOn()
    {
        BlockingViewFactory factory(m_engine, m_motion);
        auto content = factory.make();
        int runs = 0;
        content->setAcknowledge([&content, &runs] {
            content.reset();
            ++runs;
        });
        const QPointer<QQuickItem> item(&content->item());
        QVERIFY(QMetaObject::invokeMethod(item, "acknowledged"));
        QCOMPARE(runs, 1);
        QVERIFY(!content);
        QTRY_VERIFY_WITH_TIMEOUT(!item, patience);
    }

    void theFactoryStopsObservingWhenItGoesAndTakesItsScreensAlong()
    {
        QPointer<QQuickItem> item;
        std::unique_ptr<OverlayContent> content;
        {
            BlockingViewFactory factory(m_engine, m_motion);
            content = factory.make();
            item = &content->item();
            QVERIFY(m_motion.isObserved());
        }
        QVERIFY(!item);
        QVERIFY(!m_motion.isObserved());
        content.reset();
    }

    void aFreshScreenHasTheKeyboard()
    {
        BlockingViewFactory factory(m_engine, m_motion);
        QQuickWindow window;
        window.resize(800, 700);
        window.show();
        window.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        int runs = 0;
        auto first = factory.make();
        first->setAcknowledge([&runs] { ++runs; });
        first->item().setParentItem(window.contentItem());
        auto second = factory.make();
        second->setAcknowledge([&runs] { runs += 10; });
        second->item().setParentItem(window.contentItem());
        QVERIFY(reply(*second)->hasActiveFocus());
        first.reset();
        QVERIFY(reply(*second)->hasActiveFocus());
        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(runs, 10);
    }
};

QTEST_MAIN(TestBlockingViewFactory)
#include "test_blocking_view_factory.moc"
