// kept_messages.cpp - see kept_messages.hpp.
#include "server/storage/kept_messages.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/storage/calendar_day.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tovrik
{
namespace
{

/// The texts of a message in the order of their columns, the first of which is number 3.
constexpr std::string transmission::*const text_members[] = {
    &transmission::mode,     &transmission::registration,   &transmission::label,
    &transmission::block_id, &transmission::message_number, &transmission::flight_number,
    &transmission::content,  &transmission::from,           &transmission::to,
    &transmission::aircraft, &transmission::operator_name,
};
constexpr int first_text_column = 3;

/// SQLite would keep NULL for what is not a number.
double number_or_0(double value)
{
    return std::isfinite(value) ? value : 0;
}

std::string add_row(database& in, const transmission& message, std::time_t received)
{
    return database_run(
        in,
        "INSERT INTO messages VALUES (NULL, ?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12,"
        " ?13, ?14, ?15, ?16, ?17, ?18, ?19, ?20)",
        received, message.time, message.mode, message.registration, message.label, message.block_id,
        message.message_number, message.flight_number, message.content, message.from, message.to,
        message.aircraft, message.operator_name, message.heard.station, message.contacts,
        message.daily_flights, static_cast<int>(message.heard.link),
        number_or_0(message.heard.frequency_mhz), number_or_0(message.heard.level_db),
        message.heard.continues);
}

std::string count_contact(database& in, const std::string& registration)
{
    if (registration.empty())
        return {};
    return database_run(in,
                        "INSERT INTO contacts VALUES (?1, 1)"
                        " ON CONFLICT DO UPDATE SET messages = messages + 1",
                        registration);
}

std::string count_flight(database& in, const std::string& flight_number, std::time_t received)
{
    if (flight_number.empty())
        return {};
    return database_run(in, "INSERT INTO flights VALUES (?1, ?2) ON CONFLICT DO NOTHING",
                        day_number(received), flight_key(flight_number));
}

std::string count_hour(database& in, std::time_t received)
{
    return database_run(in,
                        "INSERT INTO hours VALUES (?1, 1)"
                        " ON CONFLICT DO UPDATE SET messages = messages + 1",
                        hour_number(received));
}

/// Reads into a record that is used again for each row: its texts have their room already.
void read_row(const query& row, kept_message& kept)
{
    kept.id = row.integer(0);
    kept.received = row.integer(1);
    transmission& message = kept.message;
    message.time = row.integer(2);
    int column = first_text_column;
    for (const auto member : text_members) {
        message.*member = row.bytes(column++);
    }
    message.heard.station = row.bytes(column++);
    message.contacts = static_cast<std::uint32_t>(row.integer(column++));
    message.daily_flights = static_cast<std::uint32_t>(row.integer(column++));
    message.heard.link = static_cast<message_link>(row.integer(column++));
    message.heard.frequency_mhz = row.real(column++);
    message.heard.level_db = row.real(column++);
    message.heard.continues = row.integer(column) != 0;
}

/// What must be known of a message to forget it.
struct old_message {
    std::int64_t id;
    std::time_t received;
    std::string registration;
};

std::string find_old(database& in, std::time_t before, std::vector<old_message>& found)
{
    query row{in,
              "SELECT id, received, registration FROM messages WHERE received < ?1"
              " ORDER BY received LIMIT ?2",
              before, max_forgotten_messages};
    while (row.next()) {
        found.push_back({row.integer(0), row.integer(1), row.text(2)});
    }
    return row.error();
}

std::string forget_contact(database& in, const std::string& registration)
{
    std::string error = database_run(
        in, "UPDATE contacts SET messages = messages - 1 WHERE registration = ?1", registration);
    if (!error.empty())
        return error;
    return database_run(in, "DELETE FROM contacts WHERE registration = ?1 AND messages < 1",
                        registration);
}

std::string forget_hour(database& in, std::int64_t hour)
{
    std::string error =
        database_run(in, "UPDATE hours SET messages = messages - 1 WHERE hour = ?1", hour);
    if (!error.empty())
        return error;
    return database_run(in, "DELETE FROM hours WHERE hour = ?1 AND messages < 1", hour);
}

std::string forget_message(database& in, const old_message& old)
{
    std::string error = database_run(in, "DELETE FROM messages WHERE id = ?1", old.id);
    if (error.empty())
        error = forget_contact(in, old.registration);
    return error.empty() ? forget_hour(in, hour_number(old.received)) : error;
}

/// Reads the number that a statement with one row has.
template <typename number> std::string read_count(query&& asked, number& count)
{
    count = asked.next() ? static_cast<number>(asked.integer(0)) : 0;
    return asked.error();
}

} // namespace

std::string message_keep(database& in, const transmission& message, std::time_t received)
{
    std::string error = add_row(in, message, received);
    if (error.empty())
        error = count_contact(in, message.registration);
    if (error.empty())
        error = count_flight(in, message.flight_number, received);
    return error.empty() ? count_hour(in, received) : error;
}

std::string messages_forget(database& in, std::time_t before, std::vector<std::string>& forgotten)
{
    std::vector<old_message> found;
    std::string error = find_old(in, before, found);
    forgotten.clear();
    for (old_message& old : found) {
        if (error.empty())
            error = forget_message(in, old);
        forgotten.push_back(std::move(old.registration));
    }
    if (!error.empty())
        return error;
    // No day has more flights than messages, so these come to an end together.
    return database_run(in,
                        "DELETE FROM flights WHERE (day, flight) IN"
                        " (SELECT day, flight FROM flights WHERE day < ?1 LIMIT ?2)",
                        day_number(before), max_forgotten_messages);
}

std::string messages_visit(database& in, std::time_t begin, std::time_t end,
                           const std::function<bool(const kept_message&)>& visit)
{
    query row{in,
              "SELECT * FROM messages WHERE received >= ?1 AND received < ?2"
              " ORDER BY received, id",
              begin, end};
    kept_message kept;
    for (bool is_wanted = true; is_wanted && row.next();) {
        read_row(row, kept);
        is_wanted = visit(kept);
    }
    return row.error();
}

std::string messages_count(database& in, std::uint64_t& count)
{
    return read_count(query{in, "SELECT coalesce(sum(messages), 0) FROM hours"}, count);
}

std::string contacts_count(database& in, const std::string& registration, std::uint32_t& count)
{
    return read_count(
        query{in, "SELECT messages FROM contacts WHERE registration = ?1", registration}, count);
}

std::string contacts_read(database& in, std::size_t limit,
                          std::map<std::string, std::uint32_t>& contacts)
{
    query row{in, "SELECT registration, messages FROM contacts ORDER BY messages DESC LIMIT ?1",
              limit};
    while (row.next()) {
        contacts[row.text(0)] = static_cast<std::uint32_t>(row.integer(1));
    }
    return row.error();
}

std::string flights_read(database& in, std::int64_t day, std::size_t limit,
                         std::set<std::string>& flights)
{
    query row{in, "SELECT flight FROM flights WHERE day = ?1 LIMIT ?2", day, limit};
    while (row.next()) {
        flights.insert(row.text(0));
    }
    return row.error();
}

std::string flights_count(database& in, std::int64_t day, std::uint32_t& count)
{
    return read_count(query{in, "SELECT count(*) FROM flights WHERE day = ?1", day}, count);
}

std::string hours_read(database& in, std::time_t now, std::span<std::uint64_t> hours)
{
    std::ranges::fill(hours, 0);
    const std::int64_t last = hour_number(now);
    const std::int64_t first = last + 1 - static_cast<std::int64_t>(hours.size());
    query row{in, "SELECT hour, messages FROM hours WHERE hour BETWEEN ?1 AND ?2", first, last};
    while (row.next()) {
        hours[static_cast<std::size_t>(row.integer(0) - first)] =
            static_cast<std::uint64_t>(row.integer(1));
    }
    return row.error();
}

} // namespace tovrik
