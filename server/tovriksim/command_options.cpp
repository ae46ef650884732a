// command_options.cpp - see command_options.hpp.
#include "server/tovriksim/command_options.hpp"

#include "server/base/limits.hpp"
#include "server/base/locale_text.hpp"
#include "server/base/text_fields.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace
{

const std::map<std::string, tovrik::report_answer> report_answers = {
    {"real", tovrik::report_answer::real},   {"busy", tovrik::report_answer::busy},
    {"empty", tovrik::report_answer::empty}, {"corrupt", tovrik::report_answer::corrupt},
    {"tight", tovrik::report_answer::tight}, {"unfinished", tovrik::report_answer::unfinished},
};

const std::set<std::uint32_t> close_kinds = {
    tovrik::kind::closing, tovrik::kind::closing_for_maintenance, tovrik::kind::closing_when_full};

constexpr double max_port = 65535;
constexpr double max_client_limit = 4096;
constexpr double max_pace_ms = 60000;
constexpr double max_seed = 9007199254740992; ///< a double holds every whole number up to here
constexpr double max_interval_s = 86400;
constexpr std::size_t max_option_bytes = 200;

/// Accepts the digits of a number from `min` to `max`, with one decimal point where
/// `may_have_point` says so, and refuses any other text. The library itself would read 010 as 8 and
/// 0x10 as 16.
CLI::Validator limit_decimal(double min, double max, bool may_have_point)
{
    const auto check = [min, max, may_have_point](std::string& text) -> std::string {
        const auto points = std::count(text.begin(), text.end(), '.');
        const auto digits = std::count_if(text.begin(), text.end(), tovrik::is_digit);
        const double value = std::strtod(text.c_str(), nullptr);
        if (digits > 0 && digits + points == static_cast<std::ptrdiff_t>(text.size()) &&
            points <= (may_have_point ? 1 : 0) && value >= min && value <= max) {
            while (text.size() > 1 && text[0] == '0' && tovrik::is_digit(text[1])) {
                text.erase(0, 1);
            }
            return {};
        }
        char wrong[128];
        std::snprintf(wrong, sizeof wrong, "must be a %s from %.0f to %.0f",
                      may_have_point ? "decimal number" : "whole decimal number", min, max);
        return wrong;
    };
    return CLI::Validator{check, ""};
}

CLI::Validator limit_whole(double min, double max)
{
    return limit_decimal(min, max, false);
}

CLI::Validator limit_number(double min, double max)
{
    return limit_decimal(min, max, true);
}

/// Takes a text in the locale's character set as the network carries it, in ISO-8859-1. Refuses
/// one that cannot be converted, and one that is longer than `max_bytes` then.
CLI::Validator take_text(std::size_t max_bytes)
{
    const auto take = [max_bytes](std::string& text) -> std::string {
        auto converted = tovrik::locale_to_latin1(text);
        if (!converted)
            return "has a character that ISO-8859-1 lacks, or none of this locale";
        if (converted->size() > max_bytes)
            return "longer than " + std::to_string(max_bytes) + " bytes";
        text = std::move(*converted);
        return {};
    };
    return CLI::Validator{take, ""};
}

/// Refuses a password that no user of a client can type.
CLI::Validator refuse_untypable()
{
    const auto check = [](const std::string& text) -> std::string {
        if (text.empty())
            return "must not be empty, because nobody can type that";
        return tovrik::is_clean_field(text, tovrik::max_password_bytes)
                   ? ""
                   : "has a control character, which nobody can type";
    };
    return CLI::Validator{check, ""};
}

void add_place_options(CLI::App& app, command_line& line)
{
    app.add_option("--port", line.server.port, "TCP port to listen on; 0: any free one")
        ->transform(limit_whole(0, max_port))
        ->type_name("PORT")
        ->capture_default_str();
    app.add_option("--bind", line.server.bind_address, "IPv4 address to listen on")
        ->check(CLI::ValidIPV4.description(""))
        ->type_name("ADDRESS")
        ->capture_default_str();
    app.add_option("--max-clients", line.server.max_clients, "Maximum number of clients, 1 to 4096")
        ->transform(limit_whole(1, max_client_limit))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--pace-ms", line.server.pace_ms,
                   "Pause after each packet to a client; clients take\n"
                   "one a second")
        ->transform(limit_whole(0, max_pace_ms))
        ->type_name("MS")
        ->capture_default_str();
}

void add_traffic_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Messages");
    app.add_option("--rate", line.server.rate_per_minute,
                   "Transmissions a minute; those beyond the pace are\n"
                   "dropped")
        ->transform(limit_number(0, tovrik::max_rate_per_minute))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--seed", line.server.seed,
                   "Seed of made-up messages; the same seed gives the\n"
                   "same messages")
        ->transform(limit_whole(0, max_seed))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--fixed-time", line.fixed_time,
                   "Date of made-up messages, in seconds since 1970\n"
                   "(default: now)")
        ->transform(limit_whole(0, tovrik::max_time_s))
        ->type_name("S");
    app.add_flag("--compressed", line.server.compressed, "Send transmissions compressed");
    app.add_option("--replay", line.replay_path,
                   "Send the documents of this file instead of made-up\n"
                   "messages")
        ->type_name("FILE");
    app.add_option("--announce-replay", line.server.replay_count,
                   "First send so many recent transmissions, up to\n"
                   "1000")
        ->transform(limit_whole(0, tovrik::max_replay_count))
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
        ->transform(take_text(max_option_bytes))
        ->capture_default_str();
    app.add_option("--uuid", offered.server_uuid,
                   "Identity (default: made of machine, name, address\n"
                   "and port)")
        ->transform(take_text(max_option_bytes));
    app.add_option("--server-version", offered.version, "Version to announce")
        ->transform(take_text(max_option_bytes));
    add_capability(app, "--crc-check", offered.crc_check, "Announce CRC checking");
    add_capability(app, "--mailing", offered.mailing,
                   "Offer daily mailings; subscriptions are taken, and\n"
                   "nothing is mailed");
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
        ->transform(limit_whole(0, max_port))
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
        ->transform(limit_whole(0, max_port))
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
                   "Send messages only to clients with this password")
        ->transform(take_text(tovrik::max_password_bytes))
        ->check(refuse_untypable());
    app.add_flag("--identify", line.server.ask_identification, "Ask clients for their name");
    app.add_option("--known-client", line.server.known_clients,
                   "With --identify, a name to admit; may be repeated")
        ->expected(1)
        ->transform(take_text(max_option_bytes))
        ->take_all()
        ->default_str("ncursesclient");
}

void add_greeting_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("Texts and ticks (\\n in a text begins a new line)");
    app.add_option("--banner", line.banner, "Text for new clients (kind 64)")
        ->transform(take_text(tovrik::max_text_bytes));
    app.add_option("--news", line.news, "Text for new clients (kind 90)")
        ->transform(take_text(tovrik::max_text_bytes));
    app.add_option("--notice", line.notice, "Notice for new clients (kind 103)")
        ->transform(take_text(tovrik::max_text_bytes));
    app.add_option("--error-text", line.error_text, "Error for new clients (kind 108)")
        ->transform(take_text(tovrik::max_text_bytes));
    app.add_flag("--uptime", line.server.send_uptime, "Tell new clients the uptime");
    app.add_option("--ticks", line.tick_s, "Seconds between activity ticks; 0: none")
        ->transform(limit_number(0, max_interval_s))
        ->type_name("S")
        ->capture_default_str();
}

void add_end_options(CLI::App& app, command_line& line)
{
    app.option_defaults()->group("End of connections");
    app.add_option("--close-after", line.close_after_s,
                   "Seconds after which a connection is closed;\n"
                   "0: never")
        ->transform(limit_number(0, max_interval_s))
        ->type_name("S");
    app.add_option("--close-kind", line.server.close_kind,
                   "Kind of the closing packet: 3, 100 or 102")
        ->check(CLI::IsMember(close_kinds).description(""))
        ->transform(limit_whole(0, max_port))
        ->type_name("KIND")
        ->capture_default_str();
}

} // namespace

void add_options(CLI::App& app, command_line& line)
{
    app.set_version_flag("--version", "tovriksim " SERVER_VERSION, "Print the version and exit");
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
