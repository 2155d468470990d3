#include "platform/linux/settings_file.h"

#include "support/contracts/key_value_store_contract.h"
#include "support/file_edits.h"
#include "support/limited_rights.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

int permissionsOf(const QString& path)
{
    struct stat facts {};
    return ::lstat(QFile::encodeName(path).constData(), &facts) == 0 ? static_cast<int>(facts.st_mode & 07777) : -1;
}

/// As long as it lives, what this process says on standard error goes to a file.
class RedirectedStandardError {
public:
    explicit RedirectedStandardError(const QString& path) : m_before(::dup(STDERR_FILENO))
    {
        const int file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        ::dup2(file, STDERR_FILENO);
        ::close(file);
    }
    RedirectedStandardError(const RedirectedStandardError&) = delete;
    RedirectedStandardError& operator=(const RedirectedStandardError&) = delete;
    ~RedirectedStandardError()
    {
        std::fflush(stderr);
        ::dup2(m_before, STDERR_FILENO);
        ::close(m_before);
    }

private:
    int m_before;
};

const QString domains = u"blockedDomains"_s;

} // namespace

class TestSettingsFile : public KeyValueStoreContract {
    Q_OBJECT

    // A folder of its own for each store, and for each test of this file.
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;

    void freshFolder()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"config/orvanta-focus/settings.json"_s);
    }

    [[nodiscard]] QString folder() const { return QFileInfo(m_path).path(); }
    [[nodiscard]] bool makeFolder() const { return QDir().mkpath(folder()); }

    /// The files that were moved aside, with their names checked.
    [[nodiscard]] QStringList asides() const
    {
        const QRegularExpression form(u"^settings\\.json\\.damaged-\\d{8}T\\d{6}Z(-\\d+)?$"_s);
        return namesIn(folder()).filter(form);
    }

    std::unique_ptr<KeyValueStore> makeStore() override
    {
        freshFolder();
        return std::make_unique<SettingsFile>(m_path);
    }
    std::unique_ptr<KeyValueStore> reopened(std::unique_ptr<KeyValueStore> store) override
    {
        store.reset();
        return std::make_unique<SettingsFile>(m_path);
    }
    void leaveForeignValue(KeyValueStore&, const QString& key) override
    {
        QVERIFY(replaceByRename(m_path, "{\"" + key.toUtf8() + "\": [1, \"a\"]}"));
    }

private Q_SLOTS:
    void init() { freshFolder(); }

    void standsInTheConfigurationFolder()
    {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder->path()));
        QCOMPARE(SettingsFile::standardPath(), m_folder->filePath(u"orvanta-focus/settings.json"_s));
        SettingsFile settings;
        QVERIFY(settings.setValue(domains, QStringList()));
        QVERIFY(QFileInfo::exists(m_folder->filePath(u"orvanta-focus/settings.json"_s)));
        qunsetenv("XDG_CONFIG_HOME");
    }

    void nothingIsWrittenBeforeThereIsSomethingToSave()
    {
        SettingsFile settings(m_path);
        QCOMPARE(settings.value(domains), std::nullopt);
        QCOMPARE(settings.takeProblem(), std::nullopt);
        QVERIFY(!QFileInfo::exists(folder()));
        QVERIFY(settings.remove(domains));
        QVERIFY(!QFileInfo::exists(m_path));
    }

    void isItsOwnersAlone()
    {
        const mode_t mask = ::umask(0);
        SettingsFile settings(m_path);
        QVERIFY(settings.setValue(domains, QStringList()));
        ::umask(mask);
        QCOMPARE(permissionsOf(folder()), 0700);
        QCOMPARE(permissionsOf(m_path), 0600);
        QCOMPARE(permissionsOf(m_path + u".lock"_s), 0600);

        QVERIFY(::chmod(QFile::encodeName(m_path).constData(), 0644) == 0);
        QVERIFY(settings.setValue(domains, QStringList { u"a.example"_s }));
        QCOMPARE(permissionsOf(m_path), 0600);
    }

    void aPersonsEditIsSeenAndKept()
    {
        SettingsFile settings(m_path);
        QVERIFY(settings.setValue(domains, QStringList { u"a.example"_s }));
        QVERIFY(writeInPlace(m_path, "{ \"note\": \"mine\", \"blockedDomains\": [\"b.example\"], \"size\": 1.50 }"));
        QCOMPARE(settings.value(domains), std::optional<StoredValue>(QStringList { u"b.example"_s }));
        QVERIFY(settings.setValue(domains, QStringList()));
        QCOMPARE(contentOf(m_path), "{ \"note\": \"mine\", \"blockedDomains\": [], \"size\": 1.50 }"_ba);
    }

    void theSameValueIsNotWrittenAgain()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, "{\"blockedDomains\":[  \"a.example\"]}"));
        SettingsFile settings(m_path);
        QVERIFY(settings.setValue(domains, QStringList { u"a.example"_s }));
        QVERIFY(settings.remove(u"another"_s));
        QCOMPARE(contentOf(m_path), "{\"blockedDomains\":[  \"a.example\"]}"_ba);
    }

    void twoCopiesKeepEachOthersKeys()
    {
        SettingsFile one(m_path);
        SettingsFile two(m_path);
        QVERIFY(one.setValue(u"one"_s, "1"_ba));
        QVERIFY(two.setValue(u"two"_s, "2"_ba));
        QVERIFY(one.setValue(u"one"_s, "3"_ba));
        for (SettingsFile* settings : { &one, &two }) {
            QCOMPARE(settings->value(u"one"_s), std::optional<StoredValue>("3"_ba));
            QCOMPARE(settings->value(u"two"_s), std::optional<StoredValue>("2"_ba));
        }
    }

    void aDamagedFileIsMovedAsideAndTheStartGoesOn_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("why");

        QTest::newRow("empty") << ""_ba << u"is empty"_s;
        QTest::newRow("not JSON") << "hello"_ba << u"is not JSON (at byte 1 of 5)"_s;
        QTest::newRow("cut off") << "{\"blockedDomains\": [\"a.exam"_ba << u"is JSON that breaks off after 27 bytes"_s;
        QTest::newRow("not an object") << "[\"a.example\"]"_ba << u"is not one JSON object"_s;
        QTest::newRow("zeros after a power failure") << QByteArray(4096, '\0') << u"is not JSON (at byte 1 of 4096)"_s;
    }

    void aDamagedFileIsMovedAsideAndTheStartGoesOn()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, why);
        QVERIFY(makeFolder() && writeInPlace(m_path, content));
        const auto before = QDateTime::currentDateTimeUtc();
        SettingsFile settings(m_path);
        QCOMPARE(asides().size(), 1);
        const QString aside = folder() + u'/' + asides().first();
        QCOMPARE(settings.takeProblem(), u"%1 %2; it was moved aside to %3"_s.arg(m_path, why, aside));
        QCOMPARE(settings.takeProblem(), std::nullopt);
        QCOMPARE(contentOf(aside), content);
        QVERIFY(!QFileInfo::exists(m_path));
        const auto stamp = QDateTime::fromString(aside.mid(aside.indexOf(u"damaged-"_s) + 8).first(16), u"yyyyMMdd'T'hhmmss'Z'"_s);
        QVERIFY(before.secsTo(QDateTime(stamp.date(), stamp.time(), Qt::UTC)) >= -1);

        QCOMPARE(settings.value(domains), std::nullopt);
        QVERIFY(settings.setValue(domains, QStringList { u"a.example"_s }));
        QCOMPARE(SettingsFile(m_path).value(domains), std::optional<StoredValue>(QStringList { u"a.example"_s }));
        QCOMPARE(asides().size(), 1);
    }

    void damageIsReportedInOneLine()
    {
        m_path = m_folder->filePath(u"two\nlines/\u001B[1m/settings.json"_s);
        QVERIFY(makeFolder() && writeInPlace(m_path, "damage"));
        const QString output = m_folder->filePath(u"output"_s);
        {
            const RedirectedStandardError redirected(output);
            SettingsFile settings(m_path);
            QVERIFY(settings.takeProblem().value_or(QString()).startsWith(m_path));
        }
        const QString shown = m_folder->filePath(u"two?lines/?[1m/settings.json"_s);
        const QString line = QString::fromUtf8(contentOf(output));
        QCOMPARE(line.count(u'\n'), 1);
        QVERIFY2(
            line.startsWith(u"orvanta-focus: %1 is not JSON (at byte 1 of 6); it was moved aside to %1.damaged-"_s.arg(shown)), qPrintable(line));
    }

    void whatIsNoFileIsMovedAside()
    {
        QVERIFY(QDir().mkpath(m_path + u"/inside"_s));
        SettingsFile settings(m_path);
        QVERIFY(settings.takeProblem().value_or(QString()).startsWith(m_path + u" is a folder; it was moved aside to "_s));
        QVERIFY(settings.setValue(domains, QStringList()));
        QCOMPARE(asides().size(), 1);
        QVERIFY(QFileInfo(folder() + u'/' + asides().first() + u"/inside"_s).isDir());
    }

    void aPipeIsNotWaitedFor()
    {
        QVERIFY(makeFolder());
        QCOMPARE(::mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
        SettingsFile settings(m_path);
        QVERIFY(settings.takeProblem().value_or(QString()).startsWith(m_path + u" is not a regular file; it was moved aside to "_s));
        QVERIFY(settings.setValue(domains, QStringList()));
        QCOMPARE(asides().size(), 1);
    }

    void aFileThatIsTooLargeIsMovedAside()
    {
        QVERIFY(makeFolder());
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(storedObjectLimit + 1));
        SettingsFile settings(m_path);
        QVERIFY(settings.takeProblem().value_or(QString()).startsWith(m_path + u" is larger than 64 MiB; it was moved aside to "_s));
        QCOMPARE(asides().size(), 1);
    }

    void aRingOfLinksIsMovedAside()
    {
        QVERIFY(makeFolder() && QFile::link(u"settings.json"_s, m_path));
        SettingsFile settings(m_path);
        QVERIFY(settings.takeProblem().value_or(QString()).startsWith(m_path + u" cannot be read ("_s));
        QVERIFY(settings.setValue(domains, QStringList()));
        QVERIFY(!QFileInfo(m_path).isSymLink());
        QCOMPARE(asides().size(), 1);
    }

    void aFileThatMayNotBeReadIsMovedAside()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, "{}") && QFile::setPermissions(m_path, {}));
        QVERIFY(::chmod(QFile::encodeName(m_folder->path()).constData(), 0755) == 0);
        QVERIFY(OrdinaryUser::owns(folder()) && OrdinaryUser::owns(m_path));
        const OrdinaryUser user;
        SettingsFile settings(m_path);
        QVERIFY(settings.takeProblem().value_or(QString()).startsWith(m_path + u" cannot be read (Permission denied); it was moved aside to "_s));
        QVERIFY(settings.setValue(domains, QStringList { u"a.example"_s }));
        QCOMPARE(settings.value(domains), std::optional<StoredValue>(QStringList { u"a.example"_s }));
    }

    void severalDamagedFilesAreAllKept()
    {
        QVERIFY(makeFolder());
        for (int time = 0; time < 4; ++time) {
            QVERIFY(writeInPlace(m_path, "damage " + QByteArray::number(time)));
            QVERIFY(SettingsFile(m_path).takeProblem());
        }
        QCOMPARE(asides().size(), 4);
        QStringList kept;
        for (const QString& name : asides())
            kept.append(QString::fromUtf8(contentOf(folder() + u'/' + name)));
        kept.sort();
        QCOMPARE(kept, (QStringList { u"damage 0"_s, u"damage 1"_s, u"damage 2"_s, u"damage 3"_s }));
    }

    void damageWhileRunningKeepsTheLastGoodContent()
    {
        SettingsFile settings(m_path);
        QVERIFY(settings.setValue(domains, QStringList { u"a.example"_s }));
        QVERIFY(settings.setValue(u"other"_s, "kept"_ba));
        QVERIFY(writeInPlace(m_path, "{\"blockedDomains\": [\"half"));
        QCOMPARE(settings.value(domains), std::optional<StoredValue>(QStringList { u"a.example"_s }));
        QVERIFY(!settings.setValue(domains, QStringList { u"b.example"_s })); // it may still be being written
        QCOMPARE(asides(), QStringList());

        QVERIFY(makeOlder(m_path));
        QVERIFY(settings.setValue(domains, QStringList { u"b.example"_s }));
        QCOMPARE(asides().size(), 1);
        QVERIFY(settings.takeProblem());
        SettingsFile again(m_path);
        QCOMPARE(again.value(domains), std::optional<StoredValue>(QStringList { u"b.example"_s }));
        QCOMPARE(again.value(u"other"_s), std::optional<StoredValue>("kept"_ba));
    }

    void aFullDiskLeavesTheOldFileWhole()
    {
        SettingsFile settings(m_path);
        const StoredValue old = QStringList { u"a.example"_s };
        QVERIFY(settings.setValue(domains, old));
        const QByteArray before = contentOf(m_path);
        {
            const FullDisk disk(4096);
            const auto result = settings.setValue(domains, QStringList(1000, u"longer-than-the-rest-of-the-disk.example"_s));
            QVERIFY(!result);
            QCOMPARE(result.error().description, m_path + u" could not be saved: File too large"_s);
            QCOMPARE(settings.value(domains), std::optional(old));
            QCOMPARE(contentOf(m_path), before);
            QCOMPARE(namesIn(folder()), (QStringList { u"settings.json"_s, u"settings.json.lock"_s }));
        }
        QVERIFY(settings.setValue(domains, QStringList()));
        QCOMPARE(settings.value(domains), std::optional<StoredValue>(QStringList()));
    }

    void aFolderThatMayNotBeWrittenLeavesTheOldFileWhole()
    {
        SettingsFile settings(m_path);
        const StoredValue old = QStringList { u"a.example"_s };
        QVERIFY(settings.setValue(domains, old));
        QVERIFY(::chmod(QFile::encodeName(m_folder->path()).constData(), 0755) == 0);
        for (const QString& path : { folder(), m_path, m_path + u".lock"_s })
            QVERIFY(OrdinaryUser::owns(path));
        QVERIFY(::chmod(QFile::encodeName(QFileInfo(folder()).path()).constData(), 0755) == 0);
        QVERIFY(::chmod(QFile::encodeName(folder()).constData(), 0500) == 0);
        {
            const OrdinaryUser user;
            const auto result = settings.setValue(domains, QStringList());
            QVERIFY(!result);
            QCOMPARE(result.error().description, m_path + u" could not be saved: Permission denied"_s);
            QCOMPARE(settings.value(domains), std::optional(old));
            QCOMPARE(SettingsFile(m_path).value(domains), std::optional(old));
        }
        QVERIFY(::chmod(QFile::encodeName(folder()).constData(), 0700) == 0);
        QVERIFY(settings.setValue(domains, QStringList()));
    }

    void damageInAFolderThatMayNotBeWrittenIsLeftThere()
    {
        QVERIFY(makeFolder() && writeInPlace(m_path, "damage"));
        for (const QString& path : { m_folder->path(), QFileInfo(folder()).path() })
            QVERIFY(::chmod(QFile::encodeName(path).constData(), 0755) == 0);
        QVERIFY(OrdinaryUser::owns(folder()) && OrdinaryUser::owns(m_path));
        QVERIFY(::chmod(QFile::encodeName(folder()).constData(), 0500) == 0);
        {
            const OrdinaryUser user;
            SettingsFile settings(m_path);
            QVERIFY(settings.takeProblem().value_or(QString()).startsWith(
                m_path + u" is not JSON (at byte 1 of 6), and it could not be moved aside: "_s));
            QCOMPARE(settings.value(domains), std::nullopt);
            QVERIFY(!settings.setValue(domains, QStringList()));
        }
        QCOMPARE(contentOf(m_path), "damage"_ba);
        QVERIFY(::chmod(QFile::encodeName(folder()).constData(), 0700) == 0);
    }

    void aFileInPlaceOfTheFolderIsAClearError()
    {
        QVERIFY(QDir().mkpath(QFileInfo(folder()).path()) && writeInPlace(folder(), "a file"));
        SettingsFile settings(m_path);
        QCOMPARE(settings.value(domains), std::nullopt);
        const auto result = settings.setValue(domains, QStringList());
        QVERIFY(!result);
        QCOMPARE(result.error().description, u"%1 could not be saved: %2: Not a directory"_s.arg(m_path, folder()));
        QCOMPARE(contentOf(folder()), "a file"_ba);
    }

    void moreThanCanBeReadBackIsNotSaved()
    {
        SettingsFile settings(m_path);
        QVERIFY(settings.setValue(u"key"_s, "old"_ba));
        const auto result = settings.setValue(u"key"_s, QByteArray(storedObjectLimit, 'x'));
        QVERIFY(!result);
        QCOMPARE(result.error().description, m_path + u" could not be saved: it would be larger than 64 MiB"_s);
        QCOMPARE(SettingsFile(m_path).value(u"key"_s), std::optional<StoredValue>("old"_ba));
    }

    void aLinkStaysALink()
    {
        const QString target = m_folder->filePath(u"dotfiles/focus.json"_s);
        QVERIFY(makeFolder() && QDir().mkpath(QFileInfo(target).path()));
        QVERIFY(QFile::link(u"../../dotfiles/link.json"_s, m_path));
        QVERIFY(QFile::link(u"focus.json"_s, m_folder->filePath(u"dotfiles/link.json"_s)));

        // The target need not be there yet.
        SettingsFile settings(m_path);
        QCOMPARE(settings.takeProblem(), std::nullopt);
        QVERIFY(settings.setValue(domains, QStringList { u"a.example"_s }));
        QVERIFY(settings.setValue(domains, QStringList { u"b.example"_s }));
        QVERIFY(QFileInfo(m_path).isSymLink());
        QVERIFY(!QFileInfo(target).isSymLink());
        QVERIFY(contentOf(target).contains("b.example"));
        QCOMPARE(namesIn(QFileInfo(target).path()), (QStringList { u"focus.json"_s, u"link.json"_s }));

        // Damage is moved aside where it is, and the link goes on pointing to the place.
        QVERIFY(writeInPlace(target, "damage"));
        SettingsFile again(m_path);
        QVERIFY(again.takeProblem().value_or(QString()).contains(target + u".damaged-"_s));
        QVERIFY(again.setValue(domains, QStringList()));
        QVERIFY(QFileInfo(m_path).isSymLink());
        QVERIFY(QFileInfo::exists(target));
    }
};

QTEST_GUILESS_MAIN(TestSettingsFile)
#include "test_settings_file.moc"
