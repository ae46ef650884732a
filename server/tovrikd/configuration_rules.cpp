// configuration_rules.cpp - see configuration_rules.hpp.
#include "server/tovrikd/configuration_rules.hpp"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace tovrik
{
namespace
{

constexpr const char* any_address = "0.0.0.0";

/// A socket that will listen, and where the configuration says so.
struct listener {
    bool is_udp;
    std::string bind;
    std::uint16_t port; ///< 0: none, or any free one
    std::string what;
    unsigned line;
};

/// The line of a key of a table, or that of the table if it is not there.
unsigned find_line(const toml_value& table, const char* key)
{
    const toml_entry* const entry = toml_entry_of(table, key);
    return entry == nullptr ? table.line : entry->line;
}

/// The tables that a key begins again and again; none if there are none.
std::span<const toml_value> find_tables(const toml_value& root, const char* key)
{
    const toml_entry* const entry = toml_entry_of(root, key);
    if (entry == nullptr)
        return {};
    return entry->value.items;
}

std::vector<listener> collect_listeners(const configuration& made, const toml_value& root)
{
    std::vector<listener> all = {
        {false, made.bind, made.port, "the server", find_line(root, "port")}};
    if (const toml_entry* const http = toml_entry_of(root, "http"))
        all.push_back(
            {false, made.http.bind, made.http.port, "[http]", find_line(http->value, "port")});
    const auto channels = find_tables(root, "channel");
    for (std::size_t i = 0; i < made.channels.size(); ++i)
        all.push_back({false, made.bind, made.channels[i].port,
                       "the channel \"" + made.channels[i].name + "\"",
                       find_line(channels[i], "port")});
    const auto inputs = find_tables(root, "input");
    for (std::size_t i = 0; i < made.inputs.size(); ++i) {
        const input_options& input = made.inputs[i];
        if (input.type == input_type::udp || input.type == input_type::tcp_listen)
            all.push_back({input.type == input_type::udp, input.bind, input.port,
                           "the input \"" + input.name + "\"", find_line(inputs[i], "port")});
    }
    return all;
}

bool is_same_place(const listener& one, const listener& other)
{
    return one.port != 0 && one.port == other.port && one.is_udp == other.is_udp &&
           (one.bind == other.bind || one.bind == any_address || other.bind == any_address);
}

/// Notes every listener whose port one before it has.
void check_listeners(std::vector<listener> all, reading& in)
{
    std::ranges::stable_sort(all, {}, &listener::line);
    for (auto later = all.begin(); later != all.end(); ++later) {
        const auto earlier = std::find_if(
            all.begin(), later, [&](const listener& one) { return is_same_place(one, *later); });
        if (earlier != later)
            in.mistakes.push_back({later->line, "port " + std::to_string(later->port) +
                                                    " is that of " + earlier->what + " already"});
    }
}

/// Notes every table whose record has the name of one before it.
template <typename record>
void check_names(const std::vector<record>& records, const toml_value& root, const char* key,
                 reading& in)
{
    const auto tables = find_tables(root, key);
    for (std::size_t i = 0; i < records.size(); ++i) {
        const auto end = records.begin() + static_cast<std::ptrdiff_t>(i);
        const std::string& name = records[i].name;
        if (!name.empty() && std::find_if(records.begin(), end, [&](const record& one) {
                                 return one.name == name;
                             }) != end)
            in.mistakes.push_back(
                {find_line(tables[i], "name"),
                 std::string{"another "} + key + " has the name \"" + name + "\" already"});
    }
}

/// Notes that the mailing service has no sender, at the nearest line that speaks of either.
void check_mail(const configuration& made, const toml_value& root, reading& in)
{
    const toml_entry* const mail = toml_entry_of(root, "mail");
    const bool has_sender = mail != nullptr && toml_entry_of(mail->value, "from") != nullptr;
    if (!made.services.mailing || has_sender)
        return;
    const toml_entry* const services = toml_entry_of(root, "services");
    unsigned line = 1;
    if (mail != nullptr) {
        line = mail->line;
    } else if (services != nullptr) {
        line = find_line(services->value, "mailing");
    }
    in.mistakes.push_back({line, "mailing needs \"from\" in [mail], or \"mailing = false\" in "
                                 "[services]"});
}

} // namespace

void check_configuration_rules(const configuration& made, const toml_value& root, reading& in)
{
    check_listeners(collect_listeners(made, root), in);
    check_names(made.inputs, root, "input", in);
    check_names(made.channels, root, "channel", in);
    check_mail(made, root, in);
}

} // namespace tovrik
