// config_model.cpp - see config_model.hpp.
#include "models/config_model.hpp"

#include "models/xml_model.hpp"

#include <algorithm>
#include <cstdlib>

namespace
{

const struct {
    const char* key;
    unsigned bit;
    bool client_settings::*written;
} switches[] = {
    {"ACARSLog", 0x01, &client_settings::acars_log},
    {"ContactInfo", 0x02, &client_settings::contact_info},
    {"SavePasswords", 0x08, &client_settings::save_passwords},
    {"FlightStats", 0x10, &client_settings::flight_stats},
    {"SaveToOne", 0x20, &client_settings::save_to_one},
    {"NoUplinks", 0x40, &client_settings::no_uplinks},
    {"FetchOnStart", 0x80, &client_settings::fetch_on_start},
    {"SaveOnExit", 0x04, &client_settings::save_on_exit},
};

constexpr unsigned save_passwords = 0x08;
constexpr long usual_port = 2202;

bool is_server_block(const std::string& name)
{
    return name.starts_with("Server") && name.size() > 6 && name[6] >= '0' && name[6] <= '9';
}

/// A number beyond 32 bits is taken for the nearest one within.
long read_number(const std::string& text)
{
    return static_cast<long>(
        std::clamp(std::strtoll(text.c_str(), nullptr, 10), -2'147'483'648LL, 2'147'483'647LL));
}

std::string blank_brackets(const std::optional<std::string>& text)
{
    std::string blanked = text.value_or("");
    std::replace(blanked.begin(), blanked.end(), '<', ' ');
    std::replace(blanked.begin(), blanked.end(), '>', ' ');
    return blanked;
}

/// A text after its way through the file; an empty one is none.
std::optional<std::string> keep_text(const std::optional<std::string>& text)
{
    const std::string kept = blank_brackets(text).substr(0, xml_model_text_bytes);
    return kept.empty() ? std::nullopt : std::optional{kept};
}

} // namespace

void config_model_add(config_model& config, const server_model& server)
{
    const auto is_before = [](const server_model& a, const server_model& b) {
        return a.name != b.name ? a.name > b.name : a.port < b.port;
    };
    for (const server_model& known : config.servers) {
        if (known.name == server.name && known.port == server.port)
            return;
    }
    config.servers.push_back(server);
    std::sort(config.servers.begin(), config.servers.end(), is_before);
}

void config_model_load(config_model& config, const std::string& file)
{
    const xml_model document = xml_model_read(file).document;
    for (const xml_model_node& node : document) {
        if (!node.name || !is_server_block(*node.name))
            continue;
        const auto value_of = [&](const char* element) {
            return xml_model_at(document, "clientconf/" + *node.name + "/" + element);
        };
        const std::optional<std::string> port = value_of("ServerPort");
        if (value_of("ServerName"))
            config_model_add(config, {.name = *value_of("ServerName"),
                                      .port = port ? read_number(*port) : usual_port,
                                      .alias = value_of("ServerAlias"),
                                      .location = value_of("Location"),
                                      .info = value_of("Info"),
                                      .password = value_of("Password"),
                                      .subcode = value_of("SubCode"),
                                      .email = value_of("UseEMail")});
    }
    for (const auto& row : switches) {
        const auto value = xml_model_at(document, std::string{"clientconf/"} + row.key);
        if (value && read_number(*value) != 0)
            config.flags |= row.bit;
    }
    if (const auto folder = xml_model_at(document, "clientconf/LogFilePath"))
        config.log_folder = folder;
    if (const auto folder = xml_model_at(document, "clientconf/ReportPath"))
        config.report_folder = folder;
}

client_settings config_model_saved(const config_model& config)
{
    client_settings saved;
    for (const auto& row : switches)
        saved.*row.written = (config.flags & row.bit) != 0;
    saved.log_folder = blank_brackets(config.log_folder.value_or("./"));
    saved.report_folder = blank_brackets(config.report_folder.value_or("./"));
    for (const server_model& server : config.servers) {
        const bool has_password = (config.flags & save_passwords) != 0;
        const long port = server.port != 0 ? server.port : usual_port;
        saved.servers.push_back({.name = blank_brackets(server.name),
                                 .port = std::to_string(port),
                                 .alias = blank_brackets(server.alias),
                                 .location = blank_brackets(server.location),
                                 .info = blank_brackets(server.info),
                                 .password = has_password ? blank_brackets(server.password) : "",
                                 .subcode = blank_brackets(server.subcode),
                                 .email = blank_brackets(server.email)});
    }
    return saved;
}

config_model config_model_reloaded(const config_model& config)
{
    config_model kept{.flags = config.flags,
                      .log_folder = keep_text(config.log_folder.value_or("./")),
                      .report_folder = keep_text(config.report_folder.value_or("./"))};
    for (const server_model& server : config.servers) {
        const bool has_password = (config.flags & save_passwords) != 0;
        if (const auto name = keep_text(server.name))
            config_model_add(kept,
                             {.name = *name,
                              .port = server.port != 0 ? server.port : usual_port,
                              .alias = keep_text(server.alias),
                              .location = keep_text(server.location),
                              .info = keep_text(server.info),
                              .password = keep_text(has_password ? server.password : std::nullopt),
                              .subcode = keep_text(server.subcode),
                              .email = keep_text(server.email)});
    }
    return kept;
}
