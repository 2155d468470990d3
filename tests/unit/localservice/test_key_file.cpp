#include "localservice/data_folder.h"
#include "localservice/key_file.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

namespace {

unsigned modeOf(const QString& path)
{
    struct stat information {};
    if (::stat(QFile::encodeName(path).constData(), &information) != 0)
        qFatal("%s is not there", qPrintable(path));
    return information.st_mode & 07777;
}

void write(const QString& path, const QByteArray& bytes, mode_t mode)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || ::chmod(QFile::encodeName(path).constData(), mode) != 0)
        qFatal("%s", qPrintable(file.errorString()));
}

} // namespace

class TestKeyFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFirstUseMakesAKeyForItsOwnerAlone()
    {
        QTemporaryDir folder;
        const QString path = keyFilePath(folder.path());
        const ApiKey key = readOrMakeApiKey(path).value();
        QVERIFY(!key.notice);
        QVERIFY(QRegularExpression(u"^[A-Za-z0-9_-]{43}$"_s).match(QString::fromLatin1(key.text)).hasMatch());
        QCOMPARE(QByteArray::fromBase64(key.text, QByteArray::Base64UrlEncoding).size(), 32);
        QCOMPARE(modeOf(path), 0600U);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList { u"api-key"_s });
    }

    void theKeyStaysTheSame()
    {
        QTemporaryDir folder;
        const QByteArray first = readOrMakeApiKey(keyFilePath(folder.path()))->text;
        QCOMPARE(readOrMakeApiKey(keyFilePath(folder.path()))->text, first);
        QTemporaryDir other;
        QVERIFY(readOrMakeApiKey(keyFilePath(other.path()))->text != first);
    }

    void aFileThatOthersCanReadIsClosedToThem()
    {
        QTemporaryDir folder;
        const QString path = keyFilePath(folder.path());
        write(path, "a-key-of-my-own-choice\n", 0644);
        const ApiKey key = readOrMakeApiKey(path).value();
        QCOMPARE(key.text, "a-key-of-my-own-choice"_ba);
        QVERIFY(key.notice && key.notice->contains(u"could be read by others"_s));
        QCOMPARE(modeOf(path), 0600U);
        QVERIFY(!readOrMakeApiKey(path)->notice);
    }

    void whatIsNoKeyIsRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << ""_ba;
        QTest::newRow("short") << "secret"_ba;
        QTest::newRow("two words") << "a key with blanks in it"_ba;
        QTest::newRow("bytes beyond ASCII") << QByteArray(20, '\xe4');
        QTest::newRow("endless") << QByteArray(5000, 'x');
    }

    void whatIsNoKeyIsRefused()
    {
        QFETCH(QByteArray, content);
        QTemporaryDir folder;
        write(keyFilePath(folder.path()), content, 0600);
        const auto key = readOrMakeApiKey(keyFilePath(folder.path()));
        QVERIFY(!key.has_value());
        QVERIFY(key.error().contains(u"holds no usable key"_s));
    }

    void aSymbolicLinkIsNotFollowed()
    {
        QTemporaryDir folder;
        write(folder.filePath(u"elsewhere"_s), "a-key-of-my-own-choice\n", 0600);
        QVERIFY(QFile::link(folder.filePath(u"elsewhere"_s), keyFilePath(folder.path())));
        QVERIFY(!readOrMakeApiKey(keyFilePath(folder.path())).has_value());
    }

    void aFolderIsNoKey()
    {
        QTemporaryDir folder;
        QVERIFY(QDir().mkdir(keyFilePath(folder.path())));
        const auto key = readOrMakeApiKey(keyFilePath(folder.path()));
        QVERIFY(!key.has_value());
        QVERIFY(key.error().contains(keyFilePath(folder.path())));
    }

    void secretsAreTheSameOnlyWhole()
    {
        QVERIFY(isSameSecret("abc", "abc"));
        QVERIFY(!isSameSecret("abd", "abc"));
        QVERIFY(!isSameSecret("ab", "abc"));
        QVERIFY(!isSameSecret("abcd", "abc"));
        QVERIFY(!isSameSecret("", "abc"));
    }

    void theDataFolderIsMadeWithItsParents()
    {
        QTemporaryDir parent;
        const QString folder = parent.filePath(u"a/b"_s);
        QVERIFY(!prepareDataFolder(folder).value());
        QCOMPARE(modeOf(folder), 0700U);
    }

    void anOpenDataFolderIsClosedIfItHoldsNothingElse()
    {
        QTemporaryDir parent;
        const QString folder = parent.filePath(u"data"_s);
        QVERIFY(QDir().mkdir(folder));
        QCOMPARE(::chmod(QFile::encodeName(folder).constData(), 0755), 0);
        write(keyFilePath(folder), "a-key-of-my-own-choice\n", 0600);
        QVERIFY(prepareDataFolder(folder).value()->contains(u"it is now yours alone"_s));
        QCOMPARE(modeOf(folder), 0700U);
    }

    void anOpenFolderWithOtherFilesIsLeftAsItIs()
    {
        QTemporaryDir parent;
        QCOMPARE(::chmod(QFile::encodeName(parent.path()).constData(), 0755), 0);
        write(parent.filePath(u"photo.jpg"_s), "x", 0644);
        QVERIFY(prepareDataFolder(parent.path()).value()->contains(u"it was left as it is"_s));
        QCOMPARE(modeOf(parent.path()), 0755U);
    }

    void aFileInPlaceOfTheDataFolderIsAClearError()
    {
        QTemporaryDir parent;
        write(parent.filePath(u"data"_s), "x", 0600);
        const auto prepared = prepareDataFolder(parent.filePath(u"data"_s));
        QVERIFY(!prepared.has_value());
        QVERIFY(prepared.error().contains(u"is not a folder"_s));
    }

    void oneProcessServesAFolderAtATime()
    {
        QTemporaryDir folder;
        {
            const auto first = FolderLock::take(folder.path());
            QVERIFY(first.has_value());
            const auto second = FolderLock::take(folder.path());
            QVERIFY(!second.has_value());
            QVERIFY(second.error().contains(folder.path()));
        }
        QVERIFY(FolderLock::take(folder.path()).has_value());
    }
};

QTEST_GUILESS_MAIN(TestKeyFile)
#include "test_key_file.moc"
