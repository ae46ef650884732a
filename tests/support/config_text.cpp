// config_text.cpp - configuration files for the program under test.
#include "support/config_text.hpp"

namespace
{

std::string make_element(const std::string& indent, const std::string& name,
                         const std::string& value)
{
    return indent + '<' + name + '>' + value + "</" + name + ">\n";
}

std::string make_server_block(const server_settings& server, std::size_t number)
{
    const std::string name = "Server" + std::to_string(number);
    const std::string indent(8, ' ');
    return "    <" + name + ">\n" + make_element(indent, "ServerName", server.name) +
           make_element(indent, "ServerPort", server.port) +
           make_element(indent, "ServerAlias", server.alias) +
           make_element(indent, "Location", server.location) +
           make_element(indent, "Info", server.info) +
           make_element(indent, "Password", server.password) +
           make_element(indent, "SubCode", server.subcode) +
           make_element(indent, "UseEMail", server.email) + "    </" + name + ">\n";
}

} // namespace

std::string config_text(const client_settings& settings)
{
    const std::string indent(4, ' ');
    const auto flag = [&indent](const char* name, bool on) {
        return make_element(indent, name, on ? "1" : "0");
    };
    std::string text = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                       "<clientconf version=\"1.02\">\n";
    text += flag("ACARSLog", settings.acars_log);
    text += flag("ContactInfo", settings.contact_info);
    text += flag("SavePasswords", settings.save_passwords);
    text += flag("FlightStats", settings.flight_stats);
    text += flag("SaveToOne", settings.save_to_one);
    text += flag("NoUplinks", settings.no_uplinks);
    text += flag("FetchOnStart", settings.fetch_on_start);
    text += flag("SaveOnExit", settings.save_on_exit);
    text += make_element(indent, "LogFilePath", settings.log_folder);
    text += make_element(indent, "ReportPath", settings.report_folder);
    for (std::size_t at = 0; at < settings.servers.size(); ++at)
        text += make_server_block(settings.servers[at], at + 1);
    return text + "</clientconf>\n";
}
