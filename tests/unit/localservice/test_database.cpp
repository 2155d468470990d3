#include "localservice/schema.h"
#include "localservice/task_store.h"
#include "scratch_database.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

namespace {

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s", qPrintable(file.errorString()));
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestDatabase : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatWasCommittedIsThereWhenOpenedAgain()
    {
        QTemporaryDir folder;
        {
            auto opened = openServiceDatabase(folder.path(), DamageRule::moveAside).value();
            QVERIFY(!opened.damagedCopy);
            QVERIFY(TaskStore(opened.database).start(u"x"_s, at("2026-01-31T08:00:00Z")).has_value());
        }
        auto opened = openServiceDatabase(folder.path(), DamageRule::moveAside).value();
        QCOMPARE(TaskStore(opened.database).inProgress().value().at(0).title, u"x"_s);
    }

    void whatWasNotCommittedIsGone()
    {
        ScratchDatabase scratch;
        {
            const Transaction transaction(scratch.database());
            scratch.database().run("INSERT INTO tasks (title, started_at) VALUES (?, ?)", u"x"_s, 0);
        }
        QCOMPARE(TaskStore(scratch.database()).inProgressCount().value(), 0);
    }

    void filesAreForTheirOwnerAlone()
    {
        ScratchDatabase scratch;
        QVERIFY(TaskStore(scratch.database()).start(u"x"_s, at("2026-01-31T08:00:00Z")).has_value());
        const auto files = QDir(scratch.folder()).entryInfoList(QDir::Files);
        QVERIFY(files.size() >= 2); // the database and its log
        const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
        for (const QFileInfo& file : files)
            QVERIFY2(!(file.permissions() & others), qPrintable(file.fileName()));
    }

    void twoConnectionsSeeEachOthersWork()
    {
        ScratchDatabase scratch;
        auto second = openServiceDatabase(scratch.folder(), DamageRule::report).value();
        QVERIFY(TaskStore(second.database).start(u"from the other"_s, at("2026-01-31T08:00:00Z")).has_value());
        QCOMPARE(TaskStore(scratch.database()).inProgressCount().value(), 1);
    }

    void aDamagedDatabaseIsMovedAsideWhole_data()
    {
        QTest::addColumn<bool>("keepsHeader");
        QTest::newRow("no database at all") << false;
        QTest::newRow("pages overwritten") << true;
    }

    void aDamagedDatabaseIsMovedAsideWhole()
    {
        QFETCH(bool, keepsHeader);
        QTemporaryDir folder;
        const QString path = databasePath(folder.path());
        {
            auto opened = openServiceDatabase(folder.path(), DamageRule::report).value();
            for (int index = 0; index < 500; ++index)
                QVERIFY(
                    TaskStore(opened.database).start(u"a task with a title of some length, to fill pages"_s, at("2026-01-31T08:00:00Z")).has_value());
        }
        QByteArray bytes = read(path);
        QVERIFY(bytes.size() > qsizetype { 3 } * 4096);
        const qsizetype from = keepsHeader ? 4096 : 0;
        bytes.replace(from, bytes.size() - from, QByteArray(bytes.size() - from, 'x'));
        write(path, bytes);

        const auto reported = openServiceDatabase(folder.path(), DamageRule::report);
        if (!keepsHeader) {
            QVERIFY(!reported.has_value());
            QVERIFY(reported.error().kind == StoreError::Kind::damaged);
            QCOMPARE(read(path), bytes);
        }

        auto opened = openServiceDatabase(folder.path(), DamageRule::moveAside).value();
        QVERIFY(opened.damagedCopy.has_value());
        QCOMPARE(read(*opened.damagedCopy).size(), bytes.size());
        QVERIFY(TaskStore(opened.database).start(u"new"_s, at("2026-01-31T08:00:00Z")).has_value());
        QCOMPARE(TaskStore(opened.database).inProgressCount().value(), 1);
    }

    void anEmptyFileBecomesADatabase()
    {
        QTemporaryDir folder;
        write(databasePath(folder.path()), {});
        QVERIFY(!openServiceDatabase(folder.path(), DamageRule::moveAside).value().damagedCopy);
    }

    void anotherProgramsDatabaseIsLeftAlone()
    {
        QTemporaryDir folder;
        {
            auto database = Database::open(databasePath(folder.path())).value();
            database.execute("CREATE TABLE theirs (x)");
        }
        const auto opened = openServiceDatabase(folder.path(), DamageRule::moveAside);
        QVERIFY(!opened.has_value());
        QVERIFY(opened.error().kind == StoreError::Kind::foreign);
        QCOMPARE(opened.error().description, u"The database belongs to another program"_s);
        auto database = Database::open(databasePath(folder.path())).value();
        Query query(database, "SELECT count(*) FROM theirs");
        QVERIFY(query.next());
    }

    void aLaterVersionsDatabaseIsLeftAlone()
    {
        QTemporaryDir folder;
        {
            auto opened = openServiceDatabase(folder.path(), DamageRule::report).value();
            opened.database.execute("PRAGMA user_version = 99");
        }
        const auto opened = openServiceDatabase(folder.path(), DamageRule::moveAside);
        QVERIFY(!opened.has_value());
        QCOMPARE(opened.error().description, u"The database was written by a later version of this program"_s);
    }

    void aFolderInPlaceOfTheFileIsAClearError()
    {
        QTemporaryDir folder;
        QVERIFY(QDir().mkdir(databasePath(folder.path())));
        const auto opened = openServiceDatabase(folder.path(), DamageRule::moveAside);
        QVERIFY(!opened.has_value());
        QVERIFY(opened.error().kind == StoreError::Kind::unavailable);
        QVERIFY(opened.error().description.contains(databasePath(folder.path())));
    }

    void withoutRoomNothingIsStoredAndTheReasonIsSaid()
    {
        ScratchDatabase scratch;
        TaskStore tasks(scratch.database());
        scratch.database().run("PRAGMA max_page_count = 1"); // no less than what is there
        std::expected<Task, StoreError> task;
        int stored = 0;
        for (; stored < 10'000; ++stored) {
            task = tasks.start(u"fill"_s, at("2026-01-31T08:00:00Z"));
            if (!task)
                break;
        }
        QVERIFY(!task.has_value());
        QVERIFY(task.error().kind == StoreError::Kind::full);
        QCOMPARE(task.error().description, u"There is no room left on the disk"_s);
        QCOMPARE(tasks.inProgressCount().value(), stored);
    }

    void anotherWriterIsWaitedForAndThenNamed()
    {
        ScratchDatabase scratch;
        auto second = openServiceDatabase(scratch.folder(), DamageRule::report).value();
        const Transaction held(second.database);
        scratch.database().execute("PRAGMA busy_timeout = 1");
        const auto task = TaskStore(scratch.database()).start(u"x"_s, at("2026-01-31T08:00:00Z"));
        QVERIFY(!task.has_value());
        QVERIFY(task.error().kind == StoreError::Kind::busy);
    }

    void textsKeepEveryCharacter()
    {
        ScratchDatabase scratch;
        const QString text = u"a\0b \U0001F451 '%_\""_s;
        scratch.database().run("INSERT INTO tasks (title, started_at) VALUES (?, ?)", text, 1);
        QCOMPARE(TaskStore(scratch.database()).inProgress().value().at(0).title, text);
    }
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "test_database.moc"
