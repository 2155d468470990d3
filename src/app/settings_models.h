#pragma once

#include "settings/application_locations.h"
#include "settings/blocked_application_list_model.h"
#include "settings/installed_application_source.h"
#include "settings/text_list_model.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

class QQmlEngine;

namespace orvanta {

class AppModel;
class ApplicationDirectory;
class ApplicationFolders;

/// What the settings show of the model: its two lists as views observe them, in step with it, and what the application
/// editor picks from. Owned by main; outlives the window. Main thread only.
class SettingsModels : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made once, by main")
    Q_PROPERTY(orvanta::TextListModel* blockedDomains READ blockedDomains CONSTANT FINAL)
    Q_PROPERTY(orvanta::BlockedApplicationListModel* blockedApplications READ blockedApplications CONSTANT FINAL)
    Q_PROPERTY(orvanta::InstalledApplicationSource* installedApplications READ installedApplications CONSTANT FINAL)

public:
    /// Gives `engine` the icons as well, which may still be asked of `directory` when all else is gone. The rest outlives
    /// this object; `folders` and `directory` are used on other threads.
    SettingsModels(AppModel& model, QQmlEngine& engine, const ApplicationFolders& folders, std::shared_ptr<const ApplicationDirectory> directory);
    ~SettingsModels() override;

    [[nodiscard]] TextListModel* blockedDomains() { return &m_blockedDomains; }
    [[nodiscard]] BlockedApplicationListModel* blockedApplications() { return &m_blockedApplications; }
    [[nodiscard]] InstalledApplicationSource* installedApplications() { return &m_installedApplications; }

    /// Looks again for the applications that are shown, since they come and go.
    Q_INVOKABLE void refreshLocations() { m_locations.refresh(); }

private:
    ApplicationLocations m_locations;
    TextListModel m_blockedDomains;
    BlockedApplicationListModel m_blockedApplications;
    InstalledApplicationSource m_installedApplications;
};

} // namespace orvanta
