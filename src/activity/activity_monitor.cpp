#include "activity/activity_monitor.h"

#include "activity/activity_scripts.h"
#include "activity/agent_activity_detector.h"
#include "activity/text_pieces.h"

#include <algorithm>
#include <limits>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

const QString unknownName = u"Unknown"_s;

bool isProcess(const RunningApplication& application, const QString& processName)
{
    return application.localizedName == processName
        || (application.bundleIdentifier && application.bundleIdentifier->contains(processName.toLower()));
}

bool isBrowser(const KnownBrowser& browser, const QString& processName)
{
    return processName == browser.shortName || processName.toLower().contains(browser.shortName.toLower());
}

} // namespace

ActivityMonitor::ActivityMonitor(
    ActivitySources sources, IdleTimeProvider idleTimeProvider, AgentActivityProvider agentActivityProvider, WallClock now)
    : m_sources(std::move(sources))
    , m_idleTimeProvider(std::move(idleTimeProvider))
    , m_agentActivityProvider(std::move(agentActivityProvider))
    , m_now(std::move(now))
{
    if (!m_idleTimeProvider)
        m_idleTimeProvider = [this] { return idleSeconds(m_sources.idle->secondsSinceLastEvents()); };
    if (!m_agentActivityProvider)
        m_agentActivityProvider = [this] { return AgentActivityDetector::isAgentWorking(*m_sources.processes); };
}

ActivitySnapshot ActivityMonitor::captureSnapshot()
{
    ActivitySnapshot snapshot;
    snapshot.timestamp = m_now();
    snapshot.idleSeconds = getIdleTime();
    snapshot.frontmostApp = getFrontmostApp();
    snapshot.runningApps = getRunningApps();
    snapshot.activeBrowserTab = getActiveBrowserTab();
    return snapshot;
}

double ActivityMonitor::getIdleTime()
{
    return m_agentActivityProvider() ? 0 : m_idleTimeProvider();
}

std::optional<AppInfo> ActivityMonitor::getFrontmostApp()
{
    const auto processName = m_sources.scripts->run(frontProcessScript());
    if (!processName) {
        const auto front = m_sources.applications->frontmost();
        if (!front)
            return std::nullopt;
        return AppInfo { .bundleIdentifier = front->bundleIdentifier, .name = front->localizedName.value_or(unknownName), .isActive = true };
    }
    for (const RunningApplication& application : m_sources.applications->all()) {
        if (isProcess(application, *processName))
            return AppInfo {
                .bundleIdentifier = application.bundleIdentifier, .name = application.localizedName.value_or(*processName), .isActive = true
            };
    }
    return AppInfo { .bundleIdentifier = std::nullopt, .name = *processName, .isActive = true };
}

std::vector<AppInfo> ActivityMonitor::getRunningApps()
{
    const auto front = m_sources.applications->frontmost();
    const auto frontIdentifier = front ? front->bundleIdentifier : std::nullopt;
    std::vector<AppInfo> apps;
    for (const RunningApplication& application : m_sources.applications->all()) {
        if (application.activationPolicy == ActivationPolicy::regular)
            apps.push_back({ .bundleIdentifier = application.bundleIdentifier,
                .name = application.localizedName.value_or(unknownName),
                .isActive = application.bundleIdentifier == frontIdentifier });
    }
    return apps;
}

std::optional<BrowserTab> ActivityMonitor::getActiveBrowserTab()
{
    const auto processName = m_sources.scripts->run(frontProcessScript());
    if (!processName)
        return std::nullopt;
    const auto browser = std::ranges::find_if(knownBrowsers(), [&](const KnownBrowser& known) { return isBrowser(known, *processName); });
    if (browser == knownBrowsers().end())
        return std::nullopt;
    const auto answer = m_sources.scripts->run(browser->tabScript);
    return answer ? browserTab(browser->shortName, *answer) : std::nullopt;
}

double idleSeconds(const std::vector<double>& secondsSinceLastEvents)
{
    constexpr double none = std::numeric_limits<double>::max();
    double least = none;
    for (const double seconds : secondsSinceLastEvents)
        least = std::min(least, seconds);
    return least == none ? 0 : least;
}

std::optional<BrowserTab> browserTab(const QString& browser, QStringView answer)
{
    const auto pieces = twoPieces(answer, [](QChar c) { return c == u'\n'; });
    if (!pieces)
        return std::nullopt;
    return BrowserTab { .browser = browser, .title = (*pieces)[1].toString(), .url = (*pieces)[0].toString() };
}

} // namespace orvanta
