#include "activity/aggregator.h"

#include <algorithm>
#include <functional>

namespace orvanta {

namespace {

using Seconds = std::chrono::duration<double>;

/// An entry of a map of seconds; `key` lives in the map.
struct Entry {
    double seconds;
    const QString* key;
};

/// Equals come in any order: the map's own is arbitrary, too.
std::vector<Entry> mostSecondsFirst(const QHash<QString, double>& times)
{
    std::vector<Entry> entries;
    entries.reserve(static_cast<std::size_t>(times.size()));
    for (auto entry = times.cbegin(); entry != times.cend(); ++entry)
        entries.push_back({ entry.value(), &entry.key() });
    std::ranges::sort(entries, std::ranges::greater(), &Entry::seconds);
    return entries;
}

} // namespace

Aggregator::Aggregator(double sampleInterval, double minTabSeconds, WallClock now)
    : m_sampleInterval(sampleInterval)
    , m_minTabSeconds(minTabSeconds)
    , m_now(std::move(now))
    , m_periodStart(m_now())
    , m_lastSnapshotTime(m_now())
{
}

void Aggregator::addSnapshot(const ActivitySnapshot& snapshot)
{
    const double elapsed = Seconds(snapshot.timestamp - m_lastSnapshotTime).count();
    m_lastSnapshotTime = snapshot.timestamp;
    if (snapshot.idleSeconds > m_sampleInterval)
        m_totalIdleSeconds += elapsed;

    if (!snapshot.frontmostApp)
        return;
    const AppInfo& app = *snapshot.frontmostApp;
    const QString& key = app.bundleIdentifier ? *app.bundleIdentifier : app.name;
    m_appFocusTime[key] += elapsed;
    m_appInfo[key] = { app.bundleIdentifier, app.name };

    if (!snapshot.activeBrowserTab)
        return;
    const BrowserTab& tab = *snapshot.activeBrowserTab;
    m_tabFocusTime[key][tab.url] += elapsed;
    m_tabInfo[key][tab.url] = tab.title;
}

AggregatedActivity Aggregator::finalize() const
{
    AggregatedActivity activity { .periodStart = m_periodStart, .periodEnd = m_now(), .totalIdleSeconds = m_totalIdleSeconds, .applications = {} };
    for (const Entry& entry : mostSecondsFirst(m_appFocusTime)) {
        const auto info = m_appInfo.constFind(*entry.key);
        if (info != m_appInfo.cend())
            activity.applications.push_back({ info->bundleId, info->name, entry.seconds, tabs(*entry.key) });
    }
    return activity;
}

std::optional<std::vector<TabActivity>> Aggregator::tabs(const QString& key) const
{
    const auto times = m_tabFocusTime.constFind(key);
    const auto titles = m_tabInfo.constFind(key);
    if (times == m_tabFocusTime.cend() || titles == m_tabInfo.cend())
        return std::nullopt;
    std::vector<TabActivity> tabs;
    for (const Entry& entry : mostSecondsFirst(*times)) {
        if (entry.seconds >= m_minTabSeconds)
            tabs.push_back({ *entry.key, titles->value(*entry.key), entry.seconds });
    }
    if (tabs.empty())
        return std::nullopt;
    return tabs;
}

void Aggregator::reset()
{
    m_periodStart = m_now();
    m_lastSnapshotTime = m_now();
    m_appFocusTime.clear();
    m_appInfo.clear();
    m_tabFocusTime.clear();
    m_tabInfo.clear();
    m_totalIdleSeconds = 0;
}

} // namespace orvanta
