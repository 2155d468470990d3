#include "app/policy/website_protection_state.h"

#include <QCoreApplication>

namespace orvanta {

QString websiteProtectionTitle(WebsiteProtectionState state)
{
    switch (state) {
    case WebsiteProtectionState::needsActivation:
        return QCoreApplication::translate("WebsiteProtection", "Activate website protection");
    case WebsiteProtectionState::ready:
        return QCoreApplication::translate("WebsiteProtection", "Website protection ready");
    case WebsiteProtectionState::blockingActive:
        return QCoreApplication::translate("WebsiteProtection", "Blocking Active");
    }
    return {};
}

} // namespace orvanta
