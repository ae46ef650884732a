// transmission_bench.cpp - see transmission_bench.hpp.
#include "bench/transmission_bench.hpp"

#include "app/app_state.hpp"
#include "bench/sample_traffic.hpp"
#include "bench/xml_readers.hpp"
#include "data/template.hpp"
#include "data/text.hpp"
#include "data/xml.hpp"
#include "net/decompression.hpp"
#include "net/log_files.hpp"
#include "net/packet_dispatch.hpp"
#include "net/transmission.hpp"
#include "ui/pane.hpp"
#include "ui/popup.hpp"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

namespace
{

/// Logs grow by a screenful each round; cut now and then so that a long run fills no disk.
constexpr int rounds_between_cuts = 10'000;
constexpr const char* log_name = "bench.log";
constexpr const char* station = "station";

/// A template with the same names as the client's own.
std::string make_sample_template()
{
    std::string text;
    for (const char* path : template_paths)
        text.append("\nValue: %").append(path).append("%");
    return text;
}

/// The settings of a user who only logs, and of one who wants to see everything.
constexpr std::uint32_t log_only = ACARSLog;
constexpr std::uint32_t everything = ACARSLog | ContactInfo | FlightStats;

/// A connected server with a log of its own, and the settings of its user.
class logging_server
{
public:
    explicit logging_server(std::uint32_t settings) : alias(strdup(station))
    {
        server.ServerName = alias.get();
        server.list_row = 1;
        server.log_file = std::fopen(log_name, "at");
        app_state.setting_flags = settings;
    }
    ~logging_server()
    {
        close_log_file(server);
        popup_close();
        app_state.setting_flags = 0;
        std::remove(log_name);
    }
    logging_server(const logging_server&) = delete;
    logging_server& operator=(const logging_server&) = delete;

    bool is_logging() const
    {
        return server.log_file != nullptr;
    }
    server_entry& entry()
    {
        return server;
    }
    /// To be called once in each round. False if the log could not be cut.
    bool count_round()
    {
        rounds = (rounds + 1) % rounds_between_cuts;
        return rounds != 0 || ftruncate(fileno(server.log_file), 0) == 0;
    }

private:
    heap_text alias;
    server_entry server = {};
    int rounds = 0;
};

void run_path(benchmark::State& state, const packet_buffer& packet, std::uint32_t settings)
{
    logging_server server{settings};
    if (!server.is_logging())
        return state.SkipWithError("the log cannot be opened");
    while (state.KeepRunning()) {
        packet_dispatch(server.entry(), packet);
        if (!server.count_round())
            return state.SkipWithError("the log cannot be cut");
    }
    if (std::ftell(server.entry().log_file) <= 0)
        state.SkipWithError("nothing was logged");
}

void run_path_with_log_only(benchmark::State& state, const packet_buffer& packet)
{
    run_path(state, packet, log_only);
}

/// Each round closes the statistics window that the previous one has opened.
void run_path_with_everything(benchmark::State& state, const packet_buffer& packet)
{
    run_path(state, packet, everything);
}

void run_inflate(benchmark::State& state, const packet_buffer& packet)
{
    const packet_header header = packet_header_read(packet.header);
    while (state.KeepRunning())
        benchmark::DoNotOptimize(
            decompress_packet(packet.payload, header.extra, packet_payload_length(header)));
}

/// Looks once at each byte, as any reader must.
void run_pass(benchmark::State& state, const std::string& document)
{
    while (state.KeepRunning()) {
        unsigned sum = 0;
        for (const char byte : document)
            sum += static_cast<unsigned char>(byte);
        benchmark::DoNotOptimize(sum);
    }
}

void run_parse(benchmark::State& state, const std::string& document)
{
    while (state.KeepRunning()) {
        const xml_document parsed{xml_parse(document.c_str())};
        benchmark::DoNotOptimize(parsed.get());
    }
}

void run_template(benchmark::State& state, const std::string& document)
{
    const xml_document parsed{xml_parse(document.c_str())};
    const std::string text = make_sample_template();
    while (state.KeepRunning()) {
        const heap_text filled{fill_template(str_dup(text.c_str()), parsed.get())};
        benchmark::DoNotOptimize(filled.get());
    }
}

/// The filled template for this document.
std::string fill_sample_template(const std::string& document)
{
    const xml_document parsed{xml_parse(document.c_str())};
    const heap_text filled{fill_template(str_dup(make_sample_template().c_str()), parsed.get())};
    return filled ? filled.get() : "";
}

void run_log(benchmark::State& state, const std::string& document)
{
    logging_server server{log_only};
    if (!server.is_logging())
        return state.SkipWithError("the log cannot be opened");
    const std::string text = fill_sample_template(document);
    while (state.KeepRunning()) {
        log_transmission(server.entry(), text.c_str());
        if (!server.count_round())
            return state.SkipWithError("the log cannot be cut");
    }
}

void run_screen(benchmark::State& state, const std::string& document)
{
    const std::string text = fill_sample_template(document);
    while (state.KeepRunning())
        pane_printf(app_state.message_pane, colour::text, 1, LINES - 9, false, true, "%s",
                    text.c_str());
}

void add(const std::string& name, void (*run)(benchmark::State&, const std::string&),
         const std::string& document)
{
    benchmark::RegisterBenchmark(name.c_str(), run, document)->Unit(benchmark::kMicrosecond);
}

void add(const std::string& name, void (*run)(benchmark::State&, const packet_buffer&),
         const packet_buffer& packet)
{
    benchmark::RegisterBenchmark(name.c_str(), run, packet)->Unit(benchmark::kMicrosecond);
}

} // namespace

void transmission_benchmarks_add()
{
    for (const sample_document& sample : sample_documents()) {
        const std::string size = sample.size;
        const std::string road = transmission_path_name;
        add(road + "plain/" + size, run_path_with_log_only, plain_packet(sample.text));
        add(road + "compressed/" + size, run_path_with_log_only, compressed_packet(sample.text));
        add(road + "with_statistics/" + size, run_path_with_everything,
            compressed_packet(sample.text));
        const std::string step = transmission_step_name;
        add(step + "inflate/" + size, run_inflate, compressed_packet(sample.text));
        add(step + "pass/" + size, run_pass, sample.text);
        add(step + "parse/" + size, run_parse, sample.text);
        add(step + "template/" + size, run_template, sample.text);
        add(step + "log/" + size, run_log, sample.text);
        add(step + "screen/" + size, run_screen, sample.text);
    }
}
