#include "app/polling_task.h"

#include "support/fake_url_session.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class TestPollingTask : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void thePauseIsThreeSecondsAfterEveryAnswer()
    {
        FakeUrlSession session;
        std::size_t answers = 0;
        std::size_t failures = 0;
        PollingTask task(FocusAPIClient(session, QUrl(u"https://service.example"_s), u"key"_s), [&](const PollingTask::Answer& answer) {
            ++answers;
            failures += answer ? 0 : 1;
        });
        auto* sleep = task.findChild<QTimer*>();
        QVERIFY(sleep && !sleep->isActive());
        task.start();
        for (std::size_t round = 1; round <= 12; ++round) {
            QCOMPARE(session.requests().size(), round);
            QVERIFY(!sleep->isActive()); // it waits for the answer, however long that takes
            if (round % 6 == 1)
                QVERIFY(session.answer(200, R"({"active":false,"inProgressTaskCount":0,"policyRevision":1})"));
            else
                QVERIFY(round % 2 == 0 ? session.fail(u"Connection refused"_s) : session.answer(500));
            QTRY_COMPARE(answers, round);
            QVERIFY(sleep->isActive());
            QVERIFY(sleep->intervalAsDuration() == 3000ms);
            QCOMPARE(session.requests().size(), round);
            QTimerEvent end(sleep->timerId()); // without the wait
            QCoreApplication::sendEvent(sleep, &end);
        }
        QCOMPARE(failures, 10U);
    }
};

QTEST_GUILESS_MAIN(TestPollingTask)
#include "test_polling_task.moc"
