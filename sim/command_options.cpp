// command_options.cpp - see command_options.hpp.
#include "sim/command_options.hpp"

#include "sim/limits.hpp"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>

namespace
{

const std::map<std::string, sim::report_answer> report_answers = {
    {"real", sim::report_answer::real},   {"busy", sim::report_answer::busy},
    {"empty", sim::report_answer::empty}, {"corrupt", sim::report_answer::corrupt},
    {"tight", sim::report_answer::tight}, {"unfinished", sim::report_answer::unfinished},
};

const std::set<std::uint32_t> close_kinds = {sim::kind::closing, sim::kind::closing_for_maintenance,
                                             sim::kind::closing_when_full};

constexpr double max_port = 65535;
constexpr double max_client_limit = 4096;
constexpr double max_pace_ms = 60000;
constexpr double max_seed = 9007199254740992; ///< a double holds every whole number up to here
constexpr double max_interval_s = 86400;
constexpr std::size_t max_option_bytes = 200;

/// Accepts a number from `min` to `max` and refuses any other text.
CLI::Validator limit_number(double min, double max)
{
    const auto check = [min, max](const std::string& text) -> std::string {
        char* end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        if (!text.empty() && *end == '\0' && value >= min && value <= max)
            return {};
        char wrong[128];
        std::snprintf(wrong, sizeof wrong, "must be a number from %.0f to %.0f", min, max);
        return wrong;
    };
    return CLI::Validator{check, ""};
}

CLI::Validator limit_length()
{
    return CLI::Validator{[](const std::string& text) {
                              return text.size() > max_option_bytes ? "longer than 200 bytes"
                                                                    : std::string{};
                          },
                          ""};
}

void add_place_options(CLI::App& app, command_line& line)
{
    app.add_option("--port", line.server.port, "TCP port to listen on; 0: any free one")
        ->check(limit_number(0, max_port))
        ->type_name("PORT")
        ->capture_default_str();
    app.add_option("--bind", line.server.bind_address, "IPv4 address to listen on")
        ->check(CLI::ValidIPV4.description(""))
        ->type_name("ADDRESS")
        ->capture_default_str();
    app.add_option("--max-clients", line.server.max_clients, "Maximum number of clients, 1 to 4096")
        ->check(limit_number(1, max_client_limit))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--pace-ms", line.server.pace_ms,
                   "Pause after each packet to a client; clients take\n"
                   "one a second")
        ->check(limit_number(0, max_pace_ms))
        ->type_name("MS")
        ->capture_default_str();
}

void add_traffic_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Messages");
    app.add_option("--rate", line.server.rate_per_minute,
                   "Transmissions a minute; those beyond the pace are\n"
                   "dropped")
        ->check(limit_number(0, sim::max_rate_per_minute))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--seed", line.server.seed,
                   "Seed of made-up messages; the same seed gives the\n"
                   "same messages")
        ->check(limit_number(0, max_seed))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--fixed-time", line.fixed_time,
                   "Date of made-up messages, in seconds since 1970\n"
                   "(default: now)")
        ->check(limit_number(0, sim::max_time_s))
        ->type_name("S");
    app.add_flag("--compressed", line.server.compressed, "Send transmissions compressed");
    app.add_option("--replay", line.replay_path,
                   "Send the documents of this file instead of made-up\n"
                   "messages")
        ->type_name("FILE");
    app.add_option("--announce-replay", line.server.replay_count,
                   "First send so many recent transmissions, up to\n"
                   "1000")
        ->check(limit_number(0, sim::max_replay_count))
        ->type_name("N");
}

/// Adds a flag that makes a capability "1".
void add_capability(CLI::App& app, const char* flag, std::optional<std::string>& text,
                    const char* help)
{
    app.add_flag_callback(
        flag, [&text] { text = "1"; }, help);
}

void add_identity_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Identity and services");
    auto& offered = line.server.capabilities;
    app.add_option("--name", line.server.name, "Server name, sent with the uptime")
        ->check(limit_length())
        ->capture_default_str();
    app.add_option("--uuid", offered.server_uuid, "Identity (default: made of address and port)")
        ->check(limit_length());
    app.add_option("--server-version", offered.version, "Version to announce")
        ->check(limit_length());
    add_capability(app, "--crc-check", offered.crc_check, "Announce CRC checking");
    add_capability(app, "--mailing", offered.mailing, "Offer daily mailings");
    add_capability(app, "--db-modify", offered.db_modify, "Offer database updates");
    add_capability(app, "--modify-flags", offered.modify_flags,
                   "Offer database updates by the other capability,\n"
                   "ModifyFlags");
    add_capability(app, "--reports", offered.reports, "Offer reports");
    add_capability(app, "--pager", offered.pager, "Offer pager lists");
}

void add_json_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Messages of receivers, one JSON object per line");
    app.add_option("--json-udp", line.server.json_udp_port,
                   "UDP port to receive them on, at the --bind\n"
                   "address; 0: any free one")
        ->check(limit_number(0, max_port))
        ->type_name("PORT");
    app.add_option("--json-file", line.json_path,
                   "File to send them from, at --rate and repeatedly;\n"
                   "from a pipe, each is sent as it comes. \"-\" is\n"
                   "standard input")
        ->excludes("--replay")
        ->type_name("FILE");
}

void add_directory_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Directory of servers");
    app.add_option("--http-port", line.server.directory_port,
                   "TCP port to serve the directory on, by HTTP; 0:\n"
                   "any free one")
        ->check(limit_number(0, max_port))
        ->type_name("PORT");
    app.add_option("--directory", line.directory_path,
                   "File with its lines: nine fields, separated by\n"
                   "tabs (default: one line for this server)")
        ->needs("--http-port")
        ->type_name("FILE");
}

void add_service_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Answers of services");
    app.add_option("--report-answer", line.server.reports,
                   "Answer to requests for reports: real, busy, empty,\n"
                   "corrupt, tight or unfinished")
        ->transform(CLI::CheckedTransformer(report_answers).description(""))
        ->type_name("HOW")
        ->default_str("real");
    app.add_flag("--pager-blocked", line.server.pager_blocked,
                 "Answer requests about pager lists with \"try later\"");
}

void add_access_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Access");
    app.add_option("--password", line.server.password,
                   "Send messages only to clients with this password");
    app.add_flag("--identify", line.server.ask_identification, "Ask clients for their name");
    app.add_option("--known-client", line.server.known_clients,
                   "With --identify, a name to admit; may be repeated")
        ->expected(1)
        ->take_all()
        ->default_str("ncursesclient");
}

void add_greeting_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Texts and ticks (\\n in a text begins a new line)");
    app.add_option("--banner", line.banner, "Text for new clients (kind 64)");
    app.add_option("--news", line.news, "Text for new clients (kind 90)");
    app.add_option("--notice", line.notice, "Notice for new clients (kind 103)");
    app.add_option("--error-text", line.error_text, "Error for new clients (kind 108)");
    app.add_flag("--uptime", line.server.send_uptime, "Tell new clients the uptime");
    app.add_option("--ticks", line.tick_s, "Seconds between activity ticks; 0: none")
        ->check(limit_number(0, max_interval_s))
        ->type_name("S");
}

void add_end_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("End of connections");
    app.add_option("--close-after", line.close_after_s,
                   "Seconds after which a connection is closed;\n"
                   "0: never")
        ->check(limit_number(0, max_interval_s))
        ->type_name("S");
    app.add_option("--close-kind", line.server.close_kind,
                   "Kind of the closing packet: 3, 100 or 102")
        ->check(CLI::IsMember(close_kinds).description(""))
        ->type_name("KIND")
        ->capture_default_str();
}

} // namespace

void add_options(CLI::App& app, command_line& line)
{
    add_place_options(app, line);
    add_traffic_options(app, line);
    add_identity_options(app, line);
    add_json_options(app, line);
    add_directory_options(app, line);
    add_service_options(app, line);
    add_access_options(app, line);
    add_greeting_options(app, line);
    add_end_options(app, line);
}
