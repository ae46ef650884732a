// reference_files.cpp - see reference_files.hpp.
#include "server/tovrikd/reference_files.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/messages/carried_text.hpp"
#include "server/protocol/packet.hpp"
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/csv_reader.hpp"
#include "server/tovrikd/file_mistakes.hpp"
#include "server/tovrikd/regular_file.hpp"

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace tovrik
{
namespace
{

/// The first columns must not be empty, as in an update.
constexpr const char* named_columns[] = {"code", "name"};
constexpr const char* aircraft_columns[] = {
    "registration",  "manufacturer",         "model",
    "type",          "construction_number",  "operator_iata",
    "operator_icao", "current_registration", "remarks"};
constexpr std::size_t needed_aircraft_columns = 4;

/// A file's kind of entries.
struct file_form {
    std::uint32_t kind;
    std::span<const char* const> columns;
    std::size_t needed;
};

constexpr file_form file_forms[] = {
    {kind::add_airline, named_columns, std::size(named_columns)},
    {kind::add_airport, named_columns, std::size(named_columns)},
    {kind::add_aircraft, aircraft_columns, needed_aircraft_columns},
};

/// Mistakes of one file, of which the first are kept.
struct bounded_mistakes {
    std::vector<mistake> kept = {};
    std::size_t left_out = 0;
    void add(unsigned line, std::string what)
    {
        if (kept.size() < max_told_mistakes) {
            kept.push_back({line, std::move(what)});
        } else {
            ++left_out;
        }
    }
};

/// Where each field of an entry stands in a row; none: the file does not have it.
using column_order = std::vector<std::optional<std::size_t>>;

std::size_t find_column(const csv_record& row, std::string_view name)
{
    const auto found = std::ranges::find_if(row.fields, [name](const std::string& field) {
        return upper_case(field) == upper_case(name);
    });
    return static_cast<std::size_t>(found - row.fields.begin());
}

/// Whether a row names the columns: one of its fields is the name of the entries' first.
bool is_naming(const csv_record& row, const file_form& form)
{
    return find_column(row, form.columns.front()) < row.fields.size();
}

/// The order that a row gives by names. An empty one, and mistakes noted, if a column is missing
/// that must be there.
column_order read_names(const csv_record& row, const file_form& form, bounded_mistakes& mistakes)
{
    column_order order;
    bool is_whole = true;
    for (const char* const name : form.columns) {
        const std::size_t column = find_column(row, name);
        if (column < row.fields.size()) {
            order.emplace_back(column);
        } else {
            if (order.size() < form.needed) {
                mistakes.add(row.line, std::string{"there is no column \""} + name + "\"");
                is_whole = false;
            }
            order.emplace_back();
        }
    }
    return is_whole ? order : column_order{};
}

column_order default_order(const file_form& form)
{
    column_order order;
    for (std::size_t i = 0; i < form.columns.size(); ++i)
        order.emplace_back(i);
    return order;
}

/// A value as an update carries it: in ISO-8859-1, in one line, without blanks around it.
std::string make_field(const std::string& value)
{
    std::string field = latin1_text(as_utf8(value));
    std::ranges::replace(field, '\n', ' ');
    const auto first = field.find_first_not_of(' ');
    if (first == std::string::npos)
        return {};
    return field.substr(first, std::min(field.find_last_not_of(' ') - first + 1, max_field_bytes));
}

/// Adds a row's entry. What is wrong with it; nothing if it is there.
std::string add_row(const csv_record& row, const column_order& order, const file_form& form,
                    reference_data& entries)
{
    std::string text;
    for (std::size_t i = 0; i < order.size(); ++i) {
        const bool is_given = order[i] && *order[i] < row.fields.size();
        const std::string field = is_given ? make_field(row.fields[*order[i]]) : std::string{};
        if (field.empty() && i < form.needed)
            return std::string{"there is no "} + form.columns[i];
        text += (i == 0 ? "" : "\t") + field;
    }
    if (!entries.add(form.kind, text))
        return "there are more entries than the server keeps";
    return {};
}

/// Whether the rows of a file without names have another number of values than there are columns.
bool is_misfit(const csv_record& row, const file_form& form, bool is_named)
{
    return !is_named && row.fields.size() != form.columns.size();
}

void read_rows(csv_reader& rows, const file_form& form, bounded_mistakes& mistakes,
               reference_data& entries)
{
    csv_record row;
    column_order order = default_order(form);
    bool is_first = true;
    bool is_named = false;
    while (rows.next(row) && !order.empty()) {
        std::string wrong = row.error;
        if (wrong.empty() && is_first && is_naming(row, form)) {
            order = read_names(row, form, mistakes);
            is_named = true;
        } else if (wrong.empty() && is_misfit(row, form, is_named)) {
            wrong = "there must be " + std::to_string(form.columns.size()) + " values, not " +
                    std::to_string(row.fields.size());
        } else if (wrong.empty()) {
            wrong = add_row(row, order, form, entries);
        }
        if (!wrong.empty())
            mistakes.add(row.line, std::move(wrong));
        is_first = false;
    }
}

void read_named_file(const std::string& path, std::uint32_t kind, reference_files_result& to)
{
    if (path.empty())
        return;
    const regular_file file = regular_file_open(path);
    if (!file.error.empty()) {
        to.complaints.push_back(file.error);
    } else if (static_cast<std::size_t>(file.status.st_size) > max_reference_file_bytes) {
        to.complaints.push_back(path + ": larger than " + std::to_string(max_reference_file_bytes) +
                                " bytes");
    } else {
        reference_file_read(file.stream.get(), path, kind, to);
    }
}

} // namespace

void reference_file_read(std::FILE* stream, const std::string& path, std::uint32_t kind,
                         reference_files_result& to)
{
    const auto* const form = std::ranges::find(file_forms, kind, &file_form::kind);
    bounded_mistakes mistakes;
    csv_reader rows{stream, max_csv_record_bytes};
    read_rows(rows, *form, mistakes, to.entries);
    if (std::ferror(stream) != 0)
        to.complaints.push_back(path + ": cannot be read to its end");
    std::ranges::move(mistake_lines(path, std::move(mistakes.kept), mistakes.left_out),
                      std::back_inserter(to.complaints));
}

reference_files_result reference_files_read(const reference_configuration& files)
{
    reference_files_result result{reference_data{max_file_reference_entries}, {}};
    try {
        read_named_file(files.airlines, kind::add_airline, result);
        read_named_file(files.airports, kind::add_airport, result);
        read_named_file(files.aircraft, kind::add_aircraft, result);
    } catch (const std::exception& failure) {
        result.complaints.push_back(std::string{"cannot read the reference files: "} +
                                    failure.what());
    }
    return result;
}

} // namespace tovrik
