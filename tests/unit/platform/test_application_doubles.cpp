#include "support/contracts/application_directory_contract.h"
#include "support/contracts/application_folders_contract.h"
#include "support/fake_application_directory.h"
#include "support/fake_application_folders.h"

#include <QCoreApplication>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestFakeApplicationFolders : public ApplicationFoldersContract {
    Q_OBJECT

    std::unique_ptr<ApplicationFolders> makeFolders() override
    {
        auto folders = std::make_unique<FakeApplicationFolders>();
        folders->defaultFolders = { QUrl::fromLocalFile(u"/applications/"_s) };
        return folders;
    }
    QString install(ApplicationFolders& folders, const QUrl& folder, const QString& name) override
    {
        auto& fake = static_cast<FakeApplicationFolders&>(folders);
        fake.content[folder].push_back({ .applicationURL = QUrl::fromLocalFile(u"/applications/"_s + name + u".app"_s),
            .bundleIdentifier = u"org.example."_s + name,
            .uiElement = {},
            .backgroundOnly = {},
            .bundleDisplayName = name,
            .bundleName = {} });
        return u"org.example."_s + name;
    }
};

class TestFakeApplicationDirectory : public ApplicationDirectoryContract {
    Q_OBJECT

    std::unique_ptr<ApplicationDirectory> makeDirectory() override { return std::make_unique<FakeApplicationDirectory>(); }
    QString install(ApplicationDirectory& directory) override
    {
        auto& fake = static_cast<FakeApplicationDirectory&>(directory);
        fake.installed[u"org.example.Editor"_s] = QUrl::fromLocalFile(u"/applications/Editor.app"_s);
        QImage icon(64, 32, QImage::Format_ARGB32);
        icon.fill(Qt::red);
        fake.icons[u"/applications/Editor.app"_s] = icon;
        return u"org.example.Editor"_s;
    }
    QString installWithoutIcon(ApplicationDirectory& directory) override
    {
        static_cast<FakeApplicationDirectory&>(directory).installed[u"org.example.Plain"_s] = QUrl::fromLocalFile(u"/applications/Plain.app"_s);
        return u"org.example.Plain"_s;
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TestFakeApplicationFolders folders;
    TestFakeApplicationDirectory directory;
    int failures = 0;
    for (QObject* test : { static_cast<QObject*>(&folders), static_cast<QObject*>(&directory) })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_application_doubles.moc"
