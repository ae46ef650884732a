// many_servers_test.cpp - a thousand connected servers: keys are answered, and every message is
// shown and logged.
//
// The test checks what is shown and logged, and prints the times. It judges the times only with
// --judge-times, since they say nothing about the client when the machine has other work.
#include "bench/process_figures.hpp"
#include "e2e/client_session.hpp"
#include "soak/crowd.hpp"
#include "soak/soak_logs.hpp"
#include "soak/soak_traffic.hpp"
#include "support/open_files.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <random>
#include <set>

namespace
{

using std::chrono::steady_clock;

constexpr int server_count = 1000;
constexpr int servers_at_a_time = 25;
constexpr unsigned long files_of_client = 2 * server_count + 64; // a socket and a log for each
constexpr int connecting_speed = 50;
constexpr int terminal_rows = 40;
constexpr int terminal_columns = 132;
constexpr int pane_column = 27;
constexpr int name_cells = 34;
constexpr std::size_t look_every_bytes = 200;
constexpr int first_row = 2;
constexpr int last_row = terminal_rows - 3;
constexpr int bar_column = 2;
constexpr double max_ms_to_answer = 100;
constexpr const char* log_folder = "log";

struct {
    int keys = 30;
    bool judges_times = false;
} options;

class many_servers : public testing::Test
{
protected:
    void begin()
    {
        client_settings settings;
        settings.acars_log = true;
        settings.log_folder = log_folder;
        settings.servers = servers.settings();
        for (const server_settings& server : settings.servers)
            client.home().make_folder(server.alias);
        // However long it takes, nobody counts as idle before all are connected.
        client.clock().stop();
        ASSERT_TRUE(client.start(settings, {.rows = terminal_rows,
                                            .columns = terminal_columns,
                                            .alarm_ms_per_second = 1000 / connecting_speed}));
        connect_all();
        client.clock().set_speed(1);
    }

    void connect_all()
    {
        terminal_session& terminal = client.terminal();
        for (int done = 0; done < server_count; done += servers_at_a_time) {
            for (int key = 0; key < servers_at_a_time; ++key) {
                if (done + key > 0)
                    terminal.send_key(named_key::down);
                terminal.send_control('l');
            }
            ASSERT_TRUE(terminal.wait_until(
                [&] { return servers.introduced() == done + servers_at_a_time; },
                std::to_string(done + servers_at_a_time) + " servers are connected"));
        }
    }

    bool bar_is_on(int wanted)
    {
        return client.terminal().cell(wanted, bar_column).background ==
               pair_cell(pairs::bar, false, "").background;
    }

    /// Moves the bar by one row, up and down between the ends of the visible list, and returns the
    /// time until it is seen there.
    double time_move()
    {
        if (bar_row == last_row)
            direction = named_key::up;
        else if (bar_row == first_row)
            direction = named_key::down;
        bar_row += direction == named_key::up ? -1 : 1;
        client.terminal().screen();
        std::optional<steady_clock::time_point> end;
        const auto begin = steady_clock::now();
        client.terminal().send_key(direction);
        EXPECT_TRUE(client.terminal().wait_until(
            [&] {
                if (bar_is_on(bar_row) && !end)
                    end = steady_clock::now();
                return end.has_value();
            },
            "the bar has moved"));
        return std::chrono::duration<double, std::milli>(end.value_or(steady_clock::now()) - begin)
            .count();
    }

    /// The times of the answers to this many keys, ascending.
    std::vector<double> time_keys(int count)
    {
        std::vector<double> times;
        std::mt19937 dice{1};
        while (static_cast<int>(times.size()) < count && !HasFailure()) {
            times.push_back(time_move());
            rest(std::chrono::milliseconds{number_from(dice, 0, 100)});
        }
        std::ranges::sort(times);
        return times;
    }

    /// Waits, so that keys come at any time of a poll cycle.
    void rest(std::chrono::milliseconds length)
    {
        const auto end = steady_clock::now() + length;
        EXPECT_TRUE(client.terminal().wait_until([&] { return steady_clock::now() >= end; }, ""));
    }

    double cpu_ms()
    {
        const pid_t process = client.terminal().process_id();
        return work_of({&process, 1}).value_or(work_done{}).cpu_ms;
    }

    std::string read_log(int index)
    {
        return client.home()
            .read_file(crowd_alias(static_cast<std::size_t>(index)) + "/" + log_folder + ".log")
            .value_or("");
    }

    void check_logs(const std::vector<std::int64_t>& transmissions)
    {
        int done = 0; // servers whose last transmission is logged
        const auto all_are_logged = [&] {
            while (done < server_count &&
                   read_log(done).ends_with(
                       transmission_text(done, transmissions[static_cast<std::size_t>(done)] - 1)))
                ++done;
            return done == server_count;
        };
        EXPECT_TRUE(client.terminal().wait_until(all_are_logged, "all is logged", patience(100)));
        for (int index = 0; index < server_count; ++index)
            ASSERT_TRUE(log_is_complete(read_log(index), index,
                                        transmissions[static_cast<std::size_t>(index)]));
    }

    /// Replays the client's output, and records what was visible at each moment.
    void check_shown(const std::vector<std::int64_t>& transmissions)
    {
        const std::string& output = client.terminal().raw_output();
        terminal_screen screen{terminal_rows, terminal_columns, true};
        std::set<std::pair<int, std::int64_t>> seen;
        for (std::size_t place = 0, end = 0; place < output.size(); place = end) {
            // The emulator cannot be stopped in the middle of a sequence.
            end = std::min(output.find('\033', place + look_every_bytes), output.size());
            screen.feed(std::string_view{output}.substr(place, end - place));
            if (place >= quiet_output)
                note_messages(screen, seen);
        }
        std::int64_t missing = 0;
        for (int index = 0; index < server_count; ++index)
            for (std::int64_t number = 0; number < transmissions[static_cast<std::size_t>(index)];
                 ++number)
                missing += seen.contains({index, number}) ? 0 : 1;
        EXPECT_EQ(missing, 0) << "of " << seen.size() << " seen";
    }

    static void note_messages(const terminal_screen& screen,
                              std::set<std::pair<int, std::int64_t>>& seen)
    {
        for (int row = 1; row < terminal_rows - 8; ++row) {
            int server = 0;
            long number = 0;
            const std::string first = screen.text(row, pane_column, name_cells);
            if (std::sscanf(first.c_str(), " ACARS mode: 2 Aircraft reg: S%d", &server) != 1)
                continue;
            const std::string second = screen.text(row + 1, pane_column, name_cells * 2);
            if (std::sscanf(second.c_str(), " Message label: H1 Block id: 4 Message number: %9ld",
                            &number) == 1)
                seen.emplace(server, number);
        }
    }

    crowd servers{server_count};
    client_session client;
    int bar_row = last_row; // its row on the screen
    named_key direction = named_key::up;
    std::size_t quiet_output = 0; // bytes that came before any server talked
};

double find_percentile(const std::vector<double>& ascending, int percent)
{
    return ascending[(ascending.size() * static_cast<std::size_t>(percent) + 99) / 100 - 1];
}

void judge(const char* what, const std::vector<double>& times)
{
    std::printf("%s: %zu keys, answered in %.1f ms (median), %.1f ms (99th percentile), "
                "%.1f ms (longest)\n",
                what, times.size(), find_percentile(times, 50), find_percentile(times, 99),
                times.back());
    if (options.judges_times) {
        EXPECT_LT(find_percentile(times, 99), max_ms_to_answer);
    }
}

TEST_F(many_servers, answer_keys_and_lose_no_message)
{
    if (!allow_open_files(files_of_client))
        GTEST_SKIP() << "no program here may open " << files_of_client << " files";
    ASSERT_NO_FATAL_FAILURE(begin());
    judge("silent", time_keys(options.keys));
    quiet_output = client.terminal().raw_output().size();

    const auto begin_talk = steady_clock::now();
    const double cpu_before = cpu_ms();
    servers.talk(true);
    judge("each says something every second", time_keys(options.keys));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return std::ranges::min(servers.transmissions()) > 0; }, "all have had their turn"));
    servers.talk(false);
    const double cpu_used = cpu_ms() - cpu_before;
    const double took_s = std::chrono::duration<double>(steady_clock::now() - begin_talk).count();
    const std::vector<std::int64_t> said = servers.transmissions();
    const auto all = std::accumulate(said.begin(), said.end(), std::int64_t{0});
    std::printf("%lld messages in %.1f s, %.1f us of CPU each\n", static_cast<long long>(all),
                took_s, cpu_used * 1000 / static_cast<double>(all));
    check_logs(said);
    check_shown(said);
}

} // namespace

int main(int count, char** arguments)
{
    testing::InitGoogleTest(&count, arguments);
    for (int at = 1; at < count; ++at) {
        if (std::strcmp(arguments[at], "--judge-times") == 0)
            options.judges_times = true;
        else if (std::strcmp(arguments[at], "--keys") == 0 && at + 1 < count)
            options.keys = std::atoi(arguments[++at]);
        else
            return 2;
    }
    return RUN_ALL_TESTS();
}
