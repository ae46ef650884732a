// soak_main.cpp - runs the client for a long time on a fast clock, with many servers and a user who
// never rests, and checks that it stays as it was.
//
// Its status is 0 if the client has lost no transmission, has not grown and has left in order.
#include "soak/soak_figures.hpp"
#include "soak/soak_logs.hpp"
#include "soak/soak_options.hpp"
#include "soak/soak_servers.hpp"
#include "soak/soak_user.hpp"

#include <cstdarg>
#include <cstdio>
#include <regex>

namespace
{

constexpr double ms_per_hour = 3'600'000;
constexpr double minutes_per_hour = 60;
constexpr double default_samples = 144;
constexpr const char* log_folder = "log";

soak_options options;

/// A configuration without the user's answers to servers, which the client keeps.
std::string remove_answers(const std::string& config)
{
    static const std::regex answers{"<(SubCode|UseEMail)>[^<]*<"};
    return std::regex_replace(config, answers, "<$1><");
}

class soak : public testing::Test
{
protected:
    soak() : servers(options, client.clock()), user(client, servers, options) {}

    client_settings settings() const
    {
        client_settings wanted;
        wanted.acars_log = !options.one_log;
        wanted.save_to_one = options.one_log;
        wanted.contact_info = true;
        wanted.flight_stats = true;
        wanted.save_on_exit = true;
        wanted.log_folder = log_folder;
        for (int index = 0; index < servers.count(); ++index)
            wanted.servers.push_back(
                {.port = std::to_string(servers.port(index)), .alias = soak_alias(index)});
        return wanted;
    }

    void begin()
    {
        client.clock().set_speed(options.speed);
        client.home().make_folder(log_folder);
        for (int index = 0; index < servers.count(); ++index)
            client.home().make_folder(soak_alias(index));
        ASSERT_TRUE(client.start(settings(), {.rows = soak_rows,
                                              .columns = soak_columns,
                                              .alarm_ms_per_second = 1000 / options.speed}));
        started_ms = client.clock().now_ms();
        user.connect_all();
    }

    double hours()
    {
        return static_cast<double>(client.clock().now_ms() - started_ms) / ms_per_hour;
    }

    /// Measures the client when it is connected to all its servers and nothing else happens.
    void take_sample()
    {
        soak_sample sample;
        std::int64_t rounds = 0;
        const auto is_quiet = [&] {
            sample = soak_sample_of(client.terminal().process_id());
            rounds = servers.rounds();
            return (sample.threads == 1 && sample.children == 0) || !user.all_are_connected();
        };
        // The client may leave a silent server at any moment, and notices that later.
        const auto is_known = [&] { return servers.rounds() >= rounds + 2; };
        do {
            user.connect_all();
            ASSERT_TRUE(client.terminal().wait_until(is_quiet, "one thread, no child"));
            ASSERT_TRUE(client.terminal().wait_until(is_known, "the servers are awake"));
        } while (!user.all_are_connected());
        sample.hours = hours();
        say("%s\n", soak_sample_line(sample).c_str());
        samples.push_back(sample);
    }

    void go_on()
    {
        while (user.actions_done() < soak_user::different_actions())
            user.do_something();
        const double step = options.sample_minutes > 0 ? options.sample_minutes / minutes_per_hour
                                                       : options.hours / default_samples;
        double next = hours();
        do {
            ASSERT_NO_FATAL_FAILURE(take_sample());
            for (next += step; hours() < next;)
                user.do_something();
        } while (hours() < options.hours);
        ASSERT_NO_FATAL_FAILURE(take_sample());
    }

    std::string read_log(const std::string& name)
    {
        return client.home().read_file(name + "/" + log_folder + ".log").value_or("");
    }

    void check_logs()
    {
        std::map<int, std::string> logs;
        if (options.one_log)
            logs = log_by_server(client.home().read_file("log/ACARS.log").value_or(""));
        std::int64_t transmissions = 0;
        for (int index = 0; index < servers.count(); ++index) {
            if (servers.is_wild(index))
                continue;
            const std::int64_t said =
                servers.with(index, [](auto& server) { return server.transmissions; });
            EXPECT_TRUE(log_is_complete(options.one_log ? logs[index] : read_log(soak_alias(index)),
                                        index, said));
            transmissions += said;
        }
        EXPECT_GT(transmissions, 0);
        say("%lld transmissions are in the logs\n", static_cast<long long>(transmissions));
    }

    /// Writes to standard output, and to the report if there is one.
    __attribute__((format(printf, 2, 3))) void say(const char* format, ...)
    {
        std::FILE* both[] = {stdout, report.get()};
        for (std::FILE* file : both) {
            if (file == nullptr)
                continue;
            va_list arguments;
            va_start(arguments, format);
            std::vfprintf(file, format, arguments);
            va_end(arguments);
            std::fflush(file);
        }
    }

    void say_totals()
    {
        int heartbeats = 0;
        int clients = 0;
        std::int64_t packets = 0;
        for (int index = 0; index < servers.count(); ++index)
            servers.with(index, [&](auto& server) {
                heartbeats += server.heartbeats;
                clients += server.clients;
                packets += server.packets;
            });
        say("%.2f hours: %lld packets, %d connections, %d heartbeats, %d deeds, %d late greetings, "
            "%lld polls\n",
            hours(), static_cast<long long>(packets), clients, heartbeats, user.actions_done(),
            user.late_greetings(), static_cast<long long>(client.clock().alarms_set()));
    }

    client_session client;
    soak_servers servers;
    soak_user user;
    unique_file report{options.report.empty() ? nullptr : std::fopen(options.report.c_str(), "w")};
    std::vector<soak_sample> samples;
    std::int64_t started_ms = 0;
};

TEST_F(soak, the_client_stays_as_it_was_and_loses_nothing)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_NO_FATAL_FAILURE(go_on());
    user.hush_all();
    say_totals();
    client.quit();
    check_logs();
    EXPECT_TRUE(nothing_has_grown(samples));
    EXPECT_EQ(remove_answers(client.home().read_config().value_or("")), config_text(settings()));
}

} // namespace

int main(int count, char** arguments)
{
    testing::InitGoogleTest(&count, arguments);
    if (!soak_options_read(options, count, arguments))
        return 2;
    return RUN_ALL_TESTS();
}
