#include "platform/linux/synced_folder_store.h"

#include "support/contracts/cloud_store_contract.h"
#include "support/file_edits.h"
#include "support/limited_rights.h"

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

const QString domains = u"blockedDomains"_s;
constexpr int patience = 10000;

QByteArray withDomain(const QByteArray& domain)
{
    return "{\"blockedDomains\": [\"" + domain + "\"]}";
}

} // namespace

class TestSyncedFolderStore : public CloudStoreContract {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_home;
    QString m_folder;
    QString m_path;

    void freshFolder()
    {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home->filePath(u"data"_s)));
        m_folder = m_home->filePath(u"sync/orvanta"_s);
        m_path = m_folder + u"/orvanta-focus.json"_s;
    }

    [[nodiscard]] bool makeFolder() const { return QDir().mkpath(m_folder); }
    [[nodiscard]] QStringList asides() const { return namesIn(m_folder).filter(u"orvanta-focus.json.damaged-"_s); }

    std::unique_ptr<CloudStore> makeCloudStore() override
    {
        freshFolder();
        return std::make_unique<SyncedFolderStore>(m_folder);
    }
    std::unique_ptr<KeyValueStore> reopened(std::unique_ptr<KeyValueStore> store) override
    {
        store.reset();
        return std::make_unique<SyncedFolderStore>(m_folder);
    }
    void leaveForeignValue(KeyValueStore&, const QString& key) override
    {
        QVERIFY(replaceByRename(m_path, "{\"" + key.toUtf8() + "\": [1, \"a\"]}"));
    }
    void changeElsewhere(CloudStore&, const QString& key, const StoredValue& value) override
    {
        StoredObject object = parseStoredObject(contentOf(m_path)).value_or(StoredObject());
        QVERIFY(object.set(key, value));
        QVERIFY(makeFolder() && replaceByRename(m_path, object.text()));
    }
    void arrive(CloudStore&) override { }

private Q_SLOTS:
    void init() { freshFolder(); }

    void standsInTheFolderThatTheUserNames()
    {
        qunsetenv("ORVANTA_CLOUD_DIRECTORY");
        QCOMPARE(SyncedFolderStore::standardFolder(), m_home->filePath(u"data/orvanta-focus/cloud"_s));
        qputenv("ORVANTA_CLOUD_DIRECTORY", "");
        QCOMPARE(SyncedFolderStore::standardFolder(), m_home->filePath(u"data/orvanta-focus/cloud"_s));
        qputenv("ORVANTA_CLOUD_DIRECTORY", "some/where");
        QCOMPARE(SyncedFolderStore::standardFolder(), QDir::currentPath() + u"/some/where"_s);
        qputenv("ORVANTA_CLOUD_DIRECTORY", QFile::encodeName(m_folder));
        QCOMPARE(SyncedFolderStore::standardFolder(), m_folder);
        SyncedFolderStore store;
        qunsetenv("ORVANTA_CLOUD_DIRECTORY");
        QVERIFY(store.setValue(domains, QStringList { u"a.example"_s }));
        QCOMPARE(contentOf(m_path), "{\n    \"blockedDomains\": [\n        \"a.example\"\n    ]\n}\n"_ba);
        // Nothing else of ours travels to the other machines.
        QCOMPARE(namesIn(m_folder), QStringList { u"orvanta-focus.json"_s });
    }

    void readingWritesNothing()
    {
        SyncedFolderStore store(m_folder);
        store.synchronise();
        QCOMPARE(store.value(domains), std::nullopt);
        QVERIFY(store.remove(domains));
        QVERIFY(!QFileInfo::exists(m_path));
    }

    void keepsTheFilesPermissions()
    {
        SyncedFolderStore store(m_folder);
        const mode_t mask = ::umask(0);
        QVERIFY(store.setValue(domains, QStringList()));
        ::umask(mask);
        struct stat facts {};
        QCOMPARE(::stat(QFile::encodeName(m_path).constData(), &facts), 0);
        QCOMPARE(facts.st_mode & 07777, mode_t(0600));
        QVERIFY(::chmod(QFile::encodeName(m_path).constData(), 0664) == 0);
        QVERIFY(store.setValue(domains, QStringList { u"a.example"_s }));
        QCOMPARE(::stat(QFile::encodeName(m_path).constData(), &facts), 0);
        QCOMPARE(facts.st_mode & 07777, mode_t(0664));
    }

    void everyWayOfChangingTheFileIsTold_data()
    {
        QTest::addColumn<bool>("inPlace");
        QTest::newRow("written in place") << true;
        QTest::newRow("replaced") << false;
    }

    void everyWayOfChangingTheFileIsTold()
    {
        QFETCH(bool, inPlace);
        const auto change = inPlace ? writeInPlace : replaceByRename;
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("start.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        for (int time = 1; time <= 5; ++time) {
            QVERIFY(change(m_path, withDomain("a" + QByteArray::number(time) + ".example")));
            QTRY_COMPARE_WITH_TIMEOUT(told, time, patience);
            QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"a%1.example"_s.arg(time) }));
        }
        // Ours in between are not theirs.
        QVERIFY(store.setValue(domains, QStringList { u"mine.example"_s }));
        QVERIFY(change(m_path, withDomain("last.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 6, patience);
        QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"last.example"_s }));
    }

    void anOldFileThatIsHeldOpenDoesNotHideTheNewOne()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("old.example")));
        QFile held(m_path);
        QVERIFY(held.open(QIODevice::ReadOnly));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        QVERIFY(replaceByRename(m_path, withDomain("new.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, patience);
        QVERIFY(writeInPlace(m_path, withDomain("newer.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 2, patience);
    }

    void anotherLayoutIsNoChange()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("a.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        QVERIFY(replaceByRename(m_path, "{\n\t\"blockedDomains\" : [ \"\\u0061.example\" ]\n}"));
        store.synchronise();
        QVERIFY(replaceByRename(m_path, withDomain("b.example")));
        QTRY_VERIFY_WITH_TIMEOUT(told > 0, patience);
        QCOMPARE(told, 1);
    }

    void halfWrittenContentIsWaitedFor()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("old.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        const QByteArray arriving = withDomain("new.example");
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        for (const char byte : arriving.first(arriving.size() - 1)) {
            QCOMPARE(file.write(&byte, 1), 1);
            store.synchronise();
            QCoreApplication::processEvents();
            QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"old.example"_s }));
        }
        QCOMPARE(told, 0);
        QCOMPARE(file.write("}"), 1);
        file.close();
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, patience);
        QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"new.example"_s }));
        QCOMPARE(asides(), QStringList());
        QCOMPARE(store.takeProblem(), std::nullopt);
    }

    void contentThatIsNotUnderstoodIsMovedAsideBeforeItIsWrittenOver()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, "{\"blockedDomains\": [\"old.example\"], \"theirs\": 1}"));
        SyncedFolderStore store(m_folder);
        QVERIFY(writeInPlace(m_path, "not ours") && makeOlder(m_path));
        store.synchronise();
        QCOMPARE(asides(), QStringList());
        QVERIFY(store.setValue(domains, QStringList { u"mine.example"_s }));
        QCOMPARE(asides().size(), 1);
        QCOMPARE(contentOf(m_folder + u'/' + asides().first()), "not ours"_ba);
        QVERIFY(store.takeProblem().value_or(QString()).startsWith(m_path + u" is not JSON (at byte 2 of 8); it was moved aside to "_s));
        SyncedFolderStore again(m_folder);
        QCOMPARE(again.value(domains), std::optional<StoredValue>(QStringList { u"mine.example"_s }));
        QCOMPARE(again.value(u"theirs"_s), std::optional<StoredValue>(ForeignValue()));
    }

    void contentThatIsNotUnderstoodIsLeftForAWhileToWhoeverWritesIt()
    {
        QVERIFY(SyncedFolderStore(m_folder).setValue(domains, QStringList())); // the folders are there
        const QByteArray arriving = withDomain("theirs.example");
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QCOMPARE(file.write(arriving.first(10)), 10);
        SyncedFolderStore store(m_folder); // starts while a tool is in the middle of it
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        const auto saved = store.setValue(domains, QStringList { u"mine.example"_s });
        QVERIFY(!saved);
        QCOMPARE(saved.error().description,
            m_path + u" is JSON that breaks off after 10 bytes; it was changed just now, so nothing is saved in its place yet"_s);
        QCOMPARE(asides(), QStringList());
        QCOMPARE(store.takeProblem(), std::nullopt);
        QCOMPARE(file.write(arriving.sliced(10)), arriving.size() - 10);
        file.close();
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, patience);
        QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"theirs.example"_s }));
        QCOMPARE(contentOf(m_path), arriving);
        QCOMPARE(asides(), QStringList());
    }

    void aTimeToComeIsNoReasonToWait()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, "not ours") && makeOlder(m_path, -3600));
        SyncedFolderStore store(m_folder);
        QVERIFY(store.setValue(domains, QStringList { u"mine.example"_s }));
        QCOMPARE(asides().size(), 1);
    }

    void aFileThatCannotBeReadAtTheMomentIsNeitherMovedNorWritten()
    {
        SyncedFolderStore store(m_folder);
        QVERIFY(store.setValue(domains, QStringList { u"old.example"_s }));
        QVERIFY(writeInPlace(m_path, withDomain("theirs.example")));
        {
            const FewFiles few(1); // for the lock, and none for what it guards
            const auto saved = store.setValue(domains, QStringList { u"mine.example"_s });
            QVERIFY(!saved);
            QCOMPARE(saved.error().description, m_path + u" could not be saved: it cannot be read (Too many open files)"_s);
            QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"old.example"_s }));
        }
        QCOMPARE(asides(), QStringList());
        QCOMPARE(contentOf(m_path), withDomain("theirs.example"));
        QCOMPARE(store.takeProblem(), std::nullopt);
        QVERIFY(store.setValue(domains, QStringList { u"mine.example"_s }));
        QCOMPARE(SyncedFolderStore(m_folder).value(domains), std::optional<StoredValue>(QStringList { u"mine.example"_s }));
        QCOMPARE(asides(), QStringList());
    }

    void contentThatWasNeverUnderstoodIsLeftAloneUntilAWrite()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, "not ours"));
        SyncedFolderStore store(m_folder);
        QCOMPARE(store.value(domains), std::nullopt);
        QCOMPARE(contentOf(m_path), "not ours"_ba);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        QVERIFY(writeInPlace(m_path, withDomain("a.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, patience);
        QCOMPARE(asides(), QStringList());
    }

    void othersKeysSurviveOurWrites()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, "{ \"theirs\": {\"a\": [1.0, null]}, \"blockedDomains\": [] }"));
        SyncedFolderStore store(m_folder);
        // One that arrives at the very moment of our write.
        QVERIFY(replaceByRename(m_path, "{ \"theirs\": {\"a\": [1.00, null]}, \"blockedDomains\": [], \"later\": 1e2 }"));
        QVERIFY(store.setValue(domains, QStringList()));
        QVERIFY(store.setValue(u"blockedApplications"_s, "[]"_ba));
        QCOMPARE(contentOf(m_path),
            "{ \"theirs\": {\"a\": [1.00, null]}, \"blockedDomains\": [], \"later\": 1e2,\n    \"blockedApplications\": \"[]\" }"_ba);
    }

    void whatArrivesAtTheMomentOfOurWriteIsToldUnlessItIsOverwritten()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("old.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        QVERIFY(replaceByRename(m_path, withDomain("theirs.example")));
        QVERIFY(store.setValue(domains, QStringList { u"mine.example"_s }));
        QCoreApplication::processEvents();
        QCOMPARE(told, 0);
        QVERIFY(replaceByRename(m_path, "{\"blockedDomains\": [\"theirs.example\"], \"blockedApplications\": \"[]\"}"));
        QVERIFY(store.setValue(domains, QStringList { u"mine.example"_s }));
        QCOMPARE(told, 0);
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, patience);
        QCOMPARE(store.value(u"blockedApplications"_s), std::optional<StoredValue>("[]"_ba));
        QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"mine.example"_s }));
    }

    void whatSyncToolsPutBesideItIsLeftAlone()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("a.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        const QStringList others { u"orvanta-focus (conflicted copy 2026-01-01).json"_s,
            u"orvanta-focus.sync-conflict-20260101-101010-ABCDEFG.json"_s, u".syncthing.orvanta-focus.json.tmp"_s, u".orvanta-focus.json.~1a2b"_s,
            u"orvanta-focus.json.part"_s, u"~orvanta-focus.json"_s };
        for (const QString& other : others)
            QVERIFY(writeInPlace(m_folder + u'/' + other, withDomain("conflict.example")));
        QVERIFY(store.setValue(u"mine"_s, "1"_ba));
        QVERIFY(replaceByRename(m_path, withDomain("b.example")));
        QTRY_VERIFY_WITH_TIMEOUT(told > 0, patience);
        QCOMPARE(told, 1);
        QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"b.example"_s }));
        for (const QString& other : others)
            QCOMPARE(contentOf(m_folder + u'/' + other), withDomain("conflict.example"));
    }

    void theFolderMayAppearLater()
    {
        SyncedFolderStore store(m_home->filePath(u"sync/deep/below/orvanta"_s));
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        m_folder = m_home->filePath(u"sync/deep/below/orvanta"_s);
        m_path = m_folder + u"/orvanta-focus.json"_s;
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("a.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, patience);
        QVERIFY(writeInPlace(m_path, withDomain("b.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 2, patience);
    }

    void theFolderMayGoAndComeBack()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("a.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        const QString away = m_home->filePath(u"away"_s);
        for (int time = 1; time <= 3; ++time) {
            QVERIFY(QDir().rename(m_folder, away));
            store.synchronise();
            QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { time == 1 ? u"a.example"_s : u"b%1.example"_s.arg(time - 1) }));
            QVERIFY(writeInPlace(away + u"/orvanta-focus.json"_s, withDomain("b" + QByteArray::number(time) + ".example")));
            QVERIFY(QDir().rename(away, m_folder));
            QTRY_COMPARE_WITH_TIMEOUT(told, time, patience);
        }
        QVERIFY(QDir(m_home->filePath(u"sync"_s)).removeRecursively());
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("c.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 4, patience);
        QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"c.example"_s }));
    }

    void aFileThatIsRemovedAndPutBackIsNoChange()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("a.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        QVERIFY(QFile::remove(m_path));
        store.synchronise();
        QCOMPARE(store.value(domains), std::optional<StoredValue>(QStringList { u"a.example"_s }));
        QVERIFY(writeInPlace(m_path, withDomain("a.example")));
        store.synchronise();
        QVERIFY(replaceByRename(m_path, withDomain("b.example")));
        QTRY_VERIFY_WITH_TIMEOUT(told > 0, patience);
        QCOMPARE(told, 1);
    }

    void aKeyThatIsTakenAwayElsewhereIsAChange()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("a.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        QVERIFY(replaceByRename(m_path, "{}"));
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, patience);
        QCOMPARE(store.value(domains), std::nullopt);
    }

    void aLinkStaysALinkAndItsTargetIsWatched()
    {
        const QString target = m_home->filePath(u"elsewhere/focus.json"_s);
        QVERIFY(makeFolder() && QDir().mkpath(QFileInfo(target).path()) && QFile::link(target, m_path));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        QVERIFY(store.setValue(domains, QStringList { u"mine.example"_s }));
        QVERIFY(QFileInfo(m_path).isSymLink());
        QVERIFY(replaceByRename(target, withDomain("a.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, patience);
        QVERIFY(replaceByRename(target, withDomain("b.example")));
        QTRY_COMPARE_WITH_TIMEOUT(told, 2, patience);
    }

    void aMillionDomainsThatArriveInPlaceAreToldOnce()
    {
        QStringList million;
        million.reserve(1'000'000);
        for (int i = 0; i < 1'000'000; ++i)
            million.append(u"site-%1.example"_s.arg(i));
        StoredObject object;
        QVERIFY(object.set(domains, million));
        QVERIFY(makeFolder() && writeInPlace(m_path, withDomain("a.example")));
        SyncedFolderStore store(m_folder);
        int told = 0;
        const auto observer = store.observeExternalChanges([&] { ++told; });
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        // In pieces of a page, with the event loop running, as a slow transfer would.
        QByteArrayView rest = object.text();
        while (!rest.isEmpty()) {
            const auto piece = rest.first(std::min<qsizetype>(rest.size(), 4096));
            QCOMPARE(file.write(piece.data(), piece.size()), piece.size());
            rest = rest.sliced(piece.size());
            QCoreApplication::processEvents();
        }
        file.close();
        QTRY_VERIFY_WITH_TIMEOUT(told > 0, 60000);
        QCOMPARE(told, 1);
        QVERIFY(store.value(domains) == std::optional<StoredValue>(million));
        QVERIFY(store.setValue(u"blockedApplications"_s, "[]"_ba));
        QVERIFY(SyncedFolderStore(m_folder).value(domains) == std::optional<StoredValue>(million));
    }
};

QTEST_GUILESS_MAIN(TestSyncedFolderStore)
#include "test_synced_folder_store.moc"
