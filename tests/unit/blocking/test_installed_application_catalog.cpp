#include "blocking/installed_application_catalog.h"

#include "blocking/natural_order.h"
#include "platform/portable/bundle_folders.h"
#include "support/fake_application_folders.h"
#include "support/install_files.h"

#include <QTemporaryDir>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

const QUrl systemFolder = QUrl::fromLocalFile(u"/Applications"_s);
const QUrl userFolder = QUrl::fromLocalFile(u"/home/user/Applications"_s);

ApplicationRecord record(const QString& identifier, const QString& name, const QUrl& folder = systemFolder)
{
    return { .applicationURL = QUrl::fromLocalFile(folder.toLocalFile() + u"/Some App.app"_s),
        .bundleIdentifier = identifier,
        .uiElement = {},
        .backgroundOnly = {},
        .bundleDisplayName = name,
        .bundleName = {} };
}

QStringList names(const std::vector<InstalledApplication>& applications)
{
    QStringList result;
    for (const InstalledApplication& application : applications)
        result << application.displayName;
    return result;
}

QStringList sortedNames(const QStringList& given)
{
    FakeApplicationFolders folders;
    for (const QString& name : given)
        folders.content[systemFolder].push_back(record(u"id."_s + QString::number(folders.content[systemFolder].size()), name));
    return names(InstalledApplicationCatalog(folders).applications({ systemFolder }, {}));
}

} // namespace

class TestInstalledApplicationCatalog : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    BundleFolders m_bundles;

    [[nodiscard]] QString path(const QString& name) const { return m_folder->filePath(name); }
    [[nodiscard]] QUrl url(const QString& name) const { return QUrl::fromLocalFile(path(name)); }
    [[nodiscard]] std::vector<InstalledApplication> scan(const QStringList& folders, const QSet<QString>& excluding = {}) const
    {
        std::vector<QUrl> directories;
        for (const QString& folder : folders)
            directories.push_back(url(folder));
        return InstalledApplicationCatalog(m_bundles).applications(directories, excluding);
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    // The record

    void anIdentifierIsTrimmedOfWhiteSpaceAndLineBreaks()
    {
        const auto application = InstalledApplication::make(record(u"  \t org.example.Editor\r\n"_s, u"Editor"_s));
        QVERIFY(application);
        QCOMPARE(application->bundleIdentifier, u"org.example.Editor"_s);
        QCOMPARE(application->id(), u"org.example.Editor"_s);
    }

    void withoutAnIdentifierThereIsNoRecord()
    {
        ApplicationRecord anonymous = record({}, u"Editor"_s);
        QVERIFY(!InstalledApplication::make(anonymous));
        anonymous.bundleIdentifier = u" \n\t"_s;
        QVERIFY(!InstalledApplication::make(anonymous));
        anonymous.bundleIdentifier.reset();
        QVERIFY(!InstalledApplication::make(anonymous));
    }

    void agentsAndBackgroundApplicationsAreLeftOut()
    {
        ApplicationRecord some = record(u"a.b"_s, u"Some"_s);
        some.uiElement = false;
        some.backgroundOnly = false;
        QVERIFY(InstalledApplication::make(some));
        some.uiElement = true;
        QVERIFY(!InstalledApplication::make(some));
        some.uiElement.reset();
        some.backgroundOnly = true;
        QVERIFY(!InstalledApplication::make(some));
    }

    void theDisplayNameIsTheFirstThatThereIs()
    {
        ApplicationRecord some = record(u"a.b"_s, u"Display"_s);
        some.bundleName = u"Bundle"_s;
        QCOMPARE(InstalledApplication::make(some)->displayName, u"Display"_s);
        some.bundleDisplayName = u" "_s;
        QCOMPARE(InstalledApplication::make(some)->displayName, u" "_s);
        some.bundleDisplayName = QString();
        QCOMPARE(InstalledApplication::make(some)->displayName, QString());
        some.bundleDisplayName.reset();
        QCOMPARE(InstalledApplication::make(some)->displayName, u"Bundle"_s);
        some.bundleName.reset();
        QCOMPARE(InstalledApplication::make(some)->displayName, u"Some App"_s);
    }

    void theNameOfAFileLosesItsExtensionAlone_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("name");
        QTest::newRow("bundle") << u"/Applications/Foo Bar.app"_s << u"Foo Bar"_s;
        QTest::newRow("as a folder") << u"/Applications/Foo Bar.app/"_s << u"Foo Bar"_s;
        QTest::newRow("two dots") << u"/Applications/Foo 2.5.app"_s << u"Foo 2.5"_s;
        QTest::newRow("desktop entry") << u"/usr/share/applications/org.example.Editor.desktop"_s << u"org.example.Editor"_s;
        QTest::newRow("odd letters") << u"/Applications/Été #1 %20?.app"_s << u"Été #1 %20?"_s;
        QTest::newRow("no extension") << u"/Applications/Foo"_s << u"Foo"_s;
    }

    void theNameOfAFileLosesItsExtensionAlone()
    {
        QFETCH(QString, file);
        ApplicationRecord some = record(u"a.b"_s, {});
        some.bundleDisplayName.reset();
        some.applicationURL = QUrl::fromLocalFile(file);
        QTEST(InstalledApplication::make(some)->displayName, "name");
    }

    void equalityAndHashTakeAllThreeFields()
    {
        const InstalledApplication one { u"Editor"_s, u"a.b"_s, systemFolder };
        QCOMPARE(one, (InstalledApplication { u"Editor"_s, u"a.b"_s, systemFolder }));
        QCOMPARE(qHash(one), qHash(InstalledApplication { u"Editor"_s, u"a.b"_s, systemFolder }));
        const std::vector<InstalledApplication> others { { u"Writer"_s, u"a.b"_s, systemFolder }, { u"Editor"_s, u"a.c"_s, systemFolder },
            { u"Editor"_s, u"a.b"_s, userFolder } };
        for (const InstalledApplication& other : others) {
            QVERIFY(one != other);
            QVERIFY(qHash(one) != qHash(other));
        }
    }

    // The scan

    void theDefaultFoldersAreTheSystemsInTheirOrder()
    {
        FakeApplicationFolders folders;
        folders.defaultFolders = { userFolder, systemFolder };
        folders.content[userFolder] = { record(u"a.user"_s, u"B"_s, userFolder) };
        folders.content[systemFolder] = { record(u"a.system"_s, u"A"_s) };
        const InstalledApplicationCatalog catalog(folders);
        QCOMPARE(catalog.defaultDirectories(), std::vector({ userFolder, systemFolder }));
        QCOMPARE(names(catalog.applications(QSet<QString>())), QStringList({ u"A"_s, u"B"_s }));
        QCOMPARE(names(catalog.applications({ userFolder }, {})), QStringList({ u"B"_s }));
    }

    void whatIsExcludedIsLeftOut()
    {
        FakeApplicationFolders folders;
        folders.content[systemFolder] = { record(u" com.orvanta.Focus "_s, u"Orvanta Focus"_s), record(u"com.orvanta.focus"_s, u"Other"_s) };
        const InstalledApplicationCatalog catalog(folders);
        QCOMPARE(names(catalog.applications({ systemFolder }, { u"com.orvanta.Focus"_s })), QStringList({ u"Other"_s }));
        QCOMPARE(names(catalog.applications({ systemFolder }, {})), QStringList({ u"Orvanta Focus"_s, u"Other"_s }));
    }

    void ofSeveralCopiesTheOneWhoseNameStandsFirstWins()
    {
        FakeApplicationFolders folders;
        folders.content[systemFolder] = { record(u"a.b"_s, u"App 10"_s) };
        folders.content[userFolder] = { record(u"a.b"_s, u"App 2"_s, userFolder), record(u"a.b"_s, u"App 3"_s) };
        const InstalledApplicationCatalog catalog(folders);
        const auto applications = catalog.applications({ systemFolder, userFolder }, {});
        QCOMPARE(names(applications), QStringList({ u"App 2"_s }));
        QCOMPARE(applications.front().applicationURL, record({}, {}, userFolder).applicationURL);
    }

    void ofEqualNamesTheFirstOneFoundStays()
    {
        FakeApplicationFolders folders;
        folders.content[systemFolder] = { record(u"a.b"_s, u"EDITOR"_s) };
        folders.content[userFolder] = { record(u"a.b"_s, u"editor"_s, userFolder) };
        const InstalledApplicationCatalog catalog(folders);
        QCOMPARE(names(catalog.applications({ systemFolder, userFolder }, {})), QStringList({ u"EDITOR"_s }));
        QCOMPARE(names(catalog.applications({ userFolder, systemFolder }, {})), QStringList({ u"editor"_s }));
    }

    // The order

    void numbersInNamesAreComparedByTheirValue()
    {
        QCOMPARE(
            sortedNames({ u"App 10"_s, u"App 2"_s, u"App 1"_s, u"App 02b"_s }), QStringList({ u"App 1"_s, u"App 2"_s, u"App 02b"_s, u"App 10"_s }));
    }

    void caseDoesNotCount()
    {
        QCOMPARE(sortedNames({ u"banana"_s, u"Cherry"_s, u"apple"_s, u"Élan"_s, u"elf"_s }),
            QStringList({ u"apple"_s, u"banana"_s, u"Cherry"_s, u"Élan"_s, u"elf"_s }));
    }

    void keysCompareAsNamesDo()
    {
        const NaturalOrder order;
        const QStringList some { u"App 2"_s, u"app 10"_s, u"APP 2"_s, u"Été"_s, u"ete"_s, QString(), u"日本"_s };
        const auto sign = [](int value) { return (value > 0) - (value < 0); };
        for (const QString& left : some) {
            for (const QString& right : some)
                QCOMPARE(sign(order.key(left).compare(order.key(right))), sign(order.compare(left, right)));
        }
    }

    // On real folders

    void bundlesOfBothFormsAreListed()
    {
        const QByteArray entries = textEntry("CFBundleIdentifier", "  org.example.Painter\n") + textEntry("CFBundleDisplayName", "Painter");
        QVERIFY(installBundle(path(u"Applications/Painter.app"_s), entries));
        QVERIFY(QDir().mkpath(path(u"Applications/Utilities/Writer 2.app/Contents"_s)));
        const QByteArray binary
            = binaryPropertyList(xmlPropertyList(textEntry("CFBundleIdentifier", "org.example.Writer") + "<key>LSUIElement</key><false/>"));
        QVERIFY(!binary.isEmpty());
        QVERIFY(writeInPlace(path(u"Applications/Utilities/Writer 2.app/Contents/Info.plist"_s), binary));
        QCOMPARE(scan({ u"Applications"_s }),
            (std::vector<InstalledApplication> { { u"Painter"_s, u"org.example.Painter"_s, url(u"Applications/Painter.app"_s) },
                { u"Writer 2"_s, u"org.example.Writer"_s, url(u"Applications/Utilities/Writer 2.app"_s) } }));
    }

    void anAgentIsLeftOutAndOneThatSaysSoInAStringIsListed()
    {
        QVERIFY(installBundle(path(u"A/Agent.app"_s), textEntry("CFBundleIdentifier", "a.agent") + "<key>LSUIElement</key><true/>"));
        QVERIFY(installBundle(path(u"A/Daemon.app"_s), textEntry("CFBundleIdentifier", "a.daemon") + "<key>LSBackgroundOnly</key><true/>"));
        QVERIFY(installBundle(path(u"A/Text.app"_s), textEntry("CFBundleIdentifier", "a.text") + textEntry("LSUIElement", "true")));
        QVERIFY(
            installBundle(path(u"A/Number.app"_s), textEntry("CFBundleIdentifier", "a.number") + "<key>LSBackgroundOnly</key><integer>1</integer>"));
        QCOMPARE(names(scan({ u"A"_s })), QStringList({ u"Number"_s, u"Text"_s }));
    }

    void oneInBothFoldersIsListedOnceWithTheFirst()
    {
        const QByteArray entries = textEntry("CFBundleIdentifier", "org.example.Editor") + textEntry("CFBundleName", "Editor");
        QVERIFY(installBundle(path(u"home/Applications/Editor.app"_s), entries));
        QVERIFY(installBundle(path(u"Applications/Editor.app"_s), entries));
        const auto applications = scan({ u"Applications"_s, u"home/Applications"_s });
        QCOMPARE(applications.size(), 1U);
        QCOMPARE(applications.front().applicationURL, url(u"Applications/Editor.app"_s));
    }

    void aMissingFolderIsPassedOver()
    {
        QVERIFY(installBundle(path(u"Applications/Editor.app"_s), textEntry("CFBundleIdentifier", "a.editor")));
        QCOMPARE(names(scan({ u"missing"_s, u"Applications"_s, u"absent"_s })), QStringList({ u"Editor"_s }));
    }
};

QTEST_GUILESS_MAIN(TestInstalledApplicationCatalog)
#include "test_installed_application_catalog.moc"
