#pragma once

#include "localservice/database.h"
#include "localservice/iso_time.h"

#include <vector>

namespace orvanta::localservice {

/// A piece of work. Focus is on while at least one of them has no end.
struct Task {
    qint64 id = 0;
    QString title;
    UtcTime startedAt;
    std::optional<UtcTime> endedAt;
};

/// The longest title that is kept, in UTF-16 units: more than a line on any screen.
constexpr qsizetype longestTaskTitle = 300;

/// `typed` as a title: one line, without control characters, trimmed, cut to the longest. Absent if nothing is left.
[[nodiscard]] std::optional<QString> acceptedTaskTitle(const QString& typed);

/// The tasks of the database. A light view that whoever needs it makes; the database must outlive it.
class TaskStore {
public:
    explicit TaskStore(Database& database) : m_database(&database) { }

    /// Begins a task. `title` is an accepted one.
    [[nodiscard]] std::expected<Task, StoreError> start(const QString& title, UtcTime now);

    /// Ends the task in progress with this identifier. Absent if there is none such: unknown, or ended before.
    [[nodiscard]] std::expected<std::optional<Task>, StoreError> finish(qint64 id, UtcTime now);

    /// Ends the task in progress that was started last. Absent if there is none in progress.
    [[nodiscard]] std::expected<std::optional<Task>, StoreError> finishLatest(UtcTime now);

    /// Tasks in progress, the latest started first.
    [[nodiscard]] std::expected<std::vector<Task>, StoreError> inProgress() const;

    [[nodiscard]] std::expected<qint64, StoreError> inProgressCount() const;

    /// The `limit` tasks that ended last, the latest first.
    [[nodiscard]] std::expected<std::vector<Task>, StoreError> latestDone(int limit) const;

private:
    std::optional<Task> finishFirst(std::string_view selection, qint64 argument, UtcTime now);

    Database* m_database;
};

} // namespace orvanta::localservice
