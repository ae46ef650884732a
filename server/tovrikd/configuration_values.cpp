// configuration_values.cpp - see configuration_values.hpp.
#include "server/tovrikd/configuration_values.hpp"

#include "server/base/mail_address.hpp"
#include "server/base/text_fields.hpp"
#include "server/messages/carried_text.hpp"
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/likely_word.hpp"
#include "server/tovrikd/regular_file.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <iterator>
#include <optional>
#include <system_error>

namespace tovrik
{
namespace
{

constexpr unsigned address_bits = 32;
constexpr unsigned minutes_per_hour = 60;

struct link_name {
    const char* name;
    message_link link;
};

constexpr link_name link_names[] = {
    {"vhf", message_link::vhf},           {"vdl2", message_link::vdl2},
    {"hfdl", message_link::hfdl},         {"iridium", message_link::iridium},
    {"inmarsat", message_link::inmarsat},
};

/// Whether UTF-8 holds a control character: of ASCII, or of the range after it.
bool has_control(std::string_view utf8)
{
    unsigned char before = 0;
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F || (before == 0xC2 && byte < 0xA0))
            return true;
        before = byte;
    }
    return false;
}

/// What is wrong with the letters of a text; nothing if all is well.
std::string check_text(std::string_view text, value_bounds bounds)
{
    if (text.find('\t') != std::string_view::npos)
        return "must not have a tab";
    if (has_control(text))
        return "must not have a line end or another control character";
    if (text.empty() && bounds.min > 0)
        return "must not be empty";
    if (text.size() > static_cast<std::size_t>(bounds.max))
        return "must have at most " + std::to_string(bounds.max) + " characters";
    return {};
}

/// The text of a value, in ISO-8859-1 or as it is. None, and a mistake noted, if it is wrong.
std::optional<std::string> take_text(const given_value& given, value_bounds bounds, bool is_shown)
{
    if (given.value.type != toml_type::text) {
        given.refuse("must be a text, in quotes");
        return std::nullopt;
    }
    std::string text = is_shown && !has_control(given.value.text) ? latin1_text(given.value.text)
                                                                  : given.value.text;
    if (const std::string wrong = check_text(text, bounds); !wrong.empty()) {
        given.refuse(wrong);
        return std::nullopt;
    }
    return text;
}

/// Reads a text that must pass a question; `what` says what it must be.
void read_checked_text(const given_value& given, value_bounds bounds,
                       bool (*is_right)(std::string_view), const char* what, std::string& to)
{
    auto text = take_text(given, bounds, false);
    if (!text)
        return;
    if (is_right(*text)) {
        to = std::move(*text);
    } else {
        given.refuse(what);
    }
}

bool is_host(std::string_view text)
{
    return text.find_first_of(" /:") == std::string_view::npos;
}

bool is_endpoint(std::string_view text)
{
    constexpr std::string_view beginnings[] = {"tcp://", "ipc://"};
    return std::ranges::any_of(beginnings, [text](std::string_view beginning) {
        return text.starts_with(beginning) && text.size() > beginning.size();
    });
}

std::optional<std::uint32_t> parse_address(const std::string& text)
{
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1)
        return std::nullopt;
    return ntohl(address.s_addr);
}

bool is_address(std::string_view text)
{
    return parse_address(std::string{text}).has_value();
}

/// A number that is written with decimal digits and nothing else, up to `most`.
std::optional<unsigned> parse_digits(std::string_view text, unsigned most)
{
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || number > most)
        return std::nullopt;
    return number;
}

/// A range such as 192.168.1.0/24, or a single address.
std::optional<address_range> parse_range(const std::string& text)
{
    const auto slash = text.find('/');
    const auto address = parse_address(text.substr(0, slash));
    const auto bits = slash == std::string::npos
                          ? address_bits
                          : parse_digits(std::string_view{text}.substr(slash + 1), address_bits);
    if (!address || !bits)
        return std::nullopt;
    const std::uint32_t mask = *bits == 0 ? 0 : ~std::uint32_t{0} << (address_bits - *bits);
    return address_range{*address & mask, mask};
}

std::optional<unsigned> parse_minute(std::string_view text)
{
    constexpr std::size_t length = 5;
    if (text.size() != length || text[2] != ':')
        return std::nullopt;
    const auto hour = parse_digits(text.substr(0, 2), 23);
    const auto minute = parse_digits(text.substr(3), minutes_per_hour - 1);
    if (!hour || !minute)
        return std::nullopt;
    return *hour * minutes_per_hour + *minute;
}

std::optional<message_link> parse_link(const std::string& text)
{
    const auto* const found =
        std::ranges::find(link_names, std::string_view{text},
                          [](const link_name& one) { return std::string_view{one.name}; });
    return found == std::end(link_names) ? std::nullopt : std::optional{found->link};
}

/// Reads a list of texts, each by `parse`; `what` follows one that it does not know.
template <typename made, typename Parse>
void read_list(const given_value& given, value_bounds bounds, Parse parse, const char* what,
               std::vector<made>& to)
{
    if (given.value.type != toml_type::list) {
        given.refuse("must be a list of texts, in square brackets");
        return;
    }
    if (given.value.items.size() > static_cast<std::size_t>(max_list_values)) {
        given.refuse("must have at most " + std::to_string(max_list_values) + " texts");
        return;
    }
    std::vector<made> list;
    for (const toml_value& item : given.value.items) {
        const given_value one{given.key, item, given.in};
        const auto text = take_text(one, bounds, true);
        if (!text)
            continue;
        if (auto value = parse(*text)) {
            list.push_back(std::move(*value));
        } else {
            one.refuse("has \"" + item.text + "\", which is " + what);
        }
    }
    to = std::move(list);
}

} // namespace

void given_value::refuse(const std::string& what) const
{
    in.mistakes.push_back({value.line, key + " " + what});
}

void read_shown_text(const given_value& given, value_bounds bounds, std::string& to)
{
    if (auto text = take_text(given, bounds, true))
        to = std::move(*text);
}

void read_plain_text(const given_value& given, value_bounds bounds, std::string& to)
{
    if (auto text = take_text(given, bounds, false))
        to = std::move(*text);
}

void read_host(const given_value& given, value_bounds bounds, std::string& to)
{
    read_checked_text(given, bounds, is_host, "must be the name of a host or an address", to);
}

void read_mail_address(const given_value& given, value_bounds bounds, std::string& to)
{
    read_checked_text(given, bounds, is_mail_address,
                      "must be an address of mail, such as tovrikd@acars.example", to);
}

void read_endpoint(const given_value& given, value_bounds bounds, std::string& to)
{
    read_checked_text(given, bounds, is_endpoint,
                      "must be an endpoint, such as tcp://127.0.0.1:5555", to);
}

void read_path(const given_value& given, value_bounds bounds, std::string& to)
{
    if (const auto text = take_text(given, bounds, false))
        to = path_in_folder(given.in.folder, *text);
}

void read_pipe_path(const given_value& given, value_bounds bounds, std::string& to)
{
    if (const auto text = take_text(given, bounds, false))
        to = *text == "-" ? *text : path_in_folder(given.in.folder, *text);
}

void read_address(const given_value& given, value_bounds bounds, std::string& to)
{
    read_checked_text(given, bounds, is_address, "must be an IPv4 address, such as 127.0.0.1", to);
}

void read_truth(const given_value& given, value_bounds, bool& to)
{
    if (given.value.type == toml_type::truth) {
        to = given.value.truth;
    } else {
        given.refuse("must be true or false");
    }
}

void read_minute(const given_value& given, value_bounds bounds, unsigned& to)
{
    const auto text = take_text(given, bounds, false);
    if (!text)
        return;
    if (const auto minute = parse_minute(*text)) {
        to = *minute;
    } else {
        given.refuse("must be a time of the day as HH:MM, such as \"00:10\"");
    }
}

void read_ranges(const given_value& given, value_bounds bounds, std::vector<address_range>& to)
{
    read_list(given, bounds, parse_range, "no range of IPv4 addresses, such as 192.168.1.0/24", to);
}

void read_links(const given_value& given, value_bounds bounds, std::vector<message_link>& to)
{
    read_list(given, bounds, parse_link, "none of vhf, vdl2, hfdl, iridium and inmarsat", to);
}

void read_mail_addresses(const given_value& given, value_bounds bounds,
                         std::vector<std::string>& to)
{
    read_list(
        given, bounds,
        [](const std::string& text) {
            return is_mail_address(text) ? std::optional{text} : std::nullopt;
        },
        "no address of mail, such as me@example.org", to);
}

void read_filter_texts(const given_value& given, value_bounds bounds, std::vector<std::string>& to)
{
    read_list(
        given, bounds, [](const std::string& text) { return std::optional{text}; }, "", to);
}

bool read_whole_number(const given_value& given, value_bounds bounds, std::int64_t& to)
{
    if (given.value.type != toml_type::whole_number) {
        given.refuse("must be a whole number");
        return false;
    }
    if (given.value.number < bounds.min || given.value.number > bounds.max) {
        given.refuse("must be from " + std::to_string(bounds.min) + " to " +
                     std::to_string(bounds.max));
        return false;
    }
    to = given.value.number;
    return true;
}

void refuse_key(const toml_entry& entry, const std::vector<std::string_view>& known, reading& in)
{
    const bool is_table = entry.value.type == toml_type::table;
    const std::string begin = is_table ? "[" : "\"";
    const std::string end = is_table ? "]" : "\"";
    std::string what = is_table ? "there is no table " : "there is no key ";
    what += begin + entry.key + end;
    if (const std::string_view meant = likely_word(entry.key, known); !meant.empty())
        what.append("; did you mean ").append(begin).append(meant).append(end).append("?");
    in.mistakes.push_back({entry.line, std::move(what)});
}

bool check_table(const given_value& given)
{
    if (given.value.type == toml_type::table)
        return true;
    given.refuse("must be a table, [" + given.key + "]");
    return false;
}

std::span<const toml_value> tables_of(const given_value& given, std::int64_t most)
{
    const auto& items = given.value.items;
    const bool is_list = given.value.type == toml_type::list &&
                         std::ranges::all_of(items, [](const toml_value& item) {
                             return item.type == toml_type::table;
                         });
    if (!is_list) {
        given.refuse("must be tables, each begun by [[" + given.key + "]]");
        return {};
    }
    if (items.size() > static_cast<std::size_t>(most)) {
        given.refuse("tables are too many; there may be " + std::to_string(most));
        return {};
    }
    return items;
}

} // namespace tovrik
