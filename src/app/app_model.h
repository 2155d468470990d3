#pragma once

#include "activity/tracker_service.h"
#include "app/launch_options.h"
#include "app/policy/blocked_application.h"
#include "app/policy/blocked_domains.h"
#include "app/polling_task.h"
#include "app/system_focus_monitor.h"
#include "blocking/application_blocker.h"
#include "blocking/blocking_coordinator.h"
#include "platform/cloud_store.h"
#include "platform/key_value_store.h"
#include "service/focus_credential_store.h"
#include "service/service_configuration.h"
#include "service/url_session.h"
#include "website/blocked_page_presenter.h"
#include "website/network_protection_controller.h"

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

class DnsProxyManager;

/// What the model asks of the system and of the service. All of it outlives the model.
struct AppModelDependencies {
    KeyValueStore& defaults;
    CloudStore& cloudStore;
    SecretStore& secrets;
    Screens& screens;
    OverlayPanels& overlayPanels;
    RunningApplications& runningApplications;
    ActivationMonitor& activationMonitor;
    ExtensionManager& extensionManager;
    FilterManager& filterManager;
    DnsProxyManager& dnsProxyManager;
    SystemNotifications& systemNotifications;
    UrlOpener& urlOpener;
    SystemFocus& systemFocus;
    UrlSession& urlSession;
    MakeActivitySources activitySources;
    ServiceConfiguration service;
    std::function<QString(const QString& status)> statusHint {}; ///< may be empty
    std::chrono::milliseconds pollPause = PollingTask::defaultPause;
    std::chrono::milliseconds pauseAfterFailedSave = std::chrono::seconds { 3 }; ///< longer than a file is left to who writes it
    std::chrono::milliseconds systemFocusPause = SystemFocusMonitor::defaultPause;
};

/// The one long-lived state of the application: whether focus is active and why, the two blocked lists, the status line.
/// It owns every controller, keeps the lists in the user defaults and in the cloud store, and polls the service. The
/// views observe it and call it. Main thread only.
class AppModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made once, by main")
    Q_PROPERTY(bool focusActive READ focusActive NOTIFY focusActiveChanged)
    Q_PROPERTY(QString focusStatusLabel READ focusStatusLabel NOTIFY focusStatusLabelChanged)
    Q_PROPERTY(QString permissionSummary READ permissionSummary NOTIFY permissionSummaryChanged)
    Q_PROPERTY(QString permissionHint READ permissionHint NOTIFY permissionSummaryChanged)
    Q_PROPERTY(QStringList notices READ notices NOTIFY noticesChanged)
    Q_PROPERTY(QString websiteProtectionTitle READ websiteProtectionTitle NOTIFY websiteProtectionStateChanged)
    Q_PROPERTY(bool websiteBlockingActive READ websiteBlockingActive NOTIFY websiteProtectionStateChanged)
    Q_PROPERTY(bool isBlockedPreview READ isBlockedPreview CONSTANT)
    Q_PROPERTY(bool isBlockedApplicationPreview READ isBlockedApplicationPreview CONSTANT)

public:
    /// Runs the whole start-up. `arguments` is the process's full argument list; `notices` is what the platform has to
    /// tell the user about how it found itself (a damaged settings file, say).
    AppModel(const AppModelDependencies& dependencies, const QStringList& arguments, QStringList notices = {});
    ~AppModel() override;

    [[nodiscard]] bool focusActive() const { return m_focusActive; }
    [[nodiscard]] QString focusStatusLabel() const;
    [[nodiscard]] const QStringList& blockedDomains() const { return m_blockedDomains.values(); }
    [[nodiscard]] const std::vector<BlockedApplication>& blockedApplications() const { return m_blockedApplications; }
    /// One line for the user: the latest status or error, whoever wrote it last.
    [[nodiscard]] QString permissionSummary() const { return m_permissionSummary; }
    /// What this system's users need to know beside that line; mostly nothing.
    [[nodiscard]] QString permissionHint() const;
    /// Further lines for the user, beside the status: what could not be stored, and what was found damaged.
    [[nodiscard]] QStringList notices() const;
    /// What the desktop lacks now, in place of what it lacked before; stands after the other notices.
    void setDesktopNotices(const QStringList& notices);
    [[nodiscard]] WebsiteProtectionState websiteProtectionState() const { return m_websiteProtectionState; }
    /// The words on website protection's button.
    [[nodiscard]] QString websiteProtectionTitle() const;
    [[nodiscard]] bool websiteBlockingActive() const { return m_websiteProtectionState == WebsiteProtectionState::blockingActive; }
    [[nodiscard]] bool isBlockedPreview() const { return m_options.isBlockedPreview; }
    [[nodiscard]] bool isBlockedApplicationPreview() const { return m_options.isBlockedApplicationPreview; }

    /// Adds what the user typed, normalised; a text that is no domain changes nothing and reports nothing.
    Q_INVOKABLE void addDomain(const QString& text);
    Q_INVOKABLE void removeDomain(const QString& domain);
    /// Adds the application, or renames it when it is listed; a pair without an identifier or a name changes nothing.
    Q_INVOKABLE void addApplication(const QString& bundleIdentifier, const QString& displayName);
    Q_INVOKABLE void removeApplication(const QString& bundleIdentifier);

    /// The user asks that websites be blocked as well.
    Q_INVOKABLE void activateWebsiteProtection();

    /// The system's Focus went on or off.
    void systemFocusChanged(bool isFocused);

Q_SIGNALS:
    void focusActiveChanged(); ///< after each assignment, also of the same value
    void focusStatusLabelChanged();
    void blockedDomainsChanged();
    void blockedApplicationsChanged();
    void permissionSummaryChanged();
    void websiteProtectionStateChanged();
    void noticesChanged();

private:
    enum class SyncToCloud { no, yes };

    /// What the store could not take in last time.
    struct FailedSave {
        KeyValueStore* store;
        QString key;
        QString reason;
    };

    [[nodiscard]] bool cloudSyncEnabled() const { return !m_options.isUiTest; }
    void readLaunchArguments(const QStringList& arguments);
    void eraseLocalLists();
    [[nodiscard]] SyncToCloud loadDomains();
    [[nodiscard]] SyncToCloud loadApplications();
    [[nodiscard]] bool cloudHoldsAnyList();
    void persist(SyncToCloud syncToCloud);
    void applyCloudChanges();
    void startWebsiteProtection();
    void startSystemFocusMonitor();
    void startActivityTracker();
    void startPolling();
    void takePollAnswer(const PollingTask::Answer& answer);
    void applyFocus();
    [[nodiscard]] ApplicationBlocker& applicationBlocker();

    void setBlockedDomains(BlockedDomains domains);
    void setBlockedApplications(std::vector<BlockedApplication> applications);
    void setPermissionSummary(const QString& text);
    void setWebsiteProtectionState(WebsiteProtectionState state);
    void storeDomains();
    [[nodiscard]] std::optional<QByteArray> storeApplications();
    void store(KeyValueStore& store, const QString& key, const StoredValue& value);
    void saveAgain();
    void noteSave(KeyValueStore& store, const QString& key, const std::optional<QString>& failure);

    AppModelDependencies m_dependencies;
    LaunchOptions m_options;

    bool m_focusActive = false;
    BlockedDomains m_blockedDomains;
    std::vector<BlockedApplication> m_blockedApplications;
    QString m_permissionSummary;
    QStringList m_notices;
    std::vector<FailedSave> m_failedSaves; ///< one for each value that is not stored as it is; told after the other notices
    QTimer m_saveAgain;                    ///< runs after a failed save
    QStringList m_desktopNotices;
    WebsiteProtectionState m_websiteProtectionState;

    bool m_orvantaWorkActive = false; ///< the service's last answer
    bool m_systemFocusActive = false;

    BlockingCoordinator m_blockingCoordinator;
    NetworkProtectionController m_networkProtection;
    BlockedPagePresenter m_blockedPagePresenter;
    SystemFocusMonitor m_systemFocusMonitor;
    std::unique_ptr<ApplicationBlocker> m_applicationBlocker; ///< made at its first use
    std::unique_ptr<TrackerService> m_activityTracker;        ///< absent without an API key
    std::unique_ptr<PollingTask> m_pollingTask;               ///< absent without an API key
    Subscription m_extensionChanges;
    Subscription m_cloudChanges; ///< empty when cloud sync is off
};

} // namespace orvanta
