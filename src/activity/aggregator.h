#pragma once

#include "activity/aggregated_activity.h"

#include <QHash>

#include <functional>

namespace orvanta {

using WallClock = std::function<WallTime()>;

/// Folds the snapshots of one period into one AggregatedActivity: seconds in front for each application, seconds for each
/// page within it, and idle seconds. Owned by the tracker's task, and used by it alone. Its size grows with what was seen,
/// not with how often.
class Aggregator {
public:
    static constexpr double defaultMinTabSeconds = 3.0;

    /// A sample counts as idle above `sampleInterval` seconds without input; a page is reported from `minTabSeconds` on.
    explicit Aggregator(double sampleInterval, double minTabSeconds = defaultMinTabSeconds, WallClock now = std::chrono::system_clock::now);

    /// Charges the time since the snapshot before to what this one shows. That time is neither capped nor tested: a long
    /// gap counts whole, and a clock that was put back counts backwards.
    void addSnapshot(const ActivitySnapshot& snapshot);

    /// The period so far, ending now.
    [[nodiscard]] AggregatedActivity finalize() const;

    /// Begins a period, now.
    void reset();

private:
    struct AppIdentity {
        std::optional<QString> bundleId;
        QString name;
    };

    [[nodiscard]] std::optional<std::vector<TabActivity>> tabs(const QString& key) const;

    QHash<QString, double> m_appFocusTime;                 ///< by bundle identifier, or by name where there is none; so are the other three
    QHash<QString, AppIdentity> m_appInfo;                 ///< from the latest snapshot
    QHash<QString, QHash<QString, double>> m_tabFocusTime; ///< by url
    QHash<QString, QHash<QString, QString>> m_tabInfo;     ///< the latest title, by url
    double m_totalIdleSeconds = 0;
    double m_sampleInterval;
    double m_minTabSeconds;
    WallClock m_now;
    WallTime m_periodStart;
    WallTime m_lastSnapshotTime;
};

} // namespace orvanta
