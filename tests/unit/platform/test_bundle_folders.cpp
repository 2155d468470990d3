#include "platform/portable/bundle_folders.h"

#include "support/contracts/application_folders_contract.h"
#include "support/install_files.h"
#include "support/limited_rights.h"

#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestBundleFoldersContract : public ApplicationFoldersContract {
    Q_OBJECT

    std::unique_ptr<ApplicationFolders> makeFolders() override
    {
        m_folder = std::make_unique<QTemporaryDir>();
        return std::make_unique<BundleFolders>(std::vector { QUrl::fromLocalFile(m_folder->path()) });
    }
    QString install(ApplicationFolders&, const QUrl& folder, const QString& name) override
    {
        const QString identifier = u"org.example."_s + QString(name).remove(u' ');
        if (!installBundle(folder.toLocalFile() + u'/' + name + u".app"_s,
                textEntry("CFBundleIdentifier", identifier.toUtf8()) + textEntry("CFBundleDisplayName", name.toUtf8())))
            return {};
        return identifier;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

class TestBundleFolders : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    BundleFolders m_bundles;

    [[nodiscard]] QString path(const QString& name) const { return m_folder->filePath(name); }
    [[nodiscard]] bool put(const QString& name, const QByteArray& identifier) const
    {
        return installBundle(path(name), textEntry("CFBundleIdentifier", identifier));
    }

    [[nodiscard]] QStringList found() const
    {
        QStringList identifiers;
        for (const ApplicationRecord& record : m_bundles.records(QUrl::fromLocalFile(m_folder->path())))
            identifiers << record.bundleIdentifier.value_or(u"none"_s);
        return identifiers;
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void applicationsInSubfoldersAreFoundAtAnyDepth()
    {
        QVERIFY(put(u"Utilities/Terminal.app"_s, "a.terminal"));
        QVERIFY(put(u"1/2/3/4/5/6/7/8/9/10/Deep.app"_s, "a.deep"));
        QCOMPARE(found(), QStringList({ u"a.deep"_s, u"a.terminal"_s }));
    }

    void whatLiesInsideAnApplicationOrAnotherPackageIsNotFound()
    {
        QVERIFY(put(u"Outer.app"_s, "a.outer"));
        QVERIFY(put(u"Outer.app/Contents/Helpers/Inner.app"_s, "a.inner"));
        QVERIFY(put(u"Some.bundle/Inner.app"_s, "a.inbundle"));
        QVERIFY(put(u"Some.PLUGIN/Inner.app"_s, "a.inplugin"));
        // One without an identifier is a package all the same.
        QVERIFY(put(u"Broken.app/Contents/Inner.app"_s, "a.inbroken"));
        QCOMPARE(found(), QStringList({ u"a.outer"_s }));
    }

    void hiddenFilesAndFoldersArePassedOver()
    {
        QVERIFY(put(u".Hidden.app"_s, "a.hidden"));
        QVERIFY(put(u".folder/Inner.app"_s, "a.infolder"));
        QVERIFY(put(u"Shown.app"_s, "a.shown"));
        QCOMPARE(found(), QStringList({ u"a.shown"_s }));
    }

    void theExtensionCountsInAnyCase()
    {
        QVERIFY(put(u"One.APP"_s, "a.one"));
        QVERIFY(put(u"Two.aPp"_s, "a.two"));
        QVERIFY(put(u"Three.apple"_s, "a.three"));
        QVERIFY(put(u"app"_s, "a.four"));
        QCOMPARE(found(), QStringList({ u"a.one"_s, u"a.two"_s }));
    }

    void aLinkToAnApplicationIsOneAndALinkToAFolderIsNotFollowed()
    {
        const QTemporaryDir elsewhere;
        QVERIFY(installBundle(elsewhere.filePath(u"Real.app"_s), textEntry("CFBundleIdentifier", "a.real")));
        QVERIFY(QFile::link(elsewhere.filePath(u"Real.app"_s), path(u"Linked.app"_s)));
        QVERIFY(QFile::link(elsewhere.path(), path(u"Folder"_s)));
        QVERIFY(QFile::link(m_folder->path(), path(u"Ring"_s)));
        const auto records = m_bundles.records(QUrl::fromLocalFile(m_folder->path()));
        QCOMPARE(records.size(), 1U);
        QCOMPARE(records.front().applicationURL, QUrl::fromLocalFile(path(u"Linked.app"_s)));
    }

    void linksThatGoRoundAndRoundAreNone()
    {
        QVERIFY(QFile::link(path(u"B.app"_s), path(u"A.app"_s)));
        QVERIFY(QFile::link(path(u"A.app"_s), path(u"B.app"_s)));
        QVERIFY(QDir().mkpath(path(u"C.app/Contents"_s)));
        QVERIFY(QFile::link(path(u"C.app/Contents/Info.plist"_s), path(u"C.app/Contents/Info.plist"_s)));
        QCOMPARE(found(), QStringList());
    }

    void filesFoldersAndPipesThatOnlyLookLikeApplicationsAreNone()
    {
        QVERIFY(writeInPlace(path(u"File.app"_s), "not a folder"));
        QVERIFY(QDir().mkpath(path(u"Empty.app/Contents"_s)));
        QVERIFY(QDir().mkpath(path(u"Folder.app/Contents/Info.plist"_s)));
        QVERIFY(QDir().mkpath(path(u"Pipe.app/Contents"_s)));
        QCOMPARE(::mkfifo(QFile::encodeName(path(u"Pipe.app/Contents/Info.plist"_s)).constData(), 0600), 0);
        QCOMPARE(found(), QStringList());
    }

    void whatCannotBeReadSaysNothing()
    {
        QVERIFY(QDir().mkpath(path(u"Garbage.app/Contents"_s)));
        QVERIFY(writeInPlace(path(u"Garbage.app/Contents/Info.plist"_s), QByteArray(5000, '\x01')));
        QVERIFY(put(u"Huge.app"_s, "a.huge"));
        QFile huge(path(u"Huge.app/Contents/Info.plist"_s));
        QVERIFY(huge.open(QFile::ReadWrite) && huge.resize(qint64 { 1 } << 40));
        for (const ApplicationRecord& record : m_bundles.records(QUrl::fromLocalFile(m_folder->path())))
            QCOMPARE(record.bundleIdentifier, std::optional<QString>());
    }

    void foldersThatMayNotBeReadArePassedOver()
    {
        QVERIFY(put(u"Secret/Inner.app"_s, "a.secret"));
        QVERIFY(put(u"Open/Inner.app"_s, "a.open"));
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7755)));
        QVERIFY(QFile::setPermissions(path(u"Secret"_s), QFile::Permissions()));
        QStringList seen;
        {
            const OrdinaryUser user;
            seen = found();
        }
        QVERIFY(QFile::setPermissions(path(u"Secret"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(seen, QStringList({ u"a.open"_s }));
    }

    void aBundleWithoutAContentsFolderIsRead()
    {
        QVERIFY(QDir().mkpath(path(u"Flat.app"_s)));
        QVERIFY(writeInPlace(path(u"Flat.app/Info.plist"_s), xmlPropertyList(textEntry("CFBundleIdentifier", "a.flat"))));
        QCOMPARE(found(), QStringList({ u"a.flat"_s }));
    }

    void namesOfAnyBytesAreFound()
    {
        QVERIFY(put(u"Été #1 %20?.app"_s, "a.odd"));
        const auto records = m_bundles.records(QUrl::fromLocalFile(m_folder->path() + u'/'));
        QCOMPARE(records.size(), 1U);
        QCOMPARE(records.front().applicationURL.toLocalFile(), path(u"Été #1 %20?.app"_s));
        QVERIFY(m_bundles.record(records.front().applicationURL));
    }

    void aNestWithoutEndEnds()
    {
        int here = ::open(QFile::encodeName(m_folder->path()).constData(), O_RDONLY | O_DIRECTORY);
        const QByteArray name(200, 'n');
        for (int depth = 0; depth < 100; ++depth) {
            QCOMPARE(::mkdirat(here, name.constData(), 0700), 0);
            const int next = ::openat(here, name.constData(), O_RDONLY | O_DIRECTORY);
            QVERIFY(next >= 0);
            ::close(here);
            here = next;
        }
        ::close(here);
        QVERIFY(put(u"Shown.app"_s, "a.shown"));
        const QStringList seen = found();
        // Its paths are too long for whatever works with paths.
        QCOMPARE(QProcess::execute(u"rm"_s, { u"-rf"_s, m_folder->path() }), 0);
        QCOMPARE(seen, QStringList({ u"a.shown"_s }));
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TestBundleFoldersContract contract;
    TestBundleFolders folders;
    int failures = 0;
    for (QObject* test : { static_cast<QObject*>(&contract), static_cast<QObject*>(&folders) })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_bundle_folders.moc"
