// database.hpp - a connection to SQLite: statements, values, transactions.
//
// Owns the connection and its prepared statements, which are kept and used again. database_file
// opens it. A connection belongs to one thread; only database::interrupt may be called by another.
//
// SQL is written down in the source and never put together: an sql_text is made of a literal.
// Texts are bytes (ISO-8859-1, NUL included) and are kept as BLOBs, so that SQLite never looks into
// them. They reach a statement only as bound values.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

struct sqlite3;
struct sqlite3_stmt;

namespace tovrik
{

/// A statement as it stands in the source.
class sql_text
{
public:
    /// consteval: a text that is put together while the program runs cannot become a statement.
    consteval sql_text(const char* literal) : text(literal) {}
    std::string_view view() const
    {
        return text;
    }

private:
    std::string_view text;
};

struct connection_closer {
    void operator()(sqlite3* connection) const noexcept;
};
struct statement_closer {
    void operator()(sqlite3_stmt* statement) const noexcept;
};
using unique_connection = std::unique_ptr<sqlite3, connection_closer>;
using unique_statement = std::unique_ptr<sqlite3_stmt, statement_closer>;

class database
{
public:
    database() = default;
    explicit database(unique_connection opened) : connection(std::move(opened)) {}

    bool is_open() const
    {
        return connection != nullptr;
    }
    /// SQLite's own handle; the database keeps it. Null while nothing is open.
    sqlite3* handle() const
    {
        return connection.get();
    }
    /// What the latest failure was, in one line.
    std::string error_text() const;
    /// Whether a transaction is under way. SQLite may end one by itself when the disk fails.
    bool is_in_transaction() const;
    /// How many rows the latest statement has inserted, changed or deleted.
    std::int64_t changed_rows() const;
    /// The row number of the latest insertion.
    std::int64_t last_row() const;
    /// Ends the statement that is under way in another thread; it fails with "interrupted".
    void interrupt() const;

    /// For query: a statement that nobody else uses; null if the SQL makes no sense here. It goes
    /// back with give_back.
    unique_statement take(sql_text sql);
    void give_back(sql_text sql, unique_statement statement);

private:
    unique_connection connection;
    std::map<std::string_view, unique_statement> idle; ///< by their SQL
};

/// One use of a statement. Its first failure ends it: `next` is false from then on, and `error`
/// says why. After a failure nothing more may be changed: SQLite may have ended the transaction,
/// and further changes would stand alone.
class query
{
public:
    /// Binds `values` to ?1, ?2 and so on: whole numbers, floating-point numbers, texts. They are
    /// copied.
    template <typename... bound_value>
    query(database& in, sql_text sql_, const bound_value&... values) : owner(in), sql(sql_)
    {
        take();
        int place = 0;
        (bind(++place, values), ...);
    }
    ~query();
    query(const query&) = delete;
    query& operator=(const query&) = delete;

    /// Goes to the next row. False if there is none, or after a failure.
    bool next();
    /// Takes all steps, ignoring rows. Returns an error text, empty on success.
    std::string run();
    const std::string& error() const
    {
        return failure;
    }

    /// The values of the present row; columns count from 0.
    std::int64_t integer(int column) const;
    double real(int column) const;
    std::string text(int column) const
    {
        return std::string{bytes(column)};
    }
    /// The same without a copy, until the next step.
    std::string_view bytes(int column) const;

private:
    void take();
    void bind_integer(int place, std::int64_t value);
    void bind_real(int place, double value);
    void bind_text(int place, std::string_view value);
    void check(int result);

    template <typename bound_value> void bind(int place, const bound_value& value)
    {
        if constexpr (std::is_integral_v<bound_value>)
            bind_integer(place, static_cast<std::int64_t>(value));
        else if constexpr (std::is_floating_point_v<bound_value>)
            bind_real(place, value);
        else
            bind_text(place, value);
    }

    database& owner;
    sql_text sql;
    unique_statement statement;
    std::string failure;
};

/// Runs a statement without looking at rows. Returns an error text, empty on success.
template <typename... bound_value>
std::string database_run(database& in, sql_text sql, const bound_value&... values)
{
    return query{in, sql, values...}.run();
}

/// Runs a script of several statements, for what a connection is set to and for schemas. Nothing
/// from outside belongs into it. Returns an error text, empty on success.
std::string database_run_script(const database& in, const std::string& script);

enum class transaction_use { reading, writing };

/// A transaction that is rolled back at the end of its scope unless it was committed.
class transaction
{
public:
    /// A reading one sees the database as it is at its first statement. Whether it has begun says
    /// `error`.
    transaction(database& in, transaction_use use);
    ~transaction();
    transaction(const transaction&) = delete;
    transaction& operator=(const transaction&) = delete;

    /// Returns an error text, empty if everything is on disk.
    std::string commit();
    const std::string& error() const
    {
        return failure;
    }

private:
    database& owner;
    std::string failure;
};

/// A part of a transaction that is undone at the end of its scope unless it was released.
class savepoint
{
public:
    explicit savepoint(database& in);
    ~savepoint();
    savepoint(const savepoint&) = delete;
    savepoint& operator=(const savepoint&) = delete;

    /// Keeps what was done. Returns an error text, empty on success.
    std::string release();
    const std::string& error() const
    {
        return failure;
    }

private:
    database& owner;
    std::string failure;
    bool is_held;
};

} // namespace tovrik
