#include "localservice/task_store.h"
#include "scratch_database.h"

#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

class TestTaskStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aStartedTaskIsInProgressUntilItIsDone()
    {
        ScratchDatabase scratch;
        TaskStore tasks(scratch.database());
        QCOMPARE(tasks.inProgressCount().value(), 0);

        const Task started = tasks.start(u"Write the report"_s, at("2026-01-31T08:00:00Z")).value();
        QCOMPARE(tasks.inProgressCount().value(), 1);
        const Task shown = tasks.inProgress().value().at(0);
        QCOMPARE(shown.id, started.id);
        QCOMPARE(shown.title, u"Write the report"_s);
        QVERIFY(shown.startedAt == at("2026-01-31T08:00:00Z"));
        QVERIFY(!shown.endedAt);

        const auto done = tasks.finish(started.id, at("2026-01-31T09:00:00Z")).value();
        QVERIFY(done.has_value());
        QVERIFY(done->endedAt == at("2026-01-31T09:00:00Z"));
        QCOMPARE(tasks.inProgressCount().value(), 0);
        QCOMPARE(tasks.latestDone(5).value().size(), std::size_t { 1 });
        QCOMPARE(tasks.latestDone(5).value().at(0).id, started.id);
    }

    void aTaskEndsOnce()
    {
        ScratchDatabase scratch;
        TaskStore tasks(scratch.database());
        const Task started = tasks.start(u"x"_s, at("2026-01-31T08:00:00Z")).value();
        QVERIFY(tasks.finish(started.id, at("2026-01-31T09:00:00Z")).value());
        QVERIFY(!tasks.finish(started.id, at("2026-01-31T10:00:00Z")).value());
        QVERIFY(!tasks.finish(started.id + 1, at("2026-01-31T10:00:00Z")).value());
        QVERIFY(tasks.latestDone(1).value().at(0).endedAt == at("2026-01-31T09:00:00Z"));
    }

    void withoutANumberTheLatestStartedEnds()
    {
        ScratchDatabase scratch;
        TaskStore tasks(scratch.database());
        QVERIFY(!tasks.finishLatest(at("2026-01-31T07:00:00Z")).value());
        const qint64 first = tasks.start(u"first"_s, at("2026-01-31T08:00:00Z")).value().id;
        const qint64 second = tasks.start(u"second"_s, at("2026-01-31T08:00:00Z")).value().id;
        QCOMPARE(tasks.finishLatest(at("2026-01-31T09:00:00Z")).value()->id, second);
        QCOMPARE(tasks.finishLatest(at("2026-01-31T09:00:01Z")).value()->id, first);
    }

    void theLatestDoneComeFirstAndNoMoreThanAskedFor()
    {
        ScratchDatabase scratch;
        TaskStore tasks(scratch.database());
        QList<qint64> ids;
        for (int index = 0; index < 4; ++index)
            ids.push_back(tasks.start(QString::number(index), at("2026-01-31T08:00:00Z")).value().id);
        QVERIFY(tasks.finish(ids[2], at("2026-01-31T09:00:00Z")).value());
        QVERIFY(tasks.finish(ids[0], at("2026-01-31T09:30:00Z")).value());
        QVERIFY(tasks.finish(ids[1], at("2026-01-31T09:15:00Z")).value());
        const auto done = tasks.latestDone(2).value();
        QCOMPARE(done.size(), std::size_t { 2 });
        QCOMPARE(done[0].id, ids[0]);
        QCOMPARE(done[1].id, ids[1]);
    }

    void aClockThatWasSetBackGivesNoNegativeTask()
    {
        ScratchDatabase scratch;
        TaskStore tasks(scratch.database());
        const qint64 id = tasks.start(u"x"_s, at("2026-01-31T08:00:00Z")).value().id;
        QVERIFY(tasks.finish(id, at("2026-01-31T07:00:00Z")).value()->endedAt == at("2026-01-31T08:00:00Z"));
    }

    void titlesAreOneLine_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("expected"); // null: refused
        QTest::newRow("blanks") << u"  a b  "_s << u"a b"_s;
        QTest::newRow("empty") << u""_s << QString();
        QTest::newRow("only blanks") << u" \t\n"_s << QString();
        QTest::newRow("line ends and escapes") << u"a\nb\u001b[31mc\u2028d"_s << u"a b [31mc d"_s;
        QTest::newRow("direction overrides") << u"a\u202Eb\u2066c"_s << u"a b c"_s;
        QTest::newRow("other scripts stay") << u"\u05E9\u05DC\u05D5\u05DD \U0001F451"_s << u"\u05E9\u05DC\u05D5\u05DD \U0001F451"_s;
        QTest::newRow("too long") << QString(longestTaskTitle + 9, u'x') << QString(longestTaskTitle, u'x');
        QTest::newRow("no half character at the cut") << QString(longestTaskTitle - 1, u'x') + u"\U0001F451"_s << QString(longestTaskTitle - 1, u'x');
    }

    void titlesAreOneLine()
    {
        QFETCH(QString, typed);
        QFETCH(QString, expected);
        QCOMPARE(acceptedTaskTitle(typed).value_or(QString()), expected);
        QCOMPARE(acceptedTaskTitle(typed).has_value(), !expected.isNull());
    }
};

QTEST_GUILESS_MAIN(TestTaskStore)
#include "test_task_store.moc"
