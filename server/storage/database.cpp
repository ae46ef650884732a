// database.cpp - see database.hpp.
#include "server/storage/database.hpp"

#include <sqlite3.h>

namespace tovrik
{

void connection_closer::operator()(sqlite3* connection) const noexcept
{
    sqlite3_close_v2(connection);
}

void statement_closer::operator()(sqlite3_stmt* statement) const noexcept
{
    sqlite3_finalize(statement);
}

std::string database::error_text() const
{
    return sqlite3_errmsg(connection.get());
}

bool database::is_in_transaction() const
{
    return sqlite3_get_autocommit(connection.get()) == 0;
}

std::int64_t database::changed_rows() const
{
    return sqlite3_changes64(connection.get());
}

std::int64_t database::last_row() const
{
    return sqlite3_last_insert_rowid(connection.get());
}

void database::interrupt() const
{
    sqlite3_interrupt(connection.get());
}

unique_statement database::take(sql_text sql)
{
    const auto found = idle.find(sql.view());
    if (found != idle.end() && found->second)
        return std::move(found->second);
    sqlite3_stmt* made = nullptr;
    sqlite3_prepare_v3(connection.get(), sql.view().data(), static_cast<int>(sql.view().size()),
                       SQLITE_PREPARE_PERSISTENT, &made, nullptr);
    return unique_statement{made};
}

void database::give_back(sql_text sql, unique_statement statement)
{
    sqlite3_reset(statement.get());
    sqlite3_clear_bindings(statement.get());
    idle[sql.view()] = std::move(statement);
}

query::~query()
{
    if (statement)
        owner.give_back(sql, std::move(statement));
}

void query::take()
{
    statement = owner.take(sql);
    if (!statement)
        failure = owner.error_text();
}

void query::check(int result)
{
    if (result != SQLITE_OK && failure.empty())
        failure = owner.error_text();
}

void query::bind_integer(int place, std::int64_t value)
{
    if (statement)
        check(sqlite3_bind_int64(statement.get(), place, value));
}

void query::bind_real(int place, double value)
{
    if (statement)
        check(sqlite3_bind_double(statement.get(), place, value));
}

void query::bind_text(int place, std::string_view value)
{
    // A null pointer would bind NULL instead of an empty text.
    const char* const start = value.empty() ? "" : value.data();
    if (statement)
        check(sqlite3_bind_blob64(statement.get(), place, start, value.size(), SQLITE_TRANSIENT));
}

bool query::next()
{
    if (!failure.empty())
        return false;
    const int result = sqlite3_step(statement.get());
    if (result == SQLITE_ROW)
        return true;
    if (result != SQLITE_DONE)
        failure = owner.error_text();
    return false;
}

std::string query::run()
{
    while (next()) {
    }
    return failure;
}

std::int64_t query::integer(int column) const
{
    return sqlite3_column_int64(statement.get(), column);
}

double query::real(int column) const
{
    return sqlite3_column_double(statement.get(), column);
}

std::string_view query::bytes(int column) const
{
    const auto* const first =
        static_cast<const char*>(sqlite3_column_blob(statement.get(), column));
    const int size = sqlite3_column_bytes(statement.get(), column);
    return first == nullptr ? std::string_view{}
                            : std::string_view{first, static_cast<std::size_t>(size)};
}

std::string database_run_script(const database& in, const std::string& script)
{
    const int result = sqlite3_exec(in.handle(), script.c_str(), nullptr, nullptr, nullptr);
    return result == SQLITE_OK ? "" : in.error_text();
}

transaction::transaction(database& in, transaction_use use)
    : owner(in), failure(use == transaction_use::writing ? database_run(in, "BEGIN IMMEDIATE")
                                                         : database_run(in, "BEGIN"))
{
}

transaction::~transaction()
{
    if (failure.empty() && owner.is_in_transaction())
        database_run(owner, "ROLLBACK");
}

std::string transaction::commit()
{
    return database_run(owner, "COMMIT");
}

savepoint::savepoint(database& in)
    : owner(in), failure(database_run(in, "SAVEPOINT part")), is_held(failure.empty())
{
}

savepoint::~savepoint()
{
    // The whole transaction may be gone already.
    if (!is_held || !owner.is_in_transaction())
        return;
    database_run(owner, "ROLLBACK TO part");
    database_run(owner, "RELEASE part");
}

std::string savepoint::release()
{
    std::string refusal = database_run(owner, "RELEASE part");
    is_held = !refusal.empty();
    return refusal;
}

} // namespace tovrik
