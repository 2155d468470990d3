#include "localservice/schema.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <array>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 applicationId = 0x4F52564E; // "ORVN": marks the file as ours

// Times are milliseconds since 1970 in UTC. "started_at" is repeated beside each use so that every question over a
// span of time is answered from one index: which applications and pages it went to, or how one of them fared in it.
constexpr auto firstSchema = R"sql(
CREATE TABLE tasks (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  title TEXT NOT NULL,
  started_at INTEGER NOT NULL,
  ended_at INTEGER
) STRICT;
CREATE INDEX tasks_in_progress ON tasks (started_at) WHERE ended_at IS NULL;
CREATE INDEX tasks_done ON tasks (ended_at) WHERE ended_at IS NOT NULL;

CREATE TABLE policy (
  only_row INTEGER PRIMARY KEY CHECK (only_row = 1),
  revision INTEGER NOT NULL
) STRICT;
INSERT INTO policy (only_row, revision) VALUES (1, 1);
CREATE TABLE blocked_domains (
  domain TEXT PRIMARY KEY
) STRICT, WITHOUT ROWID;
CREATE TABLE blocked_applications (
  position INTEGER PRIMARY KEY,
  bundle_identifier TEXT NOT NULL UNIQUE,
  display_name TEXT NOT NULL
) STRICT;

CREATE TABLE agent_events (
  id INTEGER PRIMARY KEY,
  event_id TEXT NOT NULL UNIQUE,
  event_type TEXT NOT NULL,
  session_id TEXT NOT NULL,
  occurred_at INTEGER NOT NULL,
  received_at INTEGER NOT NULL,
  working_folder TEXT,
  model TEXT,
  permission_mode TEXT,
  transcript_path TEXT,
  prompt TEXT
) STRICT;
CREATE INDEX agent_events_by_time ON agent_events (occurred_at);
CREATE INDEX agent_events_by_session ON agent_events (session_id, occurred_at);
CREATE TABLE opening_messages (
  event INTEGER NOT NULL REFERENCES agent_events (id) ON DELETE CASCADE,
  position INTEGER NOT NULL,
  role TEXT NOT NULL,
  content TEXT NOT NULL,
  occurred_at TEXT,
  PRIMARY KEY (event, position)
) STRICT, WITHOUT ROWID;

CREATE TABLE activity_periods (
  id INTEGER PRIMARY KEY,
  started_at INTEGER NOT NULL,
  ended_at INTEGER NOT NULL CHECK (ended_at >= started_at),
  idle_seconds REAL NOT NULL,
  received_at INTEGER NOT NULL,
  digest BLOB NOT NULL
) STRICT;
CREATE INDEX activity_periods_by_time ON activity_periods (started_at, ended_at);
CREATE TABLE applications (
  id INTEGER PRIMARY KEY,
  identity TEXT NOT NULL UNIQUE,
  bundle_identifier TEXT,
  name TEXT NOT NULL
) STRICT;
CREATE TABLE web_pages (
  id INTEGER PRIMARY KEY,
  url TEXT NOT NULL UNIQUE,
  title TEXT NOT NULL
) STRICT;
CREATE TABLE application_uses (
  period INTEGER NOT NULL REFERENCES activity_periods (id) ON DELETE CASCADE,
  application INTEGER NOT NULL REFERENCES applications (id),
  started_at INTEGER NOT NULL,
  focused_seconds REAL NOT NULL,
  PRIMARY KEY (period, application)
) STRICT, WITHOUT ROWID;
CREATE INDEX application_uses_by_time ON application_uses (started_at, application, focused_seconds);
CREATE INDEX application_uses_by_application ON application_uses (application, started_at, focused_seconds);
CREATE TABLE page_uses (
  period INTEGER NOT NULL,
  application INTEGER NOT NULL,
  page INTEGER NOT NULL REFERENCES web_pages (id),
  started_at INTEGER NOT NULL,
  focused_seconds REAL NOT NULL,
  PRIMARY KEY (period, application, page),
  FOREIGN KEY (period, application) REFERENCES application_uses (period, application) ON DELETE CASCADE
) STRICT, WITHOUT ROWID;
CREATE INDEX page_uses_by_time ON page_uses (started_at, page, focused_seconds);
CREATE INDEX page_uses_by_page ON page_uses (page, started_at, focused_seconds);
)sql";

/// One script a version, in order; the database's user_version counts those that it has been through.
constexpr std::array migrations { firstSchema };

qint64 single(Database& database, std::string_view sql)
{
    Query query(database, sql);
    return query.next() ? query.integer(0) : 0;
}

void migrate(Database& database)
{
    constexpr auto present = static_cast<qint64>(migrations.size());
    if (single(database, "PRAGMA user_version") == present && single(database, "PRAGMA application_id") == applicationId)
        return;
    // Two processes may start on a new folder at once: what is there is looked at again under the write lock.
    Transaction transaction(database);
    const qint64 version = single(database, "PRAGMA user_version");
    const qint64 owner = single(database, "PRAGMA application_id");
    const bool isEmpty = version == 0 && owner == 0 && single(database, "SELECT count(*) FROM sqlite_schema") == 0;
    if (!isEmpty && owner != applicationId)
        throw StoreError { StoreError::Kind::foreign, u"The database belongs to another program"_s };
    if (version > present)
        throw StoreError { StoreError::Kind::foreign, u"The database was written by a later version of this program"_s };
    for (auto step = static_cast<std::size_t>(version); step < migrations.size(); ++step)
        database.execute(migrations[step]);
    database.execute(u"PRAGMA application_id = %1; PRAGMA user_version = %2"_s.arg(applicationId).arg(present).toUtf8().constData());
    transaction.commit();
}

void checkPages(Database& database)
{
    Query query(database, "PRAGMA quick_check(1)");
    if (!query.next() || query.text(0) != "ok"_L1)
        throw StoreError { StoreError::Kind::damaged, u"The database is damaged"_s };
}

std::expected<Database, StoreError> openOnce(const QString& path, DamageRule rule)
{
    auto database = Database::open(path);
    if (!database)
        return database;
    const auto ready = attempt([&] {
        if (rule == DamageRule::moveAside)
            checkPages(*database);
        migrate(*database);
    });
    if (!ready)
        return std::unexpected(ready.error());
    return database;
}

/// Renames the database and its side files, which belong together. Returns the main file's new name.
std::expected<QString, StoreError> moveAside(const QString& path)
{
    const QString stamp = QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd'T'HHmmss'Z'"_s);
    QString aside = u"%1.damaged-%2"_s.arg(path, stamp);
    for (int copy = 2; QFile::exists(aside); ++copy)
        aside = u"%1.damaged-%2-%3"_s.arg(path, stamp).arg(copy);
    if (!QFile::rename(path, aside))
        return std::unexpected(StoreError { StoreError::Kind::unavailable, u"The database is damaged and cannot be moved aside: %1"_s.arg(path) });
    for (const QString& suffix : { u"-wal"_s, u"-shm"_s }) {
        // A log left behind would be replayed into the new database.
        if (QFile::exists(path + suffix) && !QFile::rename(path + suffix, aside + suffix))
            return std::unexpected(
                StoreError { StoreError::Kind::unavailable, u"The damaged database's log cannot be moved aside: %1"_s.arg(path + suffix) });
    }
    return aside;
}

} // namespace

QString databasePath(const QString& folder)
{
    return QDir(folder).filePath(u"orvanta-service.sqlite"_s);
}

std::expected<OpenedDatabase, StoreError> openServiceDatabase(const QString& folder, DamageRule rule)
{
    const QString path = databasePath(folder);
    auto database = openOnce(path, rule);
    if (database)
        return OpenedDatabase { *std::move(database), std::nullopt };
    if (database.error().kind != StoreError::Kind::damaged || rule == DamageRule::report)
        return std::unexpected(database.error());
    auto aside = moveAside(path);
    if (!aside)
        return std::unexpected(aside.error());
    database = openOnce(path, rule);
    if (!database)
        return std::unexpected(database.error());
    return OpenedDatabase { *std::move(database), *std::move(aside) };
}

} // namespace orvanta::localservice
