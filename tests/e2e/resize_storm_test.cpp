// resize_storm_test.cpp - thousands of sizes in a row, from one cell to larger than any screen,
// wherever the client is: afterwards it looks as it does after a single resize.
//
// RESIZE_STORM in the environment: how many sizes the tests here try in total; 2,000 without it.
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

constexpr int max_rows = 300;
constexpr int max_columns = 500;
constexpr int usual_count = 2'000;
constexpr int min_rows = 7; // of a terminal on which the client starts
constexpr int min_columns = 29;
constexpr int calm_ms_per_second = 50;

struct terminal_size {
    int rows;
    int columns;
};

constexpr terminal_size edges[] = {
    {1, 1},  {1, max_columns}, {max_rows, 1}, {max_rows, max_columns},
    {2, 2},  {6, 80},          {7, 28},       {7, 29},
    {8, 27}, {24, 26},         {24, 27},      {24, 28},
    {24, 80}};

/// Random sizes, the same ones in every run.
class random_sizes
{
public:
    explicit random_sizes(unsigned seed) : random(seed) {}

    terminal_size next()
    {
        if (number(1, 8) == 1)
            return edges[number(0, static_cast<int>(std::size(edges)) - 1)];
        return {number(1, max_rows), number(1, max_columns)};
    }
    terminal_size next_for_start()
    {
        return {number(min_rows, max_rows), number(min_columns, max_columns)};
    }
    bool flip_coin()
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

/// A test's share of all sizes; there are as many shares as places, and two more.
int count_sizes_per_test()
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

/// Waits for about every other size; the others come while the client is busy with earlier ones.
/// The emulator skips output drawn for other sizes than its own, which sometimes crashes it.
testing::AssertionResult send_storm(placed_client& client, random_sizes& generator, int count)
{
    for (int number = 0; number < count; ++number) {
        const terminal_size size = generator.next();
        client.terminal().resize_unseen(size.rows, size.columns);
        if (number + 1 < count && generator.flip_coin())
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

/// Makes both clients show the same, and compares.
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

/// No test ends with this size, since a resize to the present size changes nothing.
const client_start another_size{.rows = 25, .columns = 99};

/// A client at the given place after one single resize.
std::unique_ptr<placed_client> start_resized_client(const client_place& place,
                                                    const terminal_size& size,
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

TEST_P(resize_storm, leaves_the_screen_as_a_single_resize_does)
{
    random_sizes generator(static_cast<unsigned>(std::string_view{GetParam().name}.size()));
    placed_client client(GetParam().needs_silent_server);
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(GetParam().go(client));
    const int parts = 3;
    for (int part = 0; part < parts; ++part) {
        ASSERT_TRUE(send_storm(client, generator, count_sizes_per_test() / parts));
        const terminal_size last = part == 0 ? terminal_size{24, 80} : generator.next();
        SCOPED_TRACE(std::to_string(last.rows) + " x " + std::to_string(last.columns));
        resize(client, last);
        ASSERT_TRUE(are_alike(client, *start_resized_client(GetParam(), last)));
    }
}

TEST(resize_storms, leave_no_trace_together_with_bursts_of_packets)
{
    random_sizes generator(1);
    placed_client client;
    const client_settings settings{.contact_info = true, .flight_stats = true};
    ASSERT_TRUE(client.start(settings));
    client.client.clock().set_alarm_pace(5);
    const acars_message message{
        .content = "BETWEEN TWO SIZES", .contacts = "9", .daily_flights = "1000000"};
    server_connection& connection = *client.connection;
    constexpr int sizes_of_a_burst = 6;
    for (int done = 0; done < count_sizes_per_test(); done += sizes_of_a_burst) {
        for (int copies = 0; copies < 5; ++copies) {
            ASSERT_TRUE(connection.send(plain_packet(document_of(message))));
            ASSERT_TRUE(connection.send(compressed_packet(document_of(message))));
            ASSERT_TRUE(connection.send(103, "a notice\nof two lines"));
            ASSERT_TRUE(connection.send(5, "x"));
        }
        ASSERT_TRUE(send_storm(client, generator, sizes_of_a_burst));
        ASSERT_TRUE(connection.send(85, "x"));
        ASSERT_TRUE(connection.read_packet()) << "after " << done << " sizes";
    }
    client.client.clock().set_alarm_pace(calm_ms_per_second);
    for (const terminal_size& last : {terminal_size{24, 80}, {60, 200}}) {
        const std::unique_ptr<placed_client> calm =
            start_resized_client(client_places.front(), last, settings);
        resize(client, last);
        ASSERT_TRUE(are_alike(client, *calm));
        ASSERT_TRUE(show_alike(client, *calm));
    }
}

/// Resizes a client from its very start until it has started; false if it has refused to start,
/// which it does on a terminal that is too small at the wrong moment.
bool start_in_storm(placed_client& client, random_sizes& generator, bool any_size, int& count)
{
    const terminal_size first = generator.next_for_start();
    client.launch({}, {.rows = first.rows, .columns = first.columns});
    const bool ended = static_cast<bool>(client.terminal().wait_until(
        [&] {
            const terminal_size size = any_size ? generator.next() : generator.next_for_start();
            client.terminal().resize_unseen(size.rows, size.columns);
            ++count;
            return client.client.clock().alarms_set() > 0 || client.terminal().error_text() != "";
        },
        "a start or a refusal"));
    EXPECT_TRUE(ended);
    return client.terminal().error_text().empty();
}

TEST(resize_storms, are_handled_at_the_start)
{
    random_sizes generator(2);
    int started = 0;
    for (int count = 0; count < count_sizes_per_test();) {
        placed_client client;
        const bool any_size = generator.flip_coin();
        if (!start_in_storm(client, generator, any_size, count)) {
            EXPECT_TRUE(any_size);
            const std::optional<int> status = client.client.wait_for_exit();
            EXPECT_TRUE(status && WIFEXITED(*status) && WEXITSTATUS(*status) == 255);
            EXPECT_EQ(client.terminal().error_text(), "Unable to init ncurses windows\n");
            continue;
        }
        ++started;
        client.program = client.terminal().process_id();
        ASSERT_TRUE(send_storm(client, generator, 2));
        const terminal_size last = generator.next();
        SCOPED_TRACE(std::to_string(last.rows) + " x " + std::to_string(last.columns));
        resize(client, last);
        ASSERT_TRUE(are_alike(client, *start_resized_client(client_places.front(), last)));
    }
    EXPECT_GT(started, 0);
}

} // namespace
