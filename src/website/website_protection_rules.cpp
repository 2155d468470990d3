#include "website/website_protection_rules.h"

#include "platform/url_opener.h"

namespace orvanta {

using namespace Qt::StringLiterals;

bool SystemExtensionHostLocation::isAllowed(QStringView bundlePath)
{
    return bundlePath == "/Applications"_L1 || bundlePath.startsWith("/Applications/"_L1);
}

void SystemExtensionApprovalRouting::openSystemSettings(UrlOpener& urlOpener)
{
    const QUrl link(u"x-apple.systempreferences:com.apple.Network-Settings.extension"_s);
    if (link.isValid())
        urlOpener.open(link);
}

} // namespace orvanta
