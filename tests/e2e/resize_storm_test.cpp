// resize_storm_test.cpp - thousands of sizes in a row, from a single cell to more than any screen
// has, wherever the client is: after them it looks as after one.
//
// RESIZE_STORM in the environment: how many sizes all the tests here try together; 2,000 without
// it.
#include "e2e/client_places.hpp"
#include "e2e/network_session.hpp"
#include "e2e/whole_screen.hpp"

#include <csignal>
#include <cstdlib>
#include <memory>
#include <random>
#include <sys/wait.h>

namespace
{

constexpr int most_rows = 300;
constexpr int most_columns = 500;
constexpr int usual_count = 2'000;
constexpr int least_rows = 7; // of a terminal that a start takes
constexpr int least_columns = 29;
constexpr int calm_ms_per_second = 50;

struct terminal_size {
    int rows;
    int columns;
};

constexpr terminal_size edges[] = {
    {1, 1},  {1, most_columns}, {most_rows, 1}, {most_rows, most_columns},
    {2, 2},  {6, 80},           {7, 28},        {7, 29},
    {8, 27}, {24, 26},          {24, 27},       {24, 28},
    {24, 80}};

/// Sizes drawn by lot, the same ones in every run.
class size_lot
{
public:
    explicit size_lot(unsigned seed) : random(seed) {}

    terminal_size any()
    {
        if (number(1, 8) == 1)
            return edges[number(0, static_cast<int>(std::size(edges)) - 1)];
        return {number(1, most_rows), number(1, most_columns)};
    }
    terminal_size for_a_start()
    {
        return {number(least_rows, most_rows), number(least_columns, most_columns)};
    }
    bool coin()
    {
        return number(0, 1) == 1;
    }

private:
    int number(int least, int most)
    {
        return std::uniform_int_distribution<int>{least, most}(random);
    }

    std::mt19937 random;
};

/// A test's part of all sizes; there are as many parts as places, and two more.
int sizes_of_a_test()
{
    const char* wanted = std::getenv("RESIZE_STORM");
    const int count = wanted != nullptr ? std::atoi(wanted) : usual_count;
    return count / (static_cast<int>(client_places.size()) + 2) + 1;
}

bool has_settled(placed_client& client)
{
    return has_heard(client.program, SIGWINCH);
}

void resize(placed_client& client, const terminal_size& size)
{
    client.terminal().resize(size.rows, size.columns);
    client.terminal().forget_raw_output();
}

/// Every other size is waited for; the others come while the client is busy with those before. The
/// emulator is spared what was drawn for other sizes than its own, which ends it now and then.
testing::AssertionResult storm(placed_client& client, size_lot& lot, int count)
{
    for (int number = 0; number < count; ++number) {
        const terminal_size size = lot.any();
        client.terminal().resize_unseen(size.rows, size.columns);
        if (number + 1 < count && lot.coin())
            continue;
        testing::AssertionResult settled =
            client.terminal().wait_until([&] { return has_settled(client); }, "a size is taken");
        if (!settled)
            return settled << "size number " << number;
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult are_alike(placed_client& one, placed_client& other)
{
    return one.terminal().wait_until(
        [&] {
            return has_settled(one) && has_settled(other) &&
                   all_cells(one.terminal().screen()) == all_cells(other.terminal().screen());
        },
        "the screen after a storm is\n" + other.terminal().description());
}

/// Has both clients show the same, and compares.
testing::AssertionResult show_alike(placed_client& one, placed_client& other)
{
    for (placed_client* client : {&one, &other}) {
        server_connection& connection = *client->connection;
        const bool is_sent = connection.send(plain_packet(document_of({.content = "AFTER IT"}))) &&
                             connection.send(103, "a notice") && connection.send(85, "x");
        if (!is_sent || !connection.read_packet())
            return testing::AssertionFailure() << "no answer\n" << client->terminal().description();
    }
    return are_alike(one, other);
}

/// No test ends with this size: a change to the present one is none.
const client_start another_size{.rows = 25, .columns = 99};

/// A client that is where the place says and has had one single change of size.
std::unique_ptr<placed_client> resized_once(const client_place& place, const terminal_size& size,
                                            const client_settings& settings = {})
{
    auto client = std::make_unique<placed_client>(place.needs_silent_server);
    EXPECT_TRUE(client->start(settings, another_size));
    EXPECT_TRUE(place.go(*client));
    resize(*client, size);
    return client;
}

class resize_storm : public testing::TestWithParam<client_place>
{
};

INSTANTIATE_TEST_SUITE_P(in, resize_storm, testing::ValuesIn(client_places), place_name);

TEST_P(resize_storm, leaves_the_screen_as_a_single_change_does)
{
    size_lot lot(static_cast<unsigned>(std::string_view{GetParam().name}.size()));
    placed_client client(GetParam().needs_silent_server);
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(GetParam().go(client));
    const int parts = 3;
    for (int part = 0; part < parts; ++part) {
        ASSERT_TRUE(storm(client, lot, sizes_of_a_test() / parts));
        const terminal_size last = part == 0 ? terminal_size{24, 80} : lot.any();
        SCOPED_TRACE(std::to_string(last.rows) + " x " + std::to_string(last.columns));
        resize(client, last);
        ASSERT_TRUE(are_alike(client, *resized_once(GetParam(), last)));
    }
}

TEST(resize_storms, with_bursts_of_packets_leave_nothing_of_either)
{
    size_lot lot(1);
    placed_client client;
    const client_settings settings{.contact_info = true, .flight_stats = true};
    ASSERT_TRUE(client.start(settings));
    client.client.clock().set_alarm_pace(5);
    const acars_message message{
        .content = "BETWEEN TWO SIZES", .contacts = "9", .daily_flights = "1000000"};
    server_connection& connection = *client.connection;
    constexpr int sizes_of_a_burst = 6;
    for (int done = 0; done < sizes_of_a_test(); done += sizes_of_a_burst) {
        for (int copies = 0; copies < 5; ++copies) {
            ASSERT_TRUE(connection.send(plain_packet(document_of(message))));
            ASSERT_TRUE(connection.send(compressed_packet(document_of(message))));
            ASSERT_TRUE(connection.send(103, "a notice\nof two lines"));
            ASSERT_TRUE(connection.send(5, "x"));
        }
        ASSERT_TRUE(storm(client, lot, sizes_of_a_burst));
        ASSERT_TRUE(connection.send(85, "x"));
        ASSERT_TRUE(connection.read_packet()) << "after " << done << " sizes";
    }
    client.client.clock().set_alarm_pace(calm_ms_per_second);
    for (const terminal_size& last : {terminal_size{24, 80}, {60, 200}}) {
        const std::unique_ptr<placed_client> calm =
            resized_once(client_places.front(), last, settings);
        resize(client, last);
        ASSERT_TRUE(are_alike(client, *calm));
        ASSERT_TRUE(show_alike(client, *calm));
    }
}

/// Resizes a client from its very start until it has started; false if it has refused to, which it
/// does for a terminal that is too small at the wrong moment.
bool storm_at_start(placed_client& client, size_lot& lot, bool any_size, int& count)
{
    const terminal_size first = lot.for_a_start();
    client.launch({}, {.rows = first.rows, .columns = first.columns});
    const bool ended = static_cast<bool>(client.terminal().wait_until(
        [&] {
            const terminal_size size = any_size ? lot.any() : lot.for_a_start();
            client.terminal().resize_unseen(size.rows, size.columns);
            ++count;
            return client.client.clock().alarms_set() > 0 || client.terminal().error_text() != "";
        },
        "a start or a refusal"));
    EXPECT_TRUE(ended);
    return client.terminal().error_text().empty();
}

TEST(resize_storms, at_the_start_are_taken_into_account)
{
    size_lot lot(2);
    int started = 0;
    for (int count = 0; count < sizes_of_a_test();) {
        placed_client client;
        const bool any_size = lot.coin();
        if (!storm_at_start(client, lot, any_size, count)) {
            EXPECT_TRUE(any_size);
            const std::optional<int> status = client.client.wait_for_exit();
            EXPECT_TRUE(status && WIFEXITED(*status) && WEXITSTATUS(*status) == 255);
            EXPECT_EQ(client.terminal().error_text(), "Unable to init ncurses windows\n");
            continue;
        }
        ++started;
        client.program = client.terminal().process_id();
        ASSERT_TRUE(storm(client, lot, 2));
        const terminal_size last = lot.any();
        SCOPED_TRACE(std::to_string(last.rows) + " x " + std::to_string(last.columns));
        resize(client, last);
        ASSERT_TRUE(are_alike(client, *resized_once(client_places.front(), last)));
    }
    EXPECT_GT(started, 0);
}

} // namespace
