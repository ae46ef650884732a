// command_line.cpp - see command_line.hpp.
#include "server/tovriksim/command_line.hpp"

#include "server/base/limits.hpp"
#include "server/base/whole_file.hpp"
#include "server/inputs/json_file.hpp"
#include "server/practice/directory_answer.hpp"
#include "server/practice/replay_file.hpp"
#include "server/tovriksim/command_options.hpp"

#include <cstdio>

namespace
{

constexpr std::size_t help_column = 28;

// Lines of 79 characters at most: terminals have 80, and newer versions of the library break longer
// ones once more.
constexpr const char* description =
    "A small ACARS message server to practise with. It sends made-up or recorded\n"
    "messages, or those of your receiver, to any number of clients. It answers all\n"
    "of their services and keeps what they ask it to keep, in memory, until it\n"
    "ends.\n";

constexpr const char* help_footer =
    "A replay file contains XML documents, one after another. Each begins with a\n"
    "line that starts with \"<?xml\" and ends before the next such line; white space\n"
    "at its end is dropped. A document whose BlockID is a letter counts as an\n"
    "uplink. After the last document the file starts over.\n"
    "\n"
    "Receivers may send JSON of VHF messages (one flat object each), VDL2 and HFDL\n"
    "frames, and messages by Iridium and Inmarsat. With --json-udp, or a pipe as\n"
    "--json-file, messages are made up only if --rate is given. When standard input\n"
    "ends, and no messages can come from elsewhere, the server sends what waits,\n"
    "says good-bye and ends.\n"
    "\n"
    "A report contains the messages that were sent on its day in this machine's\n"
    "time zone, and those that are dated with it.\n"
    "\n"
    "Exit status: 0 after SIGTERM or SIGINT, and after the end of standard input;\n"
    "1 if it cannot serve, 2 for wrong options, 3 if standard input has ended and\n"
    "lines of it were broken.";

std::string unescape_line_feeds(std::string text)
{
    for (auto found = text.find("\\n"); found != std::string::npos;
         found = text.find("\\n", found)) {
        text.replace(found, 2, "\n");
    }
    return text;
}

/// Reads the directory's file if one was named. Returns an error text, empty on success.
std::string read_directory(command_line& line)
{
    if (line.directory_path.empty())
        return {};
    auto file = tovrik::read_whole_file(line.directory_path, tovrik::max_directory_bytes);
    if (!file.error.empty())
        return std::move(file.error);
    const std::string error = tovrik::directory_text_error(file.text);
    if (!error.empty())
        return line.directory_path + ": " + error;
    if (!file.text.ends_with('\n'))
        file.text += '\n';
    line.server.directory_text = std::move(file.text);
    return {};
}

std::string open_json(command_line& line)
{
    const auto complain = [&line](const std::string& what) { line.errors.put(what); };
    line.server.on_complaint = complain;
    if (line.json_path.empty())
        return {};
    auto file = tovrik::open_json_file(line.json_path, complain);
    line.json_stream = std::move(file.stream);
    line.server.json_stream_fd = line.json_stream.get();
    line.server.replay_messages = std::move(file.messages);
    return std::move(file.error);
}

/// Whether all messages come from receivers as they arrive. Generated ones would only disturb, so
/// there are none then unless a rate is given.
bool is_live_only(const command_line& line)
{
    return (line.server.json_udp_port || line.json_stream) && line.server.replay_messages.empty() &&
           line.replay_path.empty();
}

std::string read_replay(command_line& line)
{
    if (line.replay_path.empty())
        return {};
    auto recorded = tovrik::read_replay_file(line.replay_path);
    line.server.replay_documents = std::move(recorded.documents);
    return std::move(recorded.error);
}

/// Completes the server's options from what was typed. Returns an error text, empty on success.
std::string complete_options(command_line& line, const CLI::App& app)
{
    line.server.tick_every_ms = static_cast<int>(line.tick_s * 1000);
    line.server.close_after_ms = static_cast<int>(line.close_after_s * 1000);
    if (app.count("--fixed-time") > 0)
        line.server.fixed_time = line.fixed_time;
    const tovrik::packet texts[] = {{.kind = tovrik::kind::banner, .payload = line.banner},
                                    {.kind = tovrik::kind::news, .payload = line.news},
                                    {.kind = tovrik::kind::notice, .payload = line.notice},
                                    {.kind = tovrik::kind::error_text, .payload = line.error_text}};
    for (tovrik::packet text : texts) {
        text.payload = unescape_line_feeds(std::move(text.payload));
        if (!text.payload.empty())
            line.server.greetings.push_back(std::move(text));
    }
    std::string error = read_directory(line);
    if (error.empty())
        error = read_replay(line);
    if (error.empty())
        error = open_json(line);
    if (is_live_only(line) && app.count("--rate") == 0)
        line.server.rate_per_minute = 0;
    line.ends_with_stream =
        line.json_stream && !line.server.json_udp_port && line.server.rate_per_minute <= 0;
    return error;
}

} // namespace

int report_failure(const std::string& why, int status)
{
    std::fprintf(stderr, "tovriksim: %s\n", why.c_str());
    return status;
}

std::optional<int> read_command_line(int argc, char** argv, command_line& line)
{
    CLI::App app{description, "tovriksim"};
    app.footer(help_footer);
    app.get_formatter()->column_width(help_column);
    add_options(app, line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& answer) {
        return app.exit(answer);
    } catch (const CLI::ParseError& wrong) {
        return report_failure(std::string{wrong.what()} + "\ntovriksim --help lists the options",
                              status_bad_usage);
    }
    const std::string error = complete_options(line, app);
    if (!error.empty())
        return report_failure(error, status_failed);
    return std::nullopt;
}
