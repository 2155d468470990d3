#include "localservice/database.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

// Long enough for any other writer of this folder (each holds the lock for one short transaction).
constexpr int busyTimeoutMilliseconds = 5000;

StoreError storeError(int result, sqlite3* handle)
{
    using enum StoreError::Kind;
    switch (result & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return { busy, u"The database is in use by another program"_s };
    case SQLITE_FULL:
        return { full, u"There is no room left on the disk"_s };
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return { damaged, u"The database is damaged"_s };
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_IOERR:
    case SQLITE_AUTH:
        return { unavailable, u"The database cannot be read or written (%1)"_s.arg(QString::fromUtf8(sqlite3_errstr(result))) };
    default:
        return { internal,
            u"The database refused the operation (%1)"_s.arg(QString::fromUtf8(handle ? sqlite3_errmsg(handle) : sqlite3_errstr(result))) };
    }
}

/// SQLite makes its side files with the mode of the main file, so making that one first settles all of them.
std::optional<StoreError> makePrivateFile(const QString& path)
{
    const int file = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        return StoreError { errno == ENOSPC ? StoreError::Kind::full : StoreError::Kind::unavailable,
            u"%1 cannot be opened: %2"_s.arg(path, QString::fromLocal8Bit(std::strerror(errno))) };
    ::close(file);
    return std::nullopt;
}

} // namespace

void Database::CloseDatabase::operator()(sqlite3* database) const
{
    sqlite3_close_v2(database);
}
void Database::FinalizeStatement::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

Database::~Database() = default;

std::expected<Database, StoreError> Database::open(const QString& path)
{
    if (auto error = makePrivateFile(path))
        return std::unexpected(*std::move(error));
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(path.toUtf8().constData(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    Database database(handle);
    if (result != SQLITE_OK)
        return std::unexpected(storeError(result, handle));
    sqlite3_extended_result_codes(handle, 1);
    sqlite3_busy_timeout(handle, busyTimeoutMilliseconds);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    auto prepared = attempt([&] {
        // FULL: an answer that went out holds even if the power fails right after it.
        database.execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;");
    });
    if (!prepared)
        return std::unexpected(prepared.error());
    return database;
}

void Database::execute(const char* script)
{
    if (const int result = sqlite3_exec(m_handle.get(), script, nullptr, nullptr, nullptr); result != SQLITE_OK)
        throw storeError(result, m_handle.get());
}

qint64 Database::changedRows() const
{
    return sqlite3_changes64(m_handle.get());
}
qint64 Database::lastInsertedId() const
{
    return sqlite3_last_insert_rowid(m_handle.get());
}

sqlite3_stmt* Database::statement(std::string_view sql)
{
    const auto [entry, isNew] = m_statements.try_emplace(std::string(sql));
    if (isNew) {
        sqlite3_stmt* prepared = nullptr;
        const int result
            = sqlite3_prepare_v3(m_handle.get(), sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
        if (result != SQLITE_OK) {
            m_statements.erase(entry);
            throw storeError(result, m_handle.get());
        }
        entry->second.reset(prepared);
    }
    Q_ASSERT(!sqlite3_stmt_busy(entry->second.get()));
    return entry->second.get();
}

void Database::fail() const
{
    throw storeError(sqlite3_extended_errcode(m_handle.get()), m_handle.get());
}

Query::Query(Database& database, std::string_view sql, Begin) : m_database(database), m_statement(database.statement(sql)) { }

Query::~Query()
{
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

bool Query::next()
{
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        m_database.fail();
    return result == SQLITE_ROW;
}

bool Query::isNull(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}
qint64 Query::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}
double Query::real(int column) const
{
    return sqlite3_column_double(m_statement, column);
}

QString Query::text(int column) const
{
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return QString::fromUtf8(bytes, sqlite3_column_bytes(m_statement, column));
}

std::optional<QString> Query::optionalText(int column) const
{
    if (isNull(column))
        return std::nullopt;
    return text(column);
}

void Query::bind(int position, double value)
{
    check(sqlite3_bind_double(m_statement, position, value));
}

void Query::bind(int position, const QString& value)
{
    const QByteArray bytes = value.toUtf8();
    check(sqlite3_bind_text64(m_statement, position, bytes.constData(), static_cast<sqlite3_uint64>(bytes.size()), SQLITE_TRANSIENT,
        SQLITE_UTF8)); // NOLINT(performance-no-int-to-ptr): SQLite's own macro
}

void Query::bind(int position, const QByteArray& value)
{
    check(sqlite3_bind_blob64(m_statement, position, value.constData(), static_cast<sqlite3_uint64>(value.size()),
        SQLITE_TRANSIENT)); // NOLINT(performance-no-int-to-ptr): SQLite's own macro
}

void Query::bindInteger(int position, qint64 value)
{
    check(sqlite3_bind_int64(m_statement, position, value));
}

void Query::check(int result) const
{
    if (result != SQLITE_OK)
        m_database.fail();
}

Transaction::Transaction(Database& database, Purpose purpose) : m_database(database)
{
    m_database.run(purpose == Purpose::write ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction()
{
    if (!m_isOpen)
        return;
    // Where the commit itself failed, SQLite may have rolled back already: then this fails, and nothing is left to undo.
    if (const auto undone = attempt([this] { m_database.run("ROLLBACK"); }); !undone)
        return;
}

void Transaction::commit()
{
    m_database.run("COMMIT");
    m_isOpen = false;
}

} // namespace orvanta::localservice
