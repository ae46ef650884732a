// message_measures.cpp - see message_measures.hpp.
#include "bench/message_measures.hpp"

#include "base/owners.hpp"
#include "bench/measured_program.hpp"
#include "bench/server_park.hpp"
#include "server/messages/transmission.hpp"
#include "server/practice/traffic_generator.hpp"
#include "support/patience.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <list>
#include <string>
#include <thread>
#include <unistd.h>

namespace
{

constexpr std::uint32_t transmission_kind = 40;
constexpr std::uint64_t traffic_seed = 1;
constexpr std::time_t traffic_time = 1'710'685'500; // 17 March 2024, 14:25
constexpr const char* client_log = "ACARS.log";
constexpr std::chrono::milliseconds look_again{2};

/// A program that shows messages, in a home of its own.
struct message_reader {
    explicit message_reader(const compared_program& read_by) : program(read_by)
    {
        if (program.prepare != nullptr)
            program.prepare(home);
    }

    const compared_program& program;
    temp_home home{};
    std::optional<measured_program> running{};
    unique_fd pipe{};
    std::size_t before = 0; // bytes written before the message
    std::vector<double> bytes{};
};

bool complain(const compared_program& program, const char* what)
{
    std::fprintf(stderr, "bench_programs: %s %s\n", program.name, what);
    return false;
}

bool start_reader(message_reader& reader, std::string_view last_text)
{
    reader.running.emplace(reader.program.command, reader.home.path());
    return reader.running->wait_for_screen(last_text).has_value();
}

/// Opens the pipe for reading too, so that the program never meets end of file.
bool open_pipe(message_reader& reader)
{
    reader.pipe = unique_fd{open(reader.home.path_of(message_pipe).c_str(), O_RDWR | O_CLOEXEC)};
    if (!reader.pipe)
        return false;
    if (reader.program.pipe_keys.empty())
        return true;
    const std::size_t before = reader.running->written();
    return reader.running->type(reader.program.pipe_keys) && reader.running->wait_for_more(before);
}

/// The lines of the text in the form that this program expects.
std::string make_pipe_lines(const compared_program& program, std::string_view text)
{
    std::string bytes;
    while (true) {
        const std::string_view line = text.substr(0, text.find('\n'));
        bytes += program.pipe_line != nullptr ? program.pipe_line(line) : std::string{line};
        bytes += '\n';
        if (line.size() == text.size())
            return bytes;
        text.remove_prefix(line.size() + 1);
    }
}

bool write_to_pipe(message_reader& reader, std::string_view text)
{
    const std::string bytes = make_pipe_lines(reader.program, text);
    return write(reader.pipe.get(), bytes.data(), bytes.size()) ==
           static_cast<ssize_t>(bytes.size());
}

/// What has been added to the client's log after `length` bytes; empty if nothing comes.
std::string read_log_after(const temp_home& home, std::size_t length)
{
    const auto give_up = std::chrono::steady_clock::now() + default_patience;
    while (std::chrono::steady_clock::now() < give_up) {
        const std::optional<std::string> log = home.read_file(client_log);
        if (log && log->size() > length)
            return log->substr(length);
        std::this_thread::sleep_for(look_again);
    }
    return {};
}

/// The client with its server, and the programs that get what the client shows.
struct message_round {
    server_park park{1};
    message_reader client;
    std::list<message_reader> others{};
    tovrik::traffic_generator traffic{traffic_seed};
    std::size_t logged = 0;
};

bool takes_messages(message_reader& reader)
{
    return (start_reader(reader, reader.program.last_text) && open_pipe(reader)) ||
           complain(reader.program, "takes no messages, left out of them");
}

bool start_round(message_round& round)
{
    message_reader& client = round.client;
    client.home.write_config(config_of(ports_of(round.park)));
    if (!start_reader(client, station_name(1)) || !connect_all(round.park, *client.running))
        return complain(client.program, "does not connect as it should");
    round.others.remove_if([](message_reader& reader) { return !takes_messages(reader); });
    return !round.others.empty() && round.others.front().program.package == nullptr;
}

bool wait_until_shown(message_reader& reader)
{
    const std::optional<std::size_t> after = reader.running->wait_for_more(reader.before);
    if (!after)
        return complain(reader.program, "does not show a message");
    reader.bytes.push_back(static_cast<double>(*after - reader.before));
    return true;
}

/// Makes all show the next message. Returns its text; empty if a program fails.
std::string pass_message(message_round& round)
{
    round.client.before = round.client.running->written();
    const std::string document = tovrik::transmission_xml(round.traffic.next(traffic_time));
    if (!round.park.connections.front().send(transmission_kind, document))
        return {};
    const std::string text = read_log_after(round.client.home, round.logged);
    round.logged += text.size();
    for (message_reader& reader : round.others) {
        reader.before = reader.running->written();
        if (!write_to_pipe(reader, text))
            return {};
    }
    return wait_until_shown(round.client) && std::ranges::all_of(round.others, wait_until_shown)
               ? text
               : std::string{};
}

bool end_round(message_round& round)
{
    const auto left = [](message_reader& reader) {
        return reader.running->leave(reader.program.end_keys) ||
               complain(reader.program, "does not end as it should");
    };
    return left(round.client) && std::ranges::all_of(round.others, left);
}

/// The bytes in the order of the programs.
std::vector<std::vector<double>> collect_bytes(const message_round& round,
                                               const std::vector<compared_program>& programs)
{
    std::vector<std::vector<double>> bytes(programs.size());
    bytes[client_column] = round.client.bytes;
    for (const message_reader& reader : round.others)
        bytes[static_cast<std::size_t>(&reader.program - programs.data())] = reader.bytes;
    return bytes;
}

} // namespace

std::optional<message_figures> measure_messages(const std::vector<compared_program>& programs,
                                                int count)
{
    message_round round{.client = message_reader{programs[client_column]}};
    for (const compared_program& program : programs)
        if (program.source == message_source::pipe)
            round.others.emplace_back(program);
    if (!start_round(round))
        return std::nullopt;
    message_figures figures;
    for (int message = 0; message < count; ++message) {
        const std::string text = pass_message(round);
        if (text.empty())
            return std::nullopt;
        figures.text_bytes.push_back(static_cast<double>(text.size()));
        figures.text_lines.push_back(static_cast<double>(std::ranges::count(text, '\n')));
    }
    figures.written_bytes = collect_bytes(round, programs);
    return end_round(round) ? std::optional{figures} : std::nullopt;
}
