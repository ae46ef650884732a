// configuration_tables.cpp - see configuration_tables.hpp.
#include "server/tovrikd/configuration_tables.hpp"

#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/input_table.hpp"

#include <initializer_list>

namespace tovrik
{
namespace
{

constexpr value_bounds any_value = {};
constexpr value_bounds shown_name = {1, max_name_bytes};
constexpr value_bounds shown_text = {0, max_shown_bytes};
constexpr value_bounds needed_text = {1, max_other_bytes};
constexpr value_bounds host_text = {1, max_host_bytes};
constexpr value_bounds filter_text = {1, max_filter_bytes};
constexpr value_bounds any_port = {0, max_port};
constexpr value_bounds real_port = {1, max_port};

constexpr key_rule<http_configuration> http_keys[] = {
    {"bind", read_field<&http_configuration::bind, read_address>, host_text},
    {"port", read_field<&http_configuration::port, read_number<std::uint16_t>>, any_port},
    {"public_name", read_field<&http_configuration::public_name, read_host>, host_text},
};

constexpr key_rule<access_configuration> access_keys[] = {
    {"identify", read_field<&access_configuration::identify, read_truth>, any_value},
    {"passwords_file", read_field<&access_configuration::passwords_file, read_path>, needed_text},
    {"clients_per_address",
     read_field<&access_configuration::clients_per_address, read_number<unsigned>>,
     {0, max_client_count}},
    {"tries_per_minute",
     read_field<&access_configuration::tries_per_minute, read_number<unsigned>>,
     {1, max_tries_per_minute}},
    {"idle_seconds",
     read_field<&access_configuration::idle_seconds, read_number<unsigned>>,
     {1, max_idle_seconds}},
};

constexpr key_rule<services_configuration> services_keys[] = {
    {"updates", read_field<&services_configuration::updates, read_truth>, any_value},
    {"mailing", read_field<&services_configuration::mailing, read_truth>, any_value},
    {"reports", read_field<&services_configuration::reports, read_truth>, any_value},
    {"pagers", read_field<&services_configuration::pagers, read_truth>, any_value},
};

constexpr key_rule<mail_configuration> mail_keys[] = {
    {"command", read_field<&mail_configuration::command, read_plain_text>, needed_text},
    {"from", read_field<&mail_configuration::from, read_mail_address>, host_text},
    {"at", read_field<&mail_configuration::at_minute, read_minute>, needed_text},
    {"never_to", read_field<&mail_configuration::never_to, read_mail_addresses>, host_text},
};

constexpr key_rule<configuration> archive_keys[] = {
    {"days",
     read_field<&configuration::archive_days, read_number<unsigned>>,
     {1, max_archive_days}},
};

constexpr key_rule<reference_configuration> reference_keys[] = {
    {"airlines", read_field<&reference_configuration::airlines, read_path>, needed_text},
    {"aircraft", read_field<&reference_configuration::aircraft, read_path>, needed_text},
    {"airports", read_field<&reference_configuration::airports, read_path>, needed_text},
};

/// What a channel's filter is made of. The keys stand in the channel's own table.
template <auto field, auto read>
void read_of_filter(const given_value& given, value_bounds bounds, channel_configuration& to)
{
    read(given, bounds, to.filter.*field);
}

constexpr key_rule<channel_configuration> channel_keys[] = {
    {"name", read_field<&channel_configuration::name, read_shown_text>, shown_name},
    {"port", read_field<&channel_configuration::port, read_number<std::uint16_t>>, any_port},
    {"kinds", read_of_filter<&message_filter::links, read_links>, filter_text},
    {"stations", read_of_filter<&message_filter::stations, read_filter_texts>, filter_text},
    {"labels", read_of_filter<&message_filter::labels, read_filter_texts>, filter_text},
    {"airlines", read_of_filter<&message_filter::airlines, read_filter_texts>, filter_text},
    {"registrations", read_of_filter<&message_filter::registrations, read_filter_texts>,
     filter_text},
    {"no_empty", read_of_filter<&message_filter::no_empty, read_truth>, any_value},
};

constexpr key_rule<peer_configuration> peer_keys[] = {
    {"host", read_field<&peer_configuration::host, read_host>, host_text},
    {"port", read_field<&peer_configuration::port, read_number<std::uint16_t>>, real_port},
    {"name", read_field<&peer_configuration::name, read_shown_text>, {0, max_name_bytes}},
    {"location", read_field<&peer_configuration::location, read_shown_text>, shown_text},
    {"description", read_field<&peer_configuration::description, read_shown_text>, shown_text},
};

/// Notes the keys that a table lacks.
void check_needed(const char* table, const toml_value& value,
                  std::initializer_list<const char*> keys, reading& in)
{
    for (const char* const key : keys) {
        if (toml_entry_of(value, key) == nullptr)
            in.mistakes.push_back(
                {value.line, std::string{"this "} + table + " needs \"" + key + "\""});
    }
}

void read_inputs(const given_value& given, value_bounds bounds, std::vector<input_options>& to)
{
    for (const toml_value& table : tables_of(given, bounds.max))
        to.push_back(input_of(table, given.in));
}

void read_channels(const given_value& given, value_bounds bounds,
                   std::vector<channel_configuration>& to)
{
    for (const toml_value& table : tables_of(given, bounds.max)) {
        check_needed("channel", table, {"name", "port"}, given.in);
        read_entries(table, channel_keys, given.in, to.emplace_back());
    }
}

void read_peers(const given_value& given, value_bounds bounds, std::vector<peer_configuration>& to)
{
    for (const toml_value& table : tables_of(given, bounds.max)) {
        check_needed("peer", table, {"host"}, given.in);
        read_entries(table, peer_keys, given.in, to.emplace_back());
    }
}

constexpr key_rule<configuration> root_keys[] = {
    {"name", read_field<&configuration::name, read_shown_text>, shown_name},
    {"location", read_field<&configuration::location, read_shown_text>, shown_text},
    {"description", read_field<&configuration::description, read_shown_text>, shown_text},
    {"bind", read_field<&configuration::bind, read_address>, host_text},
    {"port", read_field<&configuration::port, read_number<std::uint16_t>>, any_port},
    {"state_directory", read_field<&configuration::state_directory, read_path>, needed_text},
    {"max_clients",
     read_field<&configuration::max_clients, read_number<std::size_t>>,
     {1, max_client_count}},
    {"show_reception", read_field<&configuration::show_reception, read_truth>, any_value},
    {"pager_hits_as_errors", read_field<&configuration::pager_hits_as_errors, read_truth>,
     any_value},
    {"http", read_field<&configuration::http, read_table<http_keys, http_configuration>>,
     any_value},
    {"access", read_field<&configuration::access, read_table<access_keys, access_configuration>>,
     any_value},
    {"services",
     read_field<&configuration::services, read_table<services_keys, services_configuration>>,
     any_value},
    {"mail", read_field<&configuration::mail, read_table<mail_keys, mail_configuration>>,
     any_value},
    {"archive", read_table<archive_keys, configuration>, any_value},
    {"reference",
     read_field<&configuration::reference, read_table<reference_keys, reference_configuration>>,
     any_value},
    {"input", read_field<&configuration::inputs, read_inputs>, {0, max_inputs}},
    {"channel", read_field<&configuration::channels, read_channels>, {0, max_channels}},
    {"peer", read_field<&configuration::peers, read_peers>, {0, max_peers}},
};

} // namespace

configuration configuration_of(const toml_value& root, reading& in)
{
    configuration made;
    read_entries(root, root_keys, in, made);
    return made;
}

} // namespace tovrik
