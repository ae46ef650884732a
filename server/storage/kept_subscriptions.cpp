// kept_subscriptions.cpp - see kept_subscriptions.hpp.
#include "server/storage/kept_subscriptions.hpp"

#include "server/base/limits.hpp"

#include <limits>
#include <random>

namespace tovrik
{
namespace
{

mail_subscription read_row(const query& row)
{
    return {.address = row.text(0),
            .code = static_cast<std::uint16_t>(row.integer(1)),
            .style = static_cast<unsigned>(row.integer(2)),
            .mailed_day = row.integer(3)};
}

std::uint16_t make_code()
{
    std::random_device source;
    return std::uniform_int_distribution<std::uint16_t>{
        1, std::numeric_limits<std::uint16_t>::max()}(source);
}

std::string add_subscription(database& in, const mail_subscription& made, bool& is_added)
{
    std::string error =
        database_run(in,
                     "INSERT INTO subscriptions SELECT ?1, ?2, ?3, ?4 WHERE"
                     " (SELECT count(*) FROM subscriptions) < ?5",
                     made.address, made.code, made.style, made.mailed_day, max_subscriptions);
    is_added = error.empty() && in.changed_rows() > 0;
    return error;
}

} // namespace

std::string subscription_keep(database& in, const std::string& address, std::int64_t today,
                              mail_subscription& kept, subscription_result& result)
{
    std::string error = subscription_read(in, address, kept);
    result = subscription_result::known;
    if (!error.empty() || kept.code != 0)
        return error;
    kept = {.address = address, .code = make_code(), .mailed_day = today - 1};
    bool is_added = false;
    error = add_subscription(in, kept, is_added);
    result = is_added ? subscription_result::made : subscription_result::full;
    return error;
}

std::string subscription_read(database& in, const std::string& address, mail_subscription& kept)
{
    query row{in, "SELECT address, code, style, mailed_day FROM subscriptions WHERE address = ?1",
              address};
    kept = row.next() ? read_row(row) : mail_subscription{};
    return row.error();
}

std::string subscription_set_style(database& in, const std::string& address, unsigned style,
                                   bool& is_kept)
{
    is_kept = false;
    if (style >= mail_styles)
        return {};
    std::string error =
        database_run(in, "UPDATE subscriptions SET style = ?2 WHERE address = ?1", address, style);
    is_kept = error.empty() && in.changed_rows() > 0;
    return error;
}

std::string subscriptions_due(database& in, std::int64_t day, std::vector<mail_subscription>& due)
{
    query row{in,
              "SELECT address, code, style, mailed_day FROM subscriptions WHERE mailed_day < ?1",
              day};
    while (row.next()) {
        due.push_back(read_row(row));
    }
    return row.error();
}

std::string subscription_mailed(database& in, const std::string& address, std::int64_t day)
{
    return database_run(in,
                        "UPDATE subscriptions SET mailed_day = ?2 WHERE address = ?1"
                        " AND mailed_day < ?2",
                        address, day);
}

std::string subscriptions_take_back(database& in, std::int64_t today)
{
    return database_run(in, "UPDATE subscriptions SET mailed_day = ?1 - 1 WHERE mailed_day >= ?1",
                        today);
}

std::string subscriptions_count(database& in, std::size_t& count)
{
    query row{in, "SELECT count(*) FROM subscriptions"};
    count = row.next() ? static_cast<std::size_t>(row.integer(0)) : 0;
    return row.error();
}

} // namespace tovrik
