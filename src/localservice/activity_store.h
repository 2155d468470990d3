#pragma once

#include "localservice/database.h"
#include "localservice/json_reading.h"

#include <QByteArray>

#include <vector>

namespace orvanta::localservice {

/// A web page that was in front, within one application's time.
struct UploadedTab {
    QString url;
    QString title;
    double focusedSeconds = 0;
};

/// An application that was in front during a period.
struct UploadedApplication {
    std::optional<QString> bundleIdentifier;
    QString name;
    double focusedSeconds = 0;
    std::vector<UploadedTab> tabs;
};

/// What one upload tells: a minute of a person's activity, or several that were merged because they had to wait.
struct UploadedPeriod {
    UtcTime startedAt;
    UtcTime endedAt;
    double idleSeconds = 0;
    std::vector<UploadedApplication> applications;
    QByteArray digest = {}; ///< of the body: the same bytes sent again are the same period
};

/// Reads an uploaded period. Keys that it does not know are ignored.
[[nodiscard]] std::expected<UploadedPeriod, BadInput> readUploadedPeriod(const QByteArray& body);

/// Times half open: a period counts if it began at `from` or later and before `until`.
struct TimeSpan {
    UtcTime from;
    UtcTime until;
};

struct ApplicationTotal {
    QString identity; ///< the bundle identifier, or the name where there is none
    QString name;     ///< the latest that was sent
    double focusedSeconds = 0;
};

struct PageTotal {
    QString url;
    QString title; ///< the latest that was sent
    double focusedSeconds = 0;
};

struct IdleTotal {
    qint64 periods = 0;
    double idleSeconds = 0;
};

struct PeriodTotal {
    UtcTime startedAt;
    UtcTime endedAt;
    double idleSeconds = 0;
    double focusedSeconds = 0; ///< of all applications, or of the one asked for
};

/// The activity of the database. A light view; the database must outlive it. Each question is answered from an index
/// by time, so its cost grows with the span asked for and not with what is stored.
class ActivityStore {
public:
    enum class Outcome : std::uint8_t { stored, knownAlready };

    explicit ActivityStore(Database& database) : m_database(&database) { }

    /// Stores a period unless the same upload is there already: a client whose answer was lost sends it again. An
    /// application or a page named twice in it counts with the sum.
    [[nodiscard]] std::expected<Outcome, StoreError> store(const UploadedPeriod& period, UtcTime receivedAt);

    /// Most focused first; texts break ties.
    [[nodiscard]] std::expected<std::vector<ApplicationTotal>, StoreError> applicationTotals(TimeSpan span) const;
    [[nodiscard]] std::expected<std::vector<PageTotal>, StoreError> pageTotals(TimeSpan span) const;

    [[nodiscard]] std::expected<IdleTotal, StoreError> idleTotal(TimeSpan span) const;

    /// Everything that was uploaded, in the order of time; within a period the most focused first.
    [[nodiscard]] std::expected<std::vector<UploadedPeriod>, StoreError> uploaded(TimeSpan span) const;

    /// In the order of time.
    [[nodiscard]] std::expected<std::vector<PeriodTotal>, StoreError> periods(TimeSpan span) const;
    /// Only the periods in which the application with this identity was in front.
    [[nodiscard]] std::expected<std::vector<PeriodTotal>, StoreError> periodsOfApplication(const QString& applicationIdentity, TimeSpan span) const;

private:
    [[nodiscard]] qint64 applicationId(const UploadedApplication& application);
    [[nodiscard]] qint64 pageId(const UploadedTab& tab);

    Database* m_database;
};

} // namespace orvanta::localservice
