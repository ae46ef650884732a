// input_table.cpp - see input_table.hpp.
#include "server/tovrikd/input_table.hpp"

#include "server/messages/carried_text.hpp"
#include "server/tovrikd/configuration_limits.hpp"

#include <algorithm>
#include <iterator>
#include <optional>

namespace tovrik
{
namespace
{

constexpr std::uint16_t default_mqtt_port = 1883;

/// Types as bits, for tables.
constexpr unsigned bit_of(input_type type)
{
    return 1U << static_cast<unsigned>(type);
}

constexpr unsigned udp = bit_of(input_type::udp);
constexpr unsigned tcp_listen = bit_of(input_type::tcp_listen);
constexpr unsigned tcp_connect = bit_of(input_type::tcp_connect);
constexpr unsigned mqtt = bit_of(input_type::mqtt);
constexpr unsigned zmq = bit_of(input_type::zmq);
constexpr unsigned pipe = bit_of(input_type::pipe);
constexpr unsigned listening = udp | tcp_listen;
constexpr unsigned connecting = tcp_connect | mqtt;
constexpr unsigned all_types = listening | connecting | zmq | pipe;

constexpr const char* type_names[] = {"udp", "tcp-listen", "tcp-connect", "mqtt", "zmq", "pipe"};

constexpr value_bounds shown_name = {1, max_name_bytes};
constexpr value_bounds host_text = {1, max_host_bytes};
constexpr value_bounds needed_text = {1, max_other_bytes};
constexpr value_bounds any_text = {0, max_other_bytes};

/// A key, the types of input that know it, and those that need it. A key may have several rows.
struct input_key {
    key_rule<input_options> rule;
    unsigned known;
    unsigned needed = 0;
};

/// What is read first, see find_type.
void read_type(const given_value&, value_bounds, input_options&) {}

constexpr input_key input_keys[] = {
    {{"type", read_type}, all_types, all_types},
    {{"name", read_field<&input_options::name, read_shown_text>, shown_name}, all_types},
    {{"drop_empty_squitters", read_field<&input_options::drop_empty_squitters, read_truth>},
     all_types},
    {{"bind", read_field<&input_options::bind, read_address>, host_text}, listening},
    {{"port", read_field<&input_options::port, read_number<std::uint16_t>>, {0, max_port}},
     listening,
     listening},
    {{"port", read_field<&input_options::port, read_number<std::uint16_t>>, {1, max_port}},
     connecting,
     tcp_connect},
    {{"allow", read_field<&input_options::allow, read_ranges>, needed_text}, listening},
    {{"host", read_field<&input_options::host, read_host>, host_text}, connecting, connecting},
    {{"topic", read_field<&input_options::topic, read_plain_text>, needed_text}, mqtt, mqtt},
    {{"topic", read_field<&input_options::topic, read_plain_text>, any_text}, zmq},
    {{"user", read_field<&input_options::user, read_plain_text>, needed_text}, mqtt},
    {{"password_file", read_field<&input_options::password_file, read_path>, needed_text}, mqtt},
    {{"endpoint", read_field<&input_options::endpoint, read_endpoint>, needed_text}, zmq, zmq},
    {{"path", read_field<&input_options::path, read_pipe_path>, needed_text}, pipe, pipe},
};

std::vector<std::string_view> collect_names()
{
    std::vector<std::string_view> names;
    for (const input_key& key : input_keys)
        names.emplace_back(key.rule.name);
    return names;
}

/// The row of a key for one of the types; null if there is none.
const input_key* find_key(std::string_view name, unsigned types)
{
    const auto* const found = std::ranges::find_if(input_keys, [&](const input_key& key) {
        return key.rule.name == name && (key.known & types) != 0;
    });
    return found == std::end(input_keys) ? nullptr : found;
}

/// The type that a table names. None, and a mistake noted unless the key is missing, if it is
/// wrong.
std::optional<input_type> find_type(const toml_value& table, reading& in)
{
    const toml_entry* const entry = toml_entry_of(table, "type");
    if (entry == nullptr)
        return std::nullopt;
    const auto* const found = std::ranges::find(type_names, std::string_view{entry->value.text});
    if (entry->value.type == toml_type::text && found != std::end(type_names))
        return static_cast<input_type>(found - std::begin(type_names));
    given_value{entry->key, entry->value, in}.refuse(
        "must be \"udp\", \"tcp-listen\", \"tcp-connect\", \"mqtt\", \"zmq\" or \"pipe\"");
    return std::nullopt;
}

void check_needed_keys(const toml_value& table, input_type type, reading& in)
{
    for (const input_key& key : input_keys) {
        if ((key.needed & bit_of(type)) != 0 && toml_entry_of(table, key.rule.name) == nullptr)
            in.mistakes.push_back({table.line, "an input of the type \"" + input_type_name(type) +
                                                   "\" needs \"" + key.rule.name + "\""});
    }
}

void read_entry(const toml_entry& entry, std::optional<input_type> type, reading& in,
                input_options& to)
{
    const input_key* const key = find_key(entry.key, type ? bit_of(*type) : all_types);
    if (key != nullptr) {
        key->rule.read({entry.key, entry.value, in}, key->rule.bounds, to);
    } else if (find_key(entry.key, all_types) == nullptr) {
        refuse_key(entry, collect_names(), in);
    } else {
        in.mistakes.push_back({entry.line, "\"" + entry.key +
                                               "\" does not belong to an input of the type \"" +
                                               input_type_name(*type) + "\""});
    }
}

/// What an input is called that has no name: its type, and where its messages come from.
std::string make_name(const input_options& input)
{
    const std::string port = std::to_string(input.port);
    const std::string places[] = {
        port,           port,       input.host + ":" + port, input.host + " " + input.topic,
        input.endpoint, input.path,
    };
    const std::string place = latin1_text(places[static_cast<std::size_t>(input.type)]);
    return (input_type_name(input.type) + " " + place).substr(0, max_name_bytes);
}

} // namespace

std::string input_type_name(input_type type)
{
    return type_names[static_cast<std::size_t>(type)];
}

input_options input_of(const toml_value& table, reading& in)
{
    const auto type = find_type(table, in);
    input_options input;
    if (type) {
        input.type = *type;
        check_needed_keys(table, *type, in);
    } else if (toml_entry_of(table, "type") == nullptr) {
        in.mistakes.push_back({table.line, "this input needs \"type\""});
    }
    if (type == input_type::mqtt)
        input.port = default_mqtt_port;
    for (const toml_entry& entry : table.entries)
        read_entry(entry, type, in, input);
    if (input.name.empty())
        input.name = make_name(input);
    return input;
}

} // namespace tovrik
