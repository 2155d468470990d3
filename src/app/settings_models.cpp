#include "app/settings_models.h"

#include "app/app_model.h"
#include "blocking/installed_application_catalog.h"
#include "platform/application_directory.h"
#include "platform/application_folders.h"
#include "settings/application_icon_provider.h"

#include <QQmlEngine>

namespace orvanta {

namespace {

/// Everything that can be blocked: all that is installed but this program itself.
std::vector<InstalledApplication> scan(const ApplicationFolders& folders)
{
    QSet<QString> excluding;
    if (const auto own = folders.ownBundleIdentifier())
        excluding.insert(*own);
    return InstalledApplicationCatalog(folders).applications(excluding);
}

} // namespace

SettingsModels::SettingsModels(
    AppModel& model, QQmlEngine& engine, const ApplicationFolders& folders, std::shared_ptr<const ApplicationDirectory> directory)
    : m_locations([directory](const QString& bundleIdentifier) { return directory->locate(bundleIdentifier); })
    , m_blockedApplications(m_locations)
    , m_installedApplications([&folders] { return scan(folders); })
{
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the engine takes it
    auto* icons = new ApplicationIconProvider([directory](const QString& path, int pixelSize) { return directory->icon(path, pixelSize); });
    engine.addImageProvider(ApplicationIconProvider::name(), icons);

    const auto takeDomains = [this, &model] { m_blockedDomains.setTexts(model.blockedDomains()); };
    const auto takeApplications = [this, &model] { m_blockedApplications.setApplications(model.blockedApplications()); };
    connect(&model, &AppModel::blockedDomainsChanged, this, takeDomains);
    connect(&model, &AppModel::blockedApplicationsChanged, this, takeApplications);
    takeDomains();
    takeApplications();
}

SettingsModels::~SettingsModels() = default;

} // namespace orvanta
