#include "localservice/task_store.h"

#include "app/policy/policy_text.h"

namespace orvanta::localservice {

namespace {

UtcTime time(qint64 milliseconds)
{
    return UtcTime(std::chrono::milliseconds(milliseconds));
}
qint64 stored(UtcTime moment)
{
    return moment.time_since_epoch().count();
}

std::vector<Task> tasks(Query& query)
{
    std::vector<Task> found;
    while (query.next())
        found.push_back(
            { query.integer(0), query.text(1), time(query.integer(2)), query.isNull(3) ? std::nullopt : std::optional(time(query.integer(3))) });
    return found;
}

} // namespace

std::optional<QString> acceptedTaskTitle(const QString& typed)
{
    QString title = typed;
    for (QChar& letter : title) {
        // Control and format characters (line ends, terminal escapes, direction overrides) have no place in a line.
        if (letter.category() == QChar::Other_Control || letter.category() == QChar::Separator_Line || letter.category() == QChar::Separator_Paragraph
            || (letter >= QChar(0x202A) && letter <= QChar(0x202E)) || (letter >= QChar(0x2066) && letter <= QChar(0x2069)))
            letter = u' ';
    }
    title = trimmedWhiteSpaceAndLineBreaks(title);
    if (title.size() > longestTaskTitle) {
        title.truncate(longestTaskTitle);
        if (title.back().isHighSurrogate())
            title.chop(1);
    }
    if (title.isEmpty())
        return std::nullopt;
    return title;
}

std::expected<Task, StoreError> TaskStore::start(const QString& title, UtcTime now)
{
    return attempt([&] {
        m_database->run("INSERT INTO tasks (title, started_at) VALUES (?, ?)", title, stored(now));
        return Task { m_database->lastInsertedId(), title, now, std::nullopt };
    });
}

std::optional<Task> TaskStore::finishFirst(std::string_view selection, qint64 argument, UtcTime now)
{
    Transaction transaction(*m_database);
    std::vector<Task> found;
    {
        Query query(*m_database, selection, argument);
        found = tasks(query);
    }
    if (found.empty())
        return std::nullopt;
    Task& task = found.front();
    // A clock that was set back must not give a task that ends before it began.
    task.endedAt = std::max(now, task.startedAt);
    m_database->run("UPDATE tasks SET ended_at = ? WHERE id = ?", stored(*task.endedAt), task.id);
    transaction.commit();
    return task;
}

std::expected<std::optional<Task>, StoreError> TaskStore::finish(qint64 id, UtcTime now)
{
    return attempt([&] { return finishFirst("SELECT id, title, started_at, ended_at FROM tasks WHERE id = ? AND ended_at IS NULL", id, now); });
}

std::expected<std::optional<Task>, StoreError> TaskStore::finishLatest(UtcTime now)
{
    constexpr qint64 one = 1;
    return attempt([&] {
        return finishFirst(
            "SELECT id, title, started_at, ended_at FROM tasks WHERE ended_at IS NULL ORDER BY started_at DESC, id DESC LIMIT ?", one, now);
    });
}

std::expected<std::vector<Task>, StoreError> TaskStore::inProgress() const
{
    return attempt([&] {
        Query query(*m_database, "SELECT id, title, started_at, ended_at FROM tasks WHERE ended_at IS NULL ORDER BY started_at DESC, id DESC");
        return tasks(query);
    });
}

std::expected<qint64, StoreError> TaskStore::inProgressCount() const
{
    return attempt([&] {
        Query query(*m_database, "SELECT count(*) FROM tasks WHERE ended_at IS NULL");
        return query.next() ? query.integer(0) : 0;
    });
}

std::expected<std::vector<Task>, StoreError> TaskStore::latestDone(int limit) const
{
    return attempt([&] {
        Query query(*m_database,
            "SELECT id, title, started_at, ended_at FROM tasks WHERE ended_at IS NOT NULL ORDER BY ended_at DESC, id DESC LIMIT ?", limit);
        return tasks(query);
    });
}

} // namespace orvanta::localservice
