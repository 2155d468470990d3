#include "app/app_model.h"

#include "activity/activity_api_client.h"
#include "app/policy/blocked_applications.h"
#include "app/policy/focus_activation.h"
#include "app/stored_lists.h"
#include "platform/system_notifications.h"
#include "website/legacy_dns_proxy_removal.h"

#include <QPointer>

#include <algorithm>

namespace orvanta {

using namespace Qt::StringLiterals;

AppModel::AppModel(const AppModelDependencies& dependencies, const QStringList& arguments, QStringList notices)
    : m_dependencies(dependencies)
    , m_permissionSummary(tr("Setup required"))
    , m_notices(std::move(notices))
    , m_websiteProtectionState(orvanta::websiteProtectionState(false, false, false))
    , m_blockingCoordinator(dependencies.screens, dependencies.overlayPanels, dependencies.runningApplications)
    , m_networkProtection(dependencies.extensionManager, dependencies.filterManager, dependencies.urlOpener)
    , m_blockedPagePresenter(
          dependencies.systemNotifications, dependencies.runningApplications, dependencies.urlOpener, dependencies.service.blockedPage)
    , m_systemFocusMonitor(dependencies.systemFocus, dependencies.systemFocusPause)
{
    m_saveAgain.setSingleShot(true);
    m_saveAgain.setInterval(m_dependencies.pauseAfterFailedSave);
    m_saveAgain.callOnTimeout(this, &AppModel::saveAgain);

    // 1. What earlier versions left behind goes, in the background.
    LegacyDNSProxyRemoval::run(m_dependencies.dnsProxyManager);

    // 2. What the launch arguments ask for.
    readLaunchArguments(arguments);

    // 3. The two lists; the cloud's copy wins over the local one.
    const SyncToCloud domainsWorthSyncing = loadDomains();
    const SyncToCloud applicationsWorthSyncing = loadApplications();

    // 4. Both kinds of blocking, told what to block and whether, before anything happens.
    applicationBlocker().focusActive = m_focusActive;
    m_networkProtection.setBlockedDomains(m_blockedDomains.values());
    m_networkProtection.setFocusActive(m_focusActive);
    applicationBlocker().startObserving();
    startWebsiteProtection();

    // 5. The initial save. A first start with nothing stored anywhere leaves the cloud untouched.
    const bool worthSyncing = domainsWorthSyncing == SyncToCloud::yes || cloudHoldsAnyList() || applicationsWorthSyncing == SyncToCloud::yes;
    persist(worthSyncing ? SyncToCloud::yes : SyncToCloud::no);

    // 6. Changes that other machines make from now on.
    if (cloudSyncEnabled()) {
        m_cloudChanges = m_dependencies.cloudStore.observeExternalChanges([self = QPointer(this)] {
            if (self)
                QMetaObject::invokeMethod(self, &AppModel::applyCloudChanges, Qt::QueuedConnection);
        });
    }

    // 7. The system's own Focus.
    startSystemFocusMonitor();

    // 8. The tracker and the service.
    startActivityTracker();
    startPolling();
}

AppModel::~AppModel() = default;

QString AppModel::focusStatusLabel() const
{
    return focusStatusLabelText(m_orvantaWorkActive, m_systemFocusActive);
}

QString AppModel::permissionHint() const
{
    return m_dependencies.statusHint ? m_dependencies.statusHint(m_permissionSummary) : QString();
}

QStringList AppModel::notices() const
{
    QStringList all = m_notices;
    for (const FailedSave& save : m_failedSaves)
        if (!all.contains(save.reason))
            all << save.reason;
    return all + m_desktopNotices;
}

QString AppModel::websiteProtectionTitle() const
{
    return orvanta::websiteProtectionTitle(m_websiteProtectionState);
}

void AppModel::addDomain(const QString& text)
{
    const auto domain = normalisedDomain(text);
    if (!domain)
        return;
    m_blockedDomains.add(*domain);
    Q_EMIT blockedDomainsChanged();
    persist(SyncToCloud::yes);
}

void AppModel::removeDomain(const QString& domain)
{
    m_blockedDomains.remove(domain);
    Q_EMIT blockedDomainsChanged();
    persist(SyncToCloud::yes);
}

void AppModel::addApplication(const QString& bundleIdentifier, const QString& displayName)
{
    auto application = acceptedApplication(bundleIdentifier, displayName);
    if (!application)
        return;
    orvanta::addApplication(m_blockedApplications, *std::move(application));
    Q_EMIT blockedApplicationsChanged();
    persist(SyncToCloud::yes);
}

void AppModel::removeApplication(const QString& bundleIdentifier)
{
    orvanta::removeApplication(m_blockedApplications, bundleIdentifier);
    Q_EMIT blockedApplicationsChanged();
    persist(SyncToCloud::yes);
}

void AppModel::activateWebsiteProtection()
{
    m_networkProtection.activate();
}

void AppModel::systemFocusChanged(bool isFocused)
{
    m_systemFocusActive = isFocused;
    applyFocus();
}

void AppModel::readLaunchArguments(const QStringList& arguments)
{
    m_options = LaunchOptions::read(arguments);
    m_focusActive = m_orvantaWorkActive = m_options.focusActive;
    if (m_options.isUiTest)
        eraseLocalLists();
}

void AppModel::eraseLocalLists()
{
    for (const QString& key : { StoredLists::domainsKey, StoredLists::applicationsKey })
        if (const auto removed = m_dependencies.defaults.remove(key); !removed)
            m_notices << removed.error().description;
}

AppModel::SyncToCloud AppModel::loadDomains()
{
    const QStringList local = StoredLists::domains(m_dependencies.defaults).value_or(QStringList());
    std::optional<QStringList> fromCloud;
    if (cloudSyncEnabled()) {
        m_dependencies.cloudStore.synchronise();
        fromCloud = StoredLists::domains(m_dependencies.cloudStore);
    }
    m_blockedDomains = BlockedDomains(fromCloud.value_or(local));
    return local.isEmpty() ? SyncToCloud::no : SyncToCloud::yes;
}

AppModel::SyncToCloud AppModel::loadApplications()
{
    auto local = StoredLists::applications(m_dependencies.defaults).value_or(std::vector<BlockedApplication>());
    const SyncToCloud worthSyncing = local.empty() ? SyncToCloud::no : SyncToCloud::yes;
    std::optional<std::vector<BlockedApplication>> fromCloud;
    if (cloudSyncEnabled())
        fromCloud = StoredLists::applications(m_dependencies.cloudStore);
    m_blockedApplications = fromCloud ? *std::move(fromCloud) : std::move(local);
    return worthSyncing;
}

bool AppModel::cloudHoldsAnyList()
{
    return cloudSyncEnabled()
        && (m_dependencies.cloudStore.value(StoredLists::domainsKey) || m_dependencies.cloudStore.value(StoredLists::applicationsKey));
}

void AppModel::persist(SyncToCloud syncToCloud)
{
    const bool toCloud = cloudSyncEnabled() && syncToCloud == SyncToCloud::yes;
    storeDomains();
    m_networkProtection.setBlockedDomains(m_blockedDomains.values());
    const auto encoded = storeApplications();
    if (encoded && toCloud)
        store(m_dependencies.cloudStore, StoredLists::applicationsKey, *encoded);
    if (toCloud) {
        store(m_dependencies.cloudStore, StoredLists::domainsKey, m_blockedDomains.values());
        m_dependencies.cloudStore.synchronise();
    }
}

void AppModel::applyCloudChanges()
{
    if (auto domains = StoredLists::domains(m_dependencies.cloudStore))
        setBlockedDomains(BlockedDomains(*std::move(domains)));
    if (auto applications = StoredLists::applications(m_dependencies.cloudStore))
        setBlockedApplications(*std::move(applications));
    // To the local side alone: what came from the cloud is never sent back to it.
    storeDomains();
    (void)storeApplications();
    m_networkProtection.setBlockedDomains(m_blockedDomains.values());
}

void AppModel::startWebsiteProtection()
{
    m_networkProtection.onStatusChange = [self = QPointer(this)](const QString& text) {
        if (self)
            self->setPermissionSummary(text);
    };
    m_networkProtection.onStateChange = [self = QPointer(this)](WebsiteProtectionState state) {
        if (self)
            self->setWebsiteProtectionState(state);
    };
    m_blockedPagePresenter.startObserving();
    // Once more: the answers to the first look may have come before anybody listened.
    m_networkProtection.refresh();
    // What filters may end by itself, and come back: we never say that it blocks while it does not.
    m_extensionChanges = m_dependencies.systemNotifications.observe(SystemNotifications::extensionChanged, [this] { m_networkProtection.refresh(); });
}

void AppModel::startSystemFocusMonitor()
{
    m_systemFocusMonitor.onStatusChange = [self = QPointer(this)](bool isFocused) {
        if (self)
            self->systemFocusChanged(isFocused);
    };
    m_systemFocusMonitor.start();
}

void AppModel::startActivityTracker()
{
    auto key = FocusCredentialStore(m_dependencies.secrets).readAPIKey();
    const QUrl& endpoint = m_dependencies.service.activityEndpoint;
    if (!key || !endpoint.isValid())
        return;
    auto makeMonitor = [sources = m_dependencies.activitySources] { return std::make_unique<ActivityMonitor>(sources()); };
    auto client = std::make_shared<ActivityAPIClient>(m_dependencies.urlSession, endpoint, *std::move(key));
    m_activityTracker
        = std::make_unique<TrackerService>(std::move(makeMonitor), TrackerOptions { .aggregationPeriod = 60.0, .sender = std::move(client) });
    m_activityTracker->start();
}

void AppModel::startPolling()
{
    const auto key = FocusCredentialStore(m_dependencies.secrets).readAPIKey();
    if (!key) {
        setPermissionSummary(tr("Orvanta API key required"));
        return;
    }
    m_pollingTask = std::make_unique<PollingTask>(
        FocusAPIClient(m_dependencies.urlSession, m_dependencies.service.origin, *key),
        [self = QPointer(this)](const PollingTask::Answer& answer) {
            if (self)
                self->takePollAnswer(answer);
        },
        m_dependencies.pollPause);
    m_pollingTask->start();
}

void AppModel::takePollAnswer(const PollingTask::Answer& answer)
{
    if (!answer) {
        setPermissionSummary(answer.error().description());
        return;
    }
    m_orvantaWorkActive = answer->active;
    applyFocus();
    setPermissionSummary(tr("Orvanta connected"));
}

/// After one of the two sources has a new value: the rule, and what it changes.
void AppModel::applyFocus()
{
    const bool before = m_focusActive;
    m_focusActive = FocusActivation::isActive(m_orvantaWorkActive, m_systemFocusActive);
    Q_EMIT focusActiveChanged();
    Q_EMIT focusStatusLabelChanged();
    if (!FocusStateTransition::counts(before, m_focusActive))
        return;
    applicationBlocker().focusActive = m_focusActive;
    m_networkProtection.setFocusActive(m_focusActive);
}

ApplicationBlocker& AppModel::applicationBlocker()
{
    if (!m_applicationBlocker) {
        auto identifiers = [self = QPointer(this)] { return self ? blockedBundleIdentifiers(self->m_blockedApplications) : QSet<QString>(); };
        m_applicationBlocker = std::make_unique<ApplicationBlocker>(
            std::move(identifiers), m_blockingCoordinator, m_dependencies.activationMonitor, m_dependencies.screens);
    }
    return *m_applicationBlocker;
}

void AppModel::setBlockedDomains(BlockedDomains domains)
{
    m_blockedDomains = std::move(domains);
    Q_EMIT blockedDomainsChanged();
}

void AppModel::setBlockedApplications(std::vector<BlockedApplication> applications)
{
    m_blockedApplications = std::move(applications);
    Q_EMIT blockedApplicationsChanged();
}

void AppModel::setPermissionSummary(const QString& text)
{
    if (m_permissionSummary == text)
        return;
    m_permissionSummary = text;
    Q_EMIT permissionSummaryChanged();
}

void AppModel::setWebsiteProtectionState(WebsiteProtectionState state)
{
    if (m_websiteProtectionState == state)
        return;
    m_websiteProtectionState = state;
    Q_EMIT websiteProtectionStateChanged();
}

void AppModel::storeDomains()
{
    store(m_dependencies.defaults, StoredLists::domainsKey, m_blockedDomains.values());
}

/// The list as it was stored; nothing if it cannot be written down.
std::optional<QByteArray> AppModel::storeApplications()
{
    auto encoded = encodeBlockedApplications(m_blockedApplications);
    if (!encoded)
        return std::nullopt;
    store(m_dependencies.defaults, StoredLists::applicationsKey, *encoded);
    return *std::move(encoded);
}

void AppModel::setDesktopNotices(const QStringList& notices)
{
    if (m_desktopNotices == notices)
        return;
    m_desktopNotices = notices;
    Q_EMIT noticesChanged();
}

void AppModel::store(KeyValueStore& store, const QString& key, const StoredValue& value)
{
    const QStringList before = notices();
    const auto stored = store.setValue(key, value);
    const auto failure = stored ? std::nullopt : std::optional(stored.error().description);
    noteSave(store, key, failure);
    if (failure)
        m_saveAgain.start();
    if (const auto problem = store.takeProblem(); problem && problem != failure && !m_notices.contains(*problem))
        m_notices << *problem;
    if (notices() != before)
        Q_EMIT noticesChanged();
}

/// Once: what fails again waits for the next change of the lists.
void AppModel::saveAgain()
{
    for (const FailedSave& save : std::vector(m_failedSaves)) {
        if (save.key == StoredLists::domainsKey)
            store(*save.store, save.key, m_blockedDomains.values());
        else if (const auto encoded = encodeBlockedApplications(m_blockedApplications))
            store(*save.store, save.key, *encoded);
    }
    m_saveAgain.stop();
}

/// A failure is told until the same value is saved at last.
void AppModel::noteSave(KeyValueStore& store, const QString& key, const std::optional<QString>& failure)
{
    const auto noted = std::ranges::find_if(m_failedSaves, [&](const FailedSave& save) { return save.store == &store && save.key == key; });
    if (!failure) {
        if (noted != m_failedSaves.end())
            m_failedSaves.erase(noted);
    } else if (noted != m_failedSaves.end()) {
        noted->reason = *failure;
    } else {
        m_failedSaves.push_back({ .store = &store, .key = key, .reason = *failure });
    }
}

} // namespace orvanta
