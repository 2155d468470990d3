#pragma once

#include <QStringView>

namespace orvanta {

class UrlOpener;

/// Where the application has to be installed for the system to take an extension from it.
namespace SystemExtensionHostLocation {

/// True for "/Applications" itself and everything below it. The raw path counts: case matters, nothing is resolved.
[[nodiscard]] bool isAllowed(QStringView bundlePath);

} // namespace SystemExtensionHostLocation

/// When a saved configuration that is switched off has to be switched on without anybody's asking.
namespace FilterRepair {

[[nodiscard]] constexpr bool isNeeded(bool isInstalled, bool configurationEnabled, bool focusActive)
{
    return isInstalled && focusActive && !configurationEnabled;
}

} // namespace FilterRepair

/// What may happen on the way to the user's approval.
enum class SystemExtensionApprovalEvent { activationSubmitted, approvalRequired, explicitUserRequest };

/// Which of these events open the system's settings.
namespace SystemExtensionApprovalRouting {

/// Only when the user asks for it: the program never opens the settings by itself.
[[nodiscard]] constexpr bool opensSystemSettings(SystemExtensionApprovalEvent event)
{
    return event == SystemExtensionApprovalEvent::explicitUserRequest;
}

/// Opens the page of the system's settings on which network extensions are approved.
void openSystemSettings(UrlOpener& urlOpener);

} // namespace SystemExtensionApprovalRouting

} // namespace orvanta
