#include "app/settings_models.h"

#include "app/app_model.h"
#include "support/call_log.h"
#include "support/fake_activation_monitor.h"
#include "support/fake_application_directory.h"
#include "support/fake_application_folders.h"
#include "support/fake_cloud_store.h"
#include "support/fake_dns_proxy_manager.h"
#include "support/fake_extension_manager.h"
#include "support/fake_filter_manager.h"
#include "support/fake_key_value_store.h"
#include "support/fake_overlay_panels.h"
#include "support/fake_running_applications.h"
#include "support/fake_screens.h"
#include "support/fake_secret_store.h"
#include "support/fake_system_focus.h"
#include "support/fake_system_notifications.h"
#include "support/fake_url_opener.h"
#include "support/fake_url_session.h"

#include <QQmlEngine>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

ApplicationRecord record(const QString& name)
{
    ApplicationRecord found;
    found.applicationURL = QUrl::fromLocalFile(u"/apps/"_s + name);
    found.bundleIdentifier = u"org.example."_s + name;
    found.bundleDisplayName = name;
    return found;
}

/// The settings' models over a model among doubles.
struct House {
    CallLog log;
    FakeKeyValueStore defaults;
    FakeCloudStore cloud;
    FakeSecretStore secrets;
    FakeScreens screens { { { 7, QRect(0, 0, 800, 600) } } };
    FakeOverlayPanels panels { log };
    FakeRunningApplications running { log };
    FakeActivationMonitor activations;
    FakeExtensionManager extension { log };
    FakeFilterManager filter { log };
    FakeDnsProxyManager dnsProxy { log };
    FakeSystemNotifications notifications { log };
    FakeUrlOpener urlOpener;
    FakeSystemFocus systemFocus { log };
    FakeUrlSession session;
    AppModel model { { .defaults = defaults,
                         .cloudStore = cloud,
                         .secrets = secrets,
                         .screens = screens,
                         .overlayPanels = panels,
                         .runningApplications = running,
                         .activationMonitor = activations,
                         .extensionManager = extension,
                         .filterManager = filter,
                         .dnsProxyManager = dnsProxy,
                         .systemNotifications = notifications,
                         .urlOpener = urlOpener,
                         .systemFocus = systemFocus,
                         .urlSession = session,
                         .activitySources = [] { return ActivitySources {}; }, // no key, no tracker
                         .service = *ServiceConfiguration::make(u"https://service.example"_s, std::nullopt) },
        { u"orvanta-focus"_s } };
    QQmlEngine engine;
    FakeApplicationFolders folders;
    std::shared_ptr<FakeApplicationDirectory> directory = std::make_shared<FakeApplicationDirectory>();
};

} // namespace

class TestSettingsModels : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theListsFollowTheModel()
    {
        House house;
        house.model.addDomain(u"b.example"_s);
        SettingsModels settings(house.model, house.engine, house.folders, house.directory);
        QCOMPARE(settings.blockedDomains()->texts(), QStringList { u"b.example"_s });
        house.model.addDomain(u"a.example"_s);
        QCOMPARE(settings.blockedDomains()->texts(), QStringList({ u"a.example"_s, u"b.example"_s }));
        house.model.removeDomain(u"b.example"_s);
        QCOMPARE(settings.blockedDomains()->texts(), QStringList { u"a.example"_s });
        house.model.addApplication(u"org.example.Editor"_s, u"Editor"_s);
        QCOMPARE(settings.blockedApplications()->applications(), house.model.blockedApplications());
        QCOMPARE(settings.blockedApplications()->count(), 1);
        house.model.removeApplication(u"org.example.Editor"_s);
        QCOMPARE(settings.blockedApplications()->count(), 0);
    }

    void whatIsInstalledIsOfferedButForTheProgramItself()
    {
        House house;
        house.folders.defaultFolders = { QUrl::fromLocalFile(u"/apps"_s) };
        house.folders.content[house.folders.defaultFolders.front()] = { record(u"Tunes"_s), record(u"Focus"_s), record(u"Album"_s) };
        house.folders.own = u"org.example.Focus"_s;
        SettingsModels settings(house.model, house.engine, house.folders, house.directory);
        std::optional<std::vector<InstalledApplication>> found;
        settings.installedApplications()->scan(&settings, [&](InstalledApplicationSource::Result result) { found = std::move(result.applications); });
        QTRY_VERIFY(found);
        QCOMPARE(found->size(), std::size_t { 2 });
        QCOMPARE(found->at(0).displayName, u"Album"_s);
        QCOMPARE(found->at(1).displayName, u"Tunes"_s);
    }

    void withoutAnIdentifierOfItsOwnTheProgramLeavesNothingOut()
    {
        House house;
        house.folders.defaultFolders = { QUrl::fromLocalFile(u"/apps"_s) };
        house.folders.content[house.folders.defaultFolders.front()] = { record(u"Focus"_s) };
        SettingsModels settings(house.model, house.engine, house.folders, house.directory);
        std::optional<std::size_t> count;
        settings.installedApplications()->scan(
            &settings, [&](const InstalledApplicationSource::Result& result) { count = result.applications.size(); });
        QTRY_VERIFY(count);
        QCOMPARE(*count, std::size_t { 1 });
    }

    void blockedApplicationsAreFoundInTheDirectory()
    {
        House house;
        const QUrl place = QUrl::fromLocalFile(u"/apps/Editor"_s);
        house.directory->installed[u"org.example.Editor"_s] = place;
        house.model.addApplication(u"org.example.Editor"_s, u"Editor"_s);
        SettingsModels settings(house.model, house.engine, house.folders, house.directory);
        const auto url = [&] {
            auto* model = settings.blockedApplications();
            return model->data(model->index(0), BlockedApplicationListModel::applicationUrlRole).toUrl();
        };
        QTRY_COMPARE(url(), place);
    }

    void theEngineHasTheIcons()
    {
        House house;
        const SettingsModels settings(house.model, house.engine, house.folders, house.directory);
        QVERIFY(house.engine.imageProvider(u"application-icon"_s));
    }
};

QTEST_MAIN(TestSettingsModels)
#include "test_settings_models.moc"
