// configuration_values.hpp - reads single values of the configuration, and tables of them.
//
// A table is described by an array of key_rules: the key, the function that reads its value, and
// the bounds. Every mistake is noted with its line, and reading goes on.
#pragma once

#include "server/inputs/input_options.hpp"
#include "server/messages/transmission.hpp"
#include "server/tovrikd/file_mistakes.hpp"
#include "server/tovrikd/toml_document.hpp"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tovrik
{

/// What is known while a configuration is read.
struct reading {
    std::string folder; ///< of the configuration's file, with a slash; empty: the current one
    std::vector<mistake> mistakes = {};
};

/// A key and the value that was given to it.
struct given_value {
    const std::string& key;
    const toml_value& value;
    reading& in;
    /// Notes that the value is wrong: `what` follows the key and a blank.
    void refuse(const std::string& what) const;
};

/// Of a number: its range. Of a text: its length in bytes. Of a list of texts: the length of each.
struct value_bounds {
    std::int64_t min = 0;
    std::int64_t max = 0;
};

/// Each reads a value of one kind into `to`, or notes what is wrong and leaves `to` as it is.
/// A text for clients is kept in ISO-8859-1, any other as it was written. A path that is relative
/// counts from the folder of the configuration. A minute is that of a day, written as HH:MM.
void read_shown_text(const given_value& given, value_bounds bounds, std::string& to);
void read_plain_text(const given_value& given, value_bounds bounds, std::string& to);
void read_host(const given_value& given, value_bounds bounds, std::string& to);
void read_mail_address(const given_value& given, value_bounds bounds, std::string& to);
void read_endpoint(const given_value& given, value_bounds bounds, std::string& to);
void read_path(const given_value& given, value_bounds bounds, std::string& to);
void read_pipe_path(const given_value& given, value_bounds bounds, std::string& to);
void read_address(const given_value& given, value_bounds bounds, std::string& to);
void read_truth(const given_value& given, value_bounds bounds, bool& to);
void read_minute(const given_value& given, value_bounds bounds, unsigned& to);
void read_ranges(const given_value& given, value_bounds bounds, std::vector<address_range>& to);
void read_links(const given_value& given, value_bounds bounds, std::vector<message_link>& to);
void read_mail_addresses(const given_value& given, value_bounds bounds,
                         std::vector<std::string>& to);
void read_filter_texts(const given_value& given, value_bounds bounds, std::vector<std::string>& to);

/// Reads a number within the bounds into `to`. False, and a mistake noted, if it is none.
bool read_whole_number(const given_value& given, value_bounds bounds, std::int64_t& to);

template <typename number>
void read_number(const given_value& given, value_bounds bounds, number& to)
{
    std::int64_t value = 0;
    if (read_whole_number(given, bounds, value))
        to = static_cast<number>(value);
}

/// What may be said in a table about a record.
template <typename record> struct key_rule {
    const char* name;
    void (*read)(const given_value&, value_bounds, record&);
    value_bounds bounds = {};
};

/// Reads a value into a field of a record: what a key_rule holds.
template <auto field, auto read, typename record>
void read_field(const given_value& given, value_bounds bounds, record& to)
{
    read(given, bounds, to.*field);
}

/// Notes a key that no rule knows, with the one that was meant if that is plain.
void refuse_key(const toml_entry& entry, const std::vector<std::string_view>& known, reading& in);

/// Whether a value is a table; a mistake is noted otherwise.
bool check_table(const given_value& given);

/// The tables that a key begins as often as they come, [[key]]; at most `most` of them. Anything
/// else is a mistake, and gives none.
std::span<const toml_value> tables_of(const given_value& given, std::int64_t most);

template <typename record>
std::vector<std::string_view> names_of(std::span<const key_rule<record>> rules)
{
    std::vector<std::string_view> names;
    for (const auto& rule : rules)
        names.push_back(rule.name);
    return names;
}

/// Reads the entries of a table into a record, by rules.
template <typename record>
void read_entries(const toml_value& table,
                  std::type_identity_t<std::span<const key_rule<record>>> rules, reading& in,
                  record& to)
{
    for (const toml_entry& entry : table.entries) {
        const auto rule = std::ranges::find(
            rules, entry.key, [](const auto& one) { return std::string_view{one.name}; });
        if (rule == rules.end()) {
            refuse_key(entry, names_of(rules), in);
        } else {
            rule->read({entry.key, entry.value, in}, rule->bounds, to);
        }
    }
}

/// Reads a table into a record, by an array of rules.
template <const auto& rules, typename record>
void read_table(const given_value& given, value_bounds, record& to)
{
    if (check_table(given))
        read_entries(given.value, rules, given.in, to);
}

} // namespace tovrik
