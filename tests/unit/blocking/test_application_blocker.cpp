#include "blocking/application_blocker.h"

#include "blocking/overlay_presenting.h"
#include "support/call_log.h"
#include "support/fake_activation_monitor.h"
#include "support/fake_screens.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

class RecordingOverlay : public OverlayPresenting {
public:
    explicit RecordingOverlay(CallLog& log) : m_log(log) { }

    void present(const BlockedTarget& target, std::uint32_t screenNumber) override
    {
        const auto* application = std::get_if<BlockedTarget::Application>(&target.value);
        m_log.add(u"present %1 on %2"_s.arg(application ? application->bundleIdentifier : u"a domain"_s).arg(screenNumber));
    }
    void dismiss() override { m_log.add(u"dismiss"_s); }

private:
    CallLog& m_log;
};

const QString editor = u"org.example.Editor.desktop"_s;
const QString mail = u"org.example.Mail.desktop"_s;

} // namespace

class TestApplicationBlocker : public QObject {
    Q_OBJECT

private:
    struct House {
        CallLog log;
        QSet<QString> blocked { editor };
        RecordingOverlay overlay { log };
        FakeActivationMonitor activations;
        FakeScreens screens { { { 7, QRect(0, 0, 800, 600) } } };
        std::unique_ptr<ApplicationBlocker> blocker = std::make_unique<ApplicationBlocker>([this] { return blocked; }, overlay, activations, screens);
    };

private Q_SLOTS:
    void withoutFocusNothingIsCovered()
    {
        House house;
        house.blocker->handleActivation(editor, 7);
        QCOMPARE(house.log.take(), QStringList({ u"dismiss"_s }));
    }

    void aBlockedApplicationIsCoveredAtEachActivation()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->handleActivation(editor, 7);
        house.blocker->handleActivation(editor, 9);
        QCOMPARE(house.log.take(), QStringList({ u"present %1 on 7"_s.arg(editor), u"present %1 on 9"_s.arg(editor) }));
    }

    void anotherApplicationTakesTheCoverAway()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->handleActivation(editor, 7);
        house.blocker->handleActivation(mail, 7);
        house.blocker->handleActivation(mail, 7);
        QCOMPARE(house.log.take(), QStringList({ u"present %1 on 7"_s.arg(editor), u"dismiss"_s, u"dismiss"_s }));
    }

    void anApplicationWithoutIdentifierChangesNothing()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->handleActivation(editor, 7);
        (void)house.log.take();
        house.blocker->handleActivation(std::nullopt, 7);
        QCOMPARE(house.log.take(), QStringList());
        // The application that is covered is still remembered.
        house.blocker->focusActive = false;
        house.blocker->handleActivation(editor, 7);
        QCOMPARE(house.log.take(), QStringList());
    }

    void theCoveredApplicationKeepsItsCoverWhenFocusEnds()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->handleActivation(editor, 7);
        house.blocker->focusActive = false;
        QCOMPARE(house.log.take(), QStringList({ u"present %1 on 7"_s.arg(editor) }));
        house.blocker->handleActivation(editor, 7);
        QCOMPARE(house.log.take(), QStringList());
        house.blocker->handleActivation(mail, 7);
        QCOMPARE(house.log.take(), QStringList({ u"dismiss"_s }));
        house.blocker->handleActivation(editor, 7);
        QCOMPARE(house.log.take(), QStringList({ u"dismiss"_s }));
    }

    void theCoveredApplicationKeepsItsCoverWhenItLeavesTheList()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->handleActivation(editor, 7);
        house.blocked.clear();
        (void)house.log.take();
        house.blocker->handleActivation(editor, 7);
        QCOMPARE(house.log.take(), QStringList());
    }

    void focusBecomingActiveCoversNothingByItself()
    {
        House house;
        house.blocker->handleActivation(editor, 7);
        (void)house.log.take();
        house.blocker->focusActive = true;
        QCOMPARE(house.log.take(), QStringList());
    }

    void anEmptyListLeadsToDismissals()
    {
        House house;
        house.blocked.clear();
        house.blocker->focusActive = true;
        house.blocker->handleActivation(editor, 7);
        house.blocker->handleActivation(mail, 7);
        QCOMPARE(house.log.take(), QStringList({ u"dismiss"_s, u"dismiss"_s }));
    }

    void identifiersThatDifferInCaseAreDifferentApplications()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->handleActivation(editor.toUpper(), 7);
        QCOMPARE(house.log.take(), QStringList({ u"dismiss"_s }));
    }

    void observesOnce()
    {
        House house;
        QVERIFY(!house.activations.isObserved());
        house.blocker->startObserving();
        house.blocker->startObserving();
        QCOMPARE(house.activations.observations(), 1);
    }

    void theDisplayIsAskedForWhenTheDecisionIsMade()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->startObserving();
        house.activations.activate(editor);
        QCOMPARE(house.log.take(), QStringList());
        house.screens.disconnectAll();
        house.screens.connect({ 42, QRect(0, 0, 640, 480) });
        QTRY_COMPARE(house.log.calls, QStringList({ u"present %1 on 42"_s.arg(editor) }));
    }

    void withoutADisplayTheNumberIsZero()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->startObserving();
        house.screens.disconnectAll();
        house.activations.activate(editor);
        QTRY_COMPARE(house.log.calls, QStringList({ u"present %1 on 0"_s.arg(editor) }));
    }

    void anActivationWithoutIdentifierArrivesAsNone()
    {
        House house;
        house.blocker->startObserving();
        house.activations.activate(std::nullopt);
        house.activations.activate(mail);
        QTRY_COMPARE(house.log.calls, QStringList({ u"dismiss"_s }));
    }

    void nothingHappensOnceItIsGone()
    {
        House house;
        house.blocker->focusActive = true;
        house.blocker->startObserving();
        house.activations.activate(editor);
        house.blocker.reset();
        house.activations.activate(editor);
        QCoreApplication::processEvents();
        QCOMPARE(house.log.take(), QStringList());
        QVERIFY(!house.activations.isObserved());
    }
};

QTEST_GUILESS_MAIN(TestApplicationBlocker)
#include "test_application_blocker.moc"
