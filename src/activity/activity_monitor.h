#pragma once

#include "activity/activity_snapshot.h"
#include "activity/aggregator.h"
#include "platform/activity_sources.h"

#include <QStringView>

#include <functional>

namespace orvanta {

/// Takes one sample of what the user does. Whatever does not answer is absent from it; nothing here is an error. Used on
/// the thread that it is made on. Holds no state of its own.
class ActivityMonitor {
public:
    using IdleTimeProvider = std::function<double()>;
    using AgentActivityProvider = std::function<bool()>;

    /// A provider that is not given is replaced by the sources' own: the time without input, and whether an AI agent works.
    explicit ActivityMonitor(ActivitySources sources, IdleTimeProvider idleTimeProvider = {}, AgentActivityProvider agentActivityProvider = {},
        WallClock now = std::chrono::system_clock::now);

    // The providers refer to this object.
    ActivityMonitor(const ActivityMonitor&) = delete;
    ActivityMonitor& operator=(const ActivityMonitor&) = delete;

    [[nodiscard]] ActivitySnapshot captureSnapshot();

    /// Seconds without input; 0 while an AI agent works.
    [[nodiscard]] double getIdleTime();
    [[nodiscard]] std::optional<AppInfo> getFrontmostApp();
    [[nodiscard]] std::vector<AppInfo> getRunningApps();
    /// The current tab, if a known browser is in front.
    [[nodiscard]] std::optional<BrowserTab> getActiveBrowserTab();

private:
    ActivitySources m_sources;
    IdleTimeProvider m_idleTimeProvider;
    AgentActivityProvider m_agentActivityProvider;
    WallClock m_now;
};

/// The least of `secondsSinceLastEvents`; 0 if there is none.
[[nodiscard]] double idleSeconds(const std::vector<double>& secondsSinceLastEvents);

/// What a tab script's answer says; absent unless it has an address and a title.
[[nodiscard]] std::optional<BrowserTab> browserTab(const QString& browser, QStringView answer);

} // namespace orvanta
