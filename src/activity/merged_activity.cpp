#include "activity/merged_activity.h"

#include <QHash>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace orvanta {

namespace {

/// Keeps the order in which keys were first seen.
template <typename Record>
Record& entry(std::vector<Record>& records, QHash<QString, std::size_t>& places, const QString& key)
{
    const auto place = places.constFind(key);
    if (place != places.cend())
        return records[*place];
    places.insert(key, records.size());
    return records.emplace_back();
}

class MergedApplications {
public:
    void add(const AppActivity& activity)
    {
        Merged& merged = entry(m_merged, m_places, activity.bundleIdentifier ? *activity.bundleIdentifier : activity.name);
        merged.app.bundleIdentifier = activity.bundleIdentifier;
        merged.app.name = activity.name;
        merged.app.focusedSeconds += activity.focusedSeconds;
        if (!activity.tabs)
            return;
        for (const TabActivity& activityTab : *activity.tabs) {
            TabActivity& tab = entry(merged.tabs, merged.tabPlaces, activityTab.url);
            tab.url = activityTab.url;
            tab.title = activityTab.title;
            tab.focusedSeconds += activityTab.focusedSeconds;
        }
    }

    std::vector<AppActivity> take()
    {
        std::vector<AppActivity> applications;
        applications.reserve(m_merged.size());
        for (Merged& merged : m_merged) {
            std::erase_if(merged.tabs, [](const TabActivity& tab) { return tab.focusedSeconds < leastMergedTabSeconds; });
            if (!merged.tabs.empty())
                merged.app.tabs = std::move(merged.tabs);
            applications.push_back(std::move(merged.app));
        }
        return applications;
    }

private:
    struct Merged {
        AppActivity app;
        std::vector<TabActivity> tabs;
        QHash<QString, std::size_t> tabPlaces;
    };

    std::vector<Merged> m_merged;
    QHash<QString, std::size_t> m_places;
};

} // namespace

AggregatedActivity mergedActivity(const std::vector<AggregatedActivity>& list)
{
    if (list.empty()) {
        std::fputs("Cannot merge empty activities\n", stderr);
        std::abort();
    }
    if (list.size() == 1)
        return list.front();

    AggregatedActivity merged { .periodStart = std::ranges::min_element(list, {}, &AggregatedActivity::periodStart)->periodStart,
        .periodEnd = std::ranges::max_element(list, {}, &AggregatedActivity::periodEnd)->periodEnd,
        .totalIdleSeconds = 0,
        .applications = {} };
    MergedApplications applications;
    for (const AggregatedActivity& activity : list) {
        merged.totalIdleSeconds += activity.totalIdleSeconds;
        for (const AppActivity& application : activity.applications)
            applications.add(application);
    }
    merged.applications = applications.take();
    return merged;
}

} // namespace orvanta
