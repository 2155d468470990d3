#include "app/system_focus_monitor.h"

#include "support/fake_system_focus.h"

#include <QTest>
#include <QTimer>

#include <memory>
#include <vector>

using namespace orvanta;
using namespace orvanta::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QString notificationRequest = u"systemFocus.requestNotificationPermission"_s;
const QString authorisationRequest = u"systemFocus.requestAuthorisation"_s;
const QString authorisation = u"systemFocus.authorisation"_s;
const QString isFocused = u"systemFocus.isFocused"_s;

using Reports = std::vector<bool>;

/// A monitor on a system that the test sets, with short pauses.
struct House {
    House()
    {
        monitor->onStatusChange = [this](bool value) { reports.push_back(value); };
    }

    void start()
    {
        monitor->start();
        system.answerNotificationPermission(true);
    }

    /// Waits until the monitor has looked at least once more with everything as it is now.
    void waitForALook()
    {
        const qsizetype before = log.calls.count(authorisation);
        QTRY_VERIFY(log.calls.count(authorisation) >= before + 2);
    }

    CallLog log;
    FakeSystemFocus system { log };
    std::unique_ptr<SystemFocusMonitor> monitor = std::make_unique<SystemFocusMonitor>(system, 1ms);
    Reports reports;
};

/// Long enough for a monitor with such pauses to look many times.
void letTimePass()
{
    int ticks = 0;
    QTimer clock;
    QObject::connect(&clock, &QTimer::timeout, &clock, [&ticks] { ++ticks; });
    clock.start(1ms);
    QTRY_VERIFY(ticks >= 20);
}

} // namespace

class TestSystemFocusMonitor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void looksEverySecond() { QCOMPARE(SystemFocusMonitor::defaultPause, 1000ms); }

    void asksNothingBeforeItIsStarted()
    {
        const House house;
        QCOMPARE(house.log.calls, QStringList());
    }

    void whatIsAuthorisedAlreadyIsNotAskedForAgain()
    {
        House house;
        house.monitor->start();
        QCOMPARE(house.log.take(), QStringList({ notificationRequest }));
        house.system.answerNotificationPermission(true);
        QCOMPARE(house.log.take(), QStringList({ authorisation, authorisation, isFocused }));
        QCOMPARE(house.reports, Reports({ false }));
    }

    void whatIsNotDeterminedIsAskedForAfterTheFirstAnswer()
    {
        House house;
        house.system.authorisationNow = FocusAuthorisation::notDetermined;
        house.monitor->start();
        QCOMPARE(house.log.take(), QStringList({ notificationRequest }));
        house.system.answerNotificationPermission(true);
        QCOMPARE(house.log.take(), QStringList({ authorisation, authorisationRequest }));
        QCOMPARE(house.reports, Reports());
        house.system.isFocusedNow = true;
        house.system.answerAuthorisation(FocusAuthorisation::authorised);
        QCOMPARE(house.log.take(), QStringList({ authorisation, isFocused }));
        QCOMPARE(house.reports, Reports({ true }));
    }

    void nothingIsReportedWhileAnAnswerIsOutstanding()
    {
        House house;
        house.system.isFocusedNow = true;
        house.monitor->start();
        letTimePass();
        QCOMPARE(house.log.calls, QStringList({ notificationRequest }));
        QCOMPARE(house.reports, Reports());
    }

    void aRefusedOrFailedNotificationPermissionIsIgnored_data()
    {
        QTest::addColumn<bool>("isFailure");
        QTest::newRow("refused") << false;
        QTest::newRow("failed") << true;
    }

    void aRefusedOrFailedNotificationPermissionIsIgnored()
    {
        QFETCH(bool, isFailure);
        House house;
        house.system.isFocusedNow = true;
        house.monitor->start();
        house.system.answerNotificationPermission(isFailure ? Result<bool>(std::unexpected(PlatformError { u"no centre"_s })) : Result<bool>(false));
        QCOMPARE(house.reports, Reports({ true }));
    }

    void withoutAuthorisationOneFalseIsReportedAndThenNothing_data()
    {
        QTest::addColumn<FocusAuthorisation>("answer");
        QTest::newRow("denied") << FocusAuthorisation::denied;
        QTest::newRow("restricted") << FocusAuthorisation::restricted;
        QTest::newRow("still not determined") << FocusAuthorisation::notDetermined;
    }

    void withoutAuthorisationOneFalseIsReportedAndThenNothing()
    {
        QFETCH(FocusAuthorisation, answer);
        House house;
        house.system.isFocusedNow = true;
        house.system.authorisationNow = FocusAuthorisation::notDetermined;
        house.start();
        house.system.answerAuthorisation(answer);
        QCOMPARE(house.reports, Reports({ false }));
        house.waitForALook();
        QCOMPARE(house.reports, Reports({ false }));
        QVERIFY(!house.log.calls.contains(isFocused));
        QCOMPARE(house.log.calls.count(authorisationRequest), 1);
    }

    void theFirstValueIsReportedAlsoWhenItIsFalse()
    {
        House house;
        house.start();
        QCOMPARE(house.reports, Reports({ false }));
    }

    void onlyChangesAreReportedAfterTheFirstValue()
    {
        House house;
        house.start();
        house.waitForALook();
        QCOMPARE(house.reports, Reports({ false }));
        house.system.isFocusedNow = true;
        QTRY_COMPARE(house.reports, Reports({ false, true }));
        house.waitForALook();
        QCOMPARE(house.reports, Reports({ false, true }));
        house.system.isFocusedNow = false;
        QTRY_COMPARE(house.reports, Reports({ false, true, false }));
    }

    void aFocusThatIsNotKnownCountsAsOff()
    {
        House house;
        house.system.isFocusedNow = std::nullopt;
        house.start();
        QCOMPARE(house.reports, Reports({ false }));
        house.system.isFocusedNow = true;
        QTRY_COMPARE(house.reports, Reports({ false, true }));
        house.system.isFocusedNow = std::nullopt;
        QTRY_COMPARE(house.reports, Reports({ false, true, false }));
    }

    void anAuthorisationGivenLaterTakesEffect()
    {
        House house;
        house.system.isFocusedNow = true;
        house.system.authorisationNow = FocusAuthorisation::denied;
        house.start();
        QCOMPARE(house.reports, Reports({ false }));
        house.system.authorisationNow = FocusAuthorisation::authorised;
        QTRY_COMPARE(house.reports, Reports({ false, true }));
        QVERIFY(!house.log.calls.contains(authorisationRequest));
    }

    void anAuthorisationTakenAwaySwitchesFocusOff()
    {
        House house;
        house.system.isFocusedNow = true;
        house.start();
        house.system.authorisationNow = FocusAuthorisation::denied;
        QTRY_COMPARE(house.reports, Reports({ true, false }));
    }

    void whatGoesOnAndOffBetweenTwoLooksIsNotSeen()
    {
        House house;
        house.start();
        house.system.isFocusedNow = true;
        house.system.isFocusedNow = false;
        house.waitForALook();
        QCOMPARE(house.reports, Reports({ false }));
    }

    void startedTwiceItRunsOnce()
    {
        House house;
        house.monitor->start();
        house.monitor->start();
        QCOMPARE(house.system.pendingNotificationRequests(), 1U);
        house.system.answerNotificationPermission(true);
        house.monitor->start();
        QCOMPARE(house.system.pendingNotificationRequests(), 0U);
        QCOMPARE(house.log.calls.count(notificationRequest), 1);
        QCOMPARE(house.reports, Reports({ false }));
    }

    void withoutACallbackNothingIsCalled()
    {
        House house;
        house.monitor->onStatusChange = nullptr;
        house.start();
        house.system.isFocusedNow = true;
        house.waitForALook();
        QCOMPARE(house.reports, Reports());
    }

    void theCallbackMayEndTheMonitor()
    {
        House house;
        house.monitor->onStatusChange = [&house](bool) { house.monitor.reset(); };
        house.start();
        QVERIFY(!house.monitor);
    }

    void answersAfterItsEndAreHarmless()
    {
        House first;
        first.monitor->start();
        first.monitor.reset();
        first.system.answerNotificationPermission(true);
        QCOMPARE(first.log.calls, QStringList({ notificationRequest }));

        House second;
        second.system.authorisationNow = FocusAuthorisation::notDetermined;
        second.start();
        second.monitor.reset();
        second.system.answerAuthorisation(FocusAuthorisation::authorised);
        QCOMPARE(second.reports, Reports());
    }

    void itsEndStopsTheLooking()
    {
        House house;
        house.start();
        house.monitor.reset();
        (void)house.log.take();
        letTimePass();
        QCOMPARE(house.log.calls, QStringList());
    }
};

QTEST_GUILESS_MAIN(TestSystemFocusMonitor)
#include "test_system_focus_monitor.moc"
