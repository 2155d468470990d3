#include "platform/linux/browser_named_applications.h"

#include <array>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

struct BrowserName {
    QLatin1StringView identifier;
    QLatin1StringView shortName; ///< a name that holds it, in whatever case, tells enough
    QLatin1StringView name;
};

constexpr std::array browserNames {
    BrowserName { "org.mozilla.firefox"_L1, "firefox"_L1, "Firefox"_L1 },
    BrowserName { "com.google.Chrome"_L1, "chrome"_L1, "Google Chrome"_L1 },
    BrowserName { "com.brave.Browser"_L1, "brave"_L1, "Brave Browser"_L1 },
};

void nameAsBrowser(RunningApplication& application)
{
    for (const BrowserName& browser : browserNames) {
        if (application.bundleIdentifier == browser.identifier
            && !(application.localizedName && application.localizedName->contains(browser.shortName, Qt::CaseInsensitive)))
            application.localizedName = browser.name;
    }
}

} // namespace

std::optional<RunningApplication> BrowserNamedApplications::frontmost()
{
    auto front = m_applications->frontmost();
    if (front)
        nameAsBrowser(*front);
    return front;
}

std::vector<RunningApplication> BrowserNamedApplications::all()
{
    auto applications = m_applications->all();
    for (RunningApplication& application : applications)
        nameAsBrowser(application);
    return applications;
}

} // namespace orvanta
