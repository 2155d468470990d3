#pragma once

#include "platform/extension_manager.h"
#include "platform/filter_manager.h"
#include "website/website_protection_state.h"

#include <QObject>
#include <QStringList>

#include <functional>

namespace orvanta {

class UrlOpener;

/// Installs the extension that filters, and keeps the system's filter configuration in step with what the app model
/// wishes: which domains are blocked, and whether blocking is on. The app model owns it and hears from it through the
/// two callbacks. Main thread only; what the platform answers on other threads is brought there first.
class NetworkProtectionController : public QObject {
    Q_OBJECT

public:
    /// Begins with a refresh(). All three outlive the controller, and every answer that they owe it.
    NetworkProtectionController(ExtensionManager& extensionManager, FilterManager& filterManager, UrlOpener& urlOpener);
    ~NetworkProtectionController() override;

    /// Every status message for the user, in English.
    std::function<void(const QString&)> onStatusChange;
    /// The state, whenever it may have changed.
    std::function<void(WebsiteProtectionState)> onStateChange;

    /// Finds out anew whether the extension is installed and whether our configuration is saved and switched on.
    void refresh();

    /// The user asks for website protection.
    void activate();

    /// Called when focus really changes.
    void setFocusActive(bool active);

    /// `domains` are normalised. Each call leads to a save once the extension is installed, also with an equal list. What is
    /// wished while an installed extension is away is saved when it is back: it comes back with what it knew before.
    void setBlockedDomains(const QStringList& domains);

private:
    void takeProperties(const std::vector<ExtensionProperties>& properties);
    void takeSavedConfiguration(const FilterConfiguration& configuration);
    void needsUserApproval();
    void finishActivation(ActivationResult result);
    void takeWish();
    void configure(bool enable);
    void finishPass();

    void reportStatus(const QString& text);
    void reportState();

    ExtensionManager& m_extensionManager;
    FilterManager& m_filterManager;
    UrlOpener& m_urlOpener;

    bool m_isInstalled = false;               ///< the extension is present and enabled
    bool m_wasInstalled = false;              ///< and it was at any time so far
    bool m_wishWasMissed = false;             ///< a wish came while it was away
    bool m_configurationEnabled = false;      ///< the saved configuration is switched on
    bool m_filterConfigurationExists = false; ///< a configuration that names our extension is saved
    bool m_isConfiguring = false;             ///< a load-and-save pass is in flight
    bool m_configurationPending = false;      ///< another pass was asked for meanwhile
    bool m_desiredFocusActive = false;        ///< the focus state last pushed
    QStringList m_desiredBlockedDomains;      ///< the list last pushed
};

} // namespace orvanta
