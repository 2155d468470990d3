#pragma once

#include "localservice/store_error.h"

#include <QString>

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

namespace orvanta::localservice {

/// One connection to an SQLite database, owned by what opened it and used from one thread. Statements are prepared once
/// and kept. Everything but `open` throws StoreError: the stores are the only callers, and each of their public
/// operations turns it into a value (see `attempt`), so that no exception leaves this folder.
class Database {
public:
    /// Opens or makes the file (readable and writable by its owner alone), with write-ahead logging, foreign keys
    /// and a full flush at each commit.
    [[nodiscard]] static std::expected<Database, StoreError> open(const QString& path);

    Database(Database&&) noexcept = default;
    Database& operator=(Database&&) noexcept = default;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    /// Runs a script of statements that take no arguments and whose rows do not matter.
    void execute(const char* script);

    /// Runs one statement to its end.
    template <typename... Arguments>
    void run(std::string_view sql, const Arguments&... arguments);

    /// Of the latest statement that was run: rows changed, and the identifier of the row inserted.
    [[nodiscard]] qint64 changedRows() const;
    [[nodiscard]] qint64 lastInsertedId() const;

private:
    friend class Query;

    struct CloseDatabase {
        void operator()(sqlite3* database) const;
    };
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

    explicit Database(sqlite3* handle) : m_handle(handle) { }

    [[nodiscard]] sqlite3_stmt* statement(std::string_view sql);
    [[noreturn]] void fail() const;

    std::unique_ptr<sqlite3, CloseDatabase> m_handle;
    std::unordered_map<std::string, Statement> m_statements; // after the handle: finalised before it closes
};

/// One run of a prepared statement with its arguments bound in order. Returns the statement when destroyed, so a
/// statement text can be in use only once at a time.
class Query {
public:
    template <typename... Arguments>
    Query(Database& database, std::string_view sql, const Arguments&... arguments) : Query(database, sql, Begin {})
    {
        int position = 0;
        (bind(++position, arguments), ...);
    }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;
    ~Query();

    /// Goes to the next row; false after the last.
    [[nodiscard]] bool next();

    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] qint64 integer(int column) const;
    [[nodiscard]] double real(int column) const;
    [[nodiscard]] QString text(int column) const;
    [[nodiscard]] std::optional<QString> optionalText(int column) const;

private:
    struct Begin { };
    Query(Database& database, std::string_view sql, Begin);

    template <typename Integer>
        requires std::is_integral_v<Integer>
    void bind(int position, Integer value)
    {
        bindInteger(position, static_cast<qint64>(value));
    }
    void bind(int position, double value);
    void bind(int position, const QString& value);
    void bind(int position, const QByteArray& value); ///< as a blob
    template <typename T>
    void bind(int position, const std::optional<T>& value)
    {
        if (value)
            bind(position, *value);
        // An argument that was never bound is NULL.
    }
    void bindInteger(int position, qint64 value);
    void check(int result) const;

    Database& m_database;
    sqlite3_stmt* m_statement;
};

/// A transaction: undoes everything unless it was committed. One that writes takes the write lock at once; one that
/// only reads sees the database as it was at its first read, whatever other processes write meanwhile.
class Transaction {
public:
    enum class Purpose : std::uint8_t { read, write };

    explicit Transaction(Database& database, Purpose purpose = Purpose::write);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    void commit();

private:
    Database& m_database;
    bool m_isOpen = true;
};

template <typename... Arguments>
void Database::run(std::string_view sql, const Arguments&... arguments)
{
    Query query(*this, sql, arguments...);
    while (query.next()) { }
}

/// What `work` returns, or the StoreError that it threw.
template <typename Work>
[[nodiscard]] auto attempt(Work&& work) -> std::expected<std::invoke_result_t<Work>, StoreError>
{
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
            std::forward<Work>(work)();
            return {};
        } else {
            return std::forward<Work>(work)();
        }
    } catch (const StoreError& error) {
        return std::unexpected(error);
    }
}

} // namespace orvanta::localservice
