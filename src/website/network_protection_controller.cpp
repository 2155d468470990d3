#include "website/network_protection_controller.h"

#include "platform/url_opener.h"
#include "website/filter_extension.h"
#include "website/website_protection_rules.h"

#include <QCoreApplication>
#include <QPointer>

#include <algorithm>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

using Controller = QPointer<NetworkProtectionController>;

/// Has `task` called with the controller on the main thread, later, if the controller is still there then. From any
/// thread: the pointer is only looked into on the main one.
template <typename Task>
void onMainThread(const Controller& controller, Task task)
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [controller, task = std::move(task)]() mutable {
            if (controller)
                task(*controller);
        },
        Qt::QueuedConnection);
}

/// What a pass makes of the saved configuration. What we do not set, an existing provider's included, stays as it was.
FilterConfiguration configured(FilterConfiguration configuration, const QStringList& blockedDomains, bool enable)
{
    FilterProviderConfiguration provider = std::move(configuration.providerConfiguration).value_or(FilterProviderConfiguration());
    provider.filterSockets = true;
    provider.filterDataProviderBundleIdentifier = FilterExtension::identifier;
    provider.vendorConfiguration = { { FilterExtension::blockedDomainsKey, blockedDomains } };
    configuration.providerConfiguration = std::move(provider);
    configuration.localizedDescription = u"Orvanta Focus website protection"_s;
    configuration.grade = FilterGrade::firewall;
    configuration.isEnabled = enable;
    return configuration;
}

bool isOurs(const FilterConfiguration& configuration)
{
    return configuration.providerConfiguration
        && configuration.providerConfiguration->filterDataProviderBundleIdentifier == QString(FilterExtension::identifier);
}

} // namespace

NetworkProtectionController::NetworkProtectionController(ExtensionManager& extensionManager, FilterManager& filterManager, UrlOpener& urlOpener)
    : m_extensionManager(extensionManager)
    , m_filterManager(filterManager)
    , m_urlOpener(urlOpener)
{
    refresh();
}

NetworkProtectionController::~NetworkProtectionController() = default;

void NetworkProtectionController::refresh()
{
    const Controller self(this);
    m_extensionManager.requestProperties(
        FilterExtension::identifier,
        [self](std::vector<ExtensionProperties> properties) {
            onMainThread(self, [properties = std::move(properties)](auto& controller) { controller.takeProperties(properties); });
        },
        [self](const PlatformError& error) { onMainThread(self, [error](auto& controller) { controller.reportStatus(error.description); }); });
    m_filterManager.load([self](const Result<FilterConfiguration>& loaded) {
        if (loaded)
            onMainThread(self, [configuration = *loaded](auto& controller) { controller.takeSavedConfiguration(configuration); });
    });
}

void NetworkProtectionController::activate()
{
    if (!SystemExtensionHostLocation::isAllowed(m_extensionManager.hostBundlePath())) {
        reportStatus(u"Install Orvanta Focus in Applications first"_s);
        return;
    }
    reportStatus(u"Requesting website protection"_s);
    const Controller self(this);
    m_extensionManager.activate(FilterExtension::identifier,
        { .replacing = [] { return ReplacementAction::replace; },
            .needsUserApproval = [self] { onMainThread(self, [](auto& controller) { controller.needsUserApproval(); }); },
            .finished = [self](ActivationResult result) { onMainThread(self, [result](auto& controller) { controller.finishActivation(result); }); },
            .failed
            = [self](
                  const PlatformError& error) { onMainThread(self, [error](auto& controller) { controller.reportStatus(error.description); }); } });
}

void NetworkProtectionController::setFocusActive(bool active)
{
    m_desiredFocusActive = active;
    reportState();
    takeWish();
}

void NetworkProtectionController::setBlockedDomains(const QStringList& domains)
{
    m_desiredBlockedDomains = domains;
    takeWish();
}

void NetworkProtectionController::takeProperties(const std::vector<ExtensionProperties>& properties)
{
    m_isInstalled = std::ranges::any_of(properties, &ExtensionProperties::isEnabled);
    m_wasInstalled = m_wasInstalled || m_isInstalled;
    reportState();
    if (m_isInstalled && std::exchange(m_wishWasMissed, false))
        configure(m_desiredFocusActive);
    else if (m_filterConfigurationExists && FilterRepair::isNeeded(m_isInstalled, m_configurationEnabled, m_desiredFocusActive))
        configure(true);
}

void NetworkProtectionController::takeSavedConfiguration(const FilterConfiguration& configuration)
{
    m_filterConfigurationExists = isOurs(configuration);
    m_configurationEnabled = m_filterConfigurationExists && configuration.isEnabled;
    reportState();
}

void NetworkProtectionController::needsUserApproval()
{
    reportStatus(u"Approve website protection in System Settings"_s);
    if (SystemExtensionApprovalRouting::opensSystemSettings(SystemExtensionApprovalEvent::approvalRequired))
        SystemExtensionApprovalRouting::openSystemSettings(m_urlOpener);
}

void NetworkProtectionController::finishActivation(ActivationResult result)
{
    m_isInstalled = true;
    m_wasInstalled = true;
    m_wishWasMissed = false;
    reportStatus(
        result == ActivationResult::willCompleteAfterReboot ? u"Website protection installs after restart"_s : u"Website protection installed"_s);
    configure(m_desiredFocusActive);
    refresh();
}

void NetworkProtectionController::takeWish()
{
    if (m_isInstalled)
        configure(m_desiredFocusActive);
    else
        m_wishWasMissed = m_wasInstalled;
}

/// One pass: what is saved is loaded, changed and saved. While one is in flight, any number of further wishes become
/// one more pass, which takes them as they are by then.
void NetworkProtectionController::configure(bool enable)
{
    if (m_isConfiguring) {
        m_configurationPending = true;
        return;
    }
    m_isConfiguring = true;
    const Controller self(this);
    m_filterManager.load(
        [self, &filterManager = m_filterManager, blockedDomains = m_desiredBlockedDomains, enable](Result<FilterConfiguration> loaded) {
            if (self.isNull())
                return;
            if (!loaded) {
                onMainThread(self, [error = loaded.error()](auto& controller) {
                    controller.reportStatus(error.description);
                    controller.finishPass();
                });
                return;
            }
            // Where the completion stands, with nothing but what was copied when the pass began.
            filterManager.save(configured(*std::move(loaded), blockedDomains, enable), [self, enable](const Result<void>& saved) {
                const QString message = !saved ? saved.error().description : enable ? u"Website protection active"_s : u"Website protection ready"_s;
                onMainThread(self, [isSaved = saved.has_value(), enable, message](auto& controller) {
                    if (isSaved) {
                        controller.m_filterConfigurationExists = true;
                        controller.m_configurationEnabled = enable;
                    }
                    controller.reportState();
                    controller.reportStatus(message);
                    controller.finishPass();
                });
            });
        });
}

void NetworkProtectionController::finishPass()
{
    m_isConfiguring = false;
    if (!std::exchange(m_configurationPending, false))
        return;
    configure(m_desiredFocusActive);
}

void NetworkProtectionController::reportStatus(const QString& text)
{
    if (onStatusChange)
        onStatusChange(text);
}

void NetworkProtectionController::reportState()
{
    if (onStateChange)
        onStateChange(websiteProtectionState(m_isInstalled, m_configurationEnabled, m_desiredFocusActive));
}

} // namespace orvanta
