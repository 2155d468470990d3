#pragma once

#include "activity/activity_snapshot.h"

namespace orvanta {

/// A page that was the active tab during a period.
struct TabActivity {
    QString url;
    QString title; ///< the last one recorded for this url
    double focusedSeconds = 0;

    bool operator==(const TabActivity&) const = default;
};

/// An application that was in front during a period.
struct AppActivity {
    std::optional<QString> bundleIdentifier;
    QString name;
    double focusedSeconds = 0;
    std::optional<std::vector<TabActivity>> tabs; ///< absent when there are none

    bool operator==(const AppActivity&) const = default;
};

/// One period; what is uploaded.
struct AggregatedActivity {
    WallTime periodStart;
    WallTime periodEnd;
    double totalIdleSeconds = 0;
    std::vector<AppActivity> applications; ///< most focused first

    bool operator==(const AggregatedActivity&) const = default;
};

} // namespace orvanta
