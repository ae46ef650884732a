// demo_road_test.cpp - the path of a message from end to end, with practice servers as in the demo.
#include "e2e/network_session.hpp"

#include "server/messages/transmission.hpp"
#include "server/practice/practice_server.hpp"

namespace
{

constexpr const char* addresses[] = {"127.0.0.9", "127.0.0.8"};

/// Options of a busy server: greetings, ticks, and traffic for as long as the test runs.
tovrik::server_options make_busy_options(std::size_t index)
{
    tovrik::server_options options;
    options.bind_address = addresses[index];
    options.pace_ms = 60;
    options.rate_per_minute = 600;
    options.seed = index + 1;
    options.compressed = index == 1;
    options.send_uptime = true;
    options.ask_identification = true;
    options.greetings = {{.kind = 64, .payload = "Welcome to " + alias_of(index)}};
    return options;
}

client_settings make_settings(const std::vector<std::unique_ptr<tovrik::practice_server>>& servers)
{
    client_settings settings;
    for (std::size_t index = 0; index < servers.size(); ++index)
        settings.servers.push_back({.name = addresses[index],
                                    .port = std::to_string(servers[index]->port()),
                                    .alias = alias_of(index)});
    return settings;
}

std::size_t count_occurrences(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

/// Two practice servers and a client that knows them.
class demo_road : public testing::Test
{
protected:
    void begin(client_settings settings, const tovrik::server_options& first,
               const tovrik::server_options& second)
    {
        for (const tovrik::server_options& options : {first, second}) {
            servers.push_back(std::make_unique<tovrik::practice_server>(options));
            ASSERT_TRUE(servers.back()->start()) << servers.back()->error();
        }
        settings.servers = make_settings(servers).servers;
        ASSERT_TRUE(client.start(settings, {.rows = 40, .columns = 132}));
    }

    void connect_both()
    {
        client.terminal().send("\x0C\033OB\x0C"); // ^L, down, ^L
        for (const auto& server : servers)
            ASSERT_TRUE(server->wait_for_clients(1, default_patience));
    }

    /// How often a text occurs in the log file; 0 if there is no file.
    std::size_t count_logged(const std::string& text)
    {
        return count_occurrences(client.home().read_file("logs/ACARS.log").value_or(""), text);
    }

    std::vector<std::unique_ptr<tovrik::practice_server>> servers;
    client_session client;
};

TEST_F(demo_road, live_messages_of_two_servers_are_shown_and_logged)
{
    client.home().make_folder("logs");
    ASSERT_NO_FATAL_FAILURE(begin(
        {.contact_info = true, .flight_stats = true, .save_to_one = true, .log_folder = "logs"},
        make_busy_options(0), make_busy_options(1)));
    ASSERT_NO_FATAL_FAILURE(connect_both());
    for (const auto& server : servers) {
        ASSERT_TRUE(server->wait_for_packet(101, default_patience));
        ASSERT_TRUE(server->wait_for_packet(151, default_patience));
        const auto name = server->wait_for_packet(85, default_patience);
        ASSERT_TRUE(name);
        EXPECT_EQ(name->text, "ncursesclient");
    }
    ASSERT_TRUE(client.terminal().wait_until([&] { return count_logged("\nACARS mode: ") >= 20; },
                                             "twenty transmissions are logged"));
    for (const char* part : {"ACARS mode: ", "Flight number: ", " ]-"})
        ASSERT_TRUE(client.terminal().wait_for_text(part));
    // Every transmission repaints the panes, so a look in between may find them half painted.
    for (const int row : {1, 2})
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(row).text == "*"; },
                                                 "both servers are marked"));
    client.quit();
    for (const auto& server : servers) {
        const auto farewell = server->wait_for_packet(2, default_patience);
        ASSERT_TRUE(farewell);
        EXPECT_EQ(farewell->text, "Good Bye");
        EXPECT_TRUE(server->wait_for_clients(0, default_patience));
    }
    const std::string log = client.home().read_file("logs/ACARS.log").value_or("");
    EXPECT_TRUE(log.starts_with("\nACARS mode: "));
    EXPECT_TRUE(log.ends_with(" ]-")) << "the last record is whole";
    EXPECT_EQ(count_occurrences(log, "\nOperator: "), count_occurrences(log, "\nACARS mode: "));
    EXPECT_EQ(count_occurrences(log, " ]-"), count_occurrences(log, "\nACARS mode: "));
}

TEST_F(demo_road, forwarded_messages_arrive_unchanged)
{
    tovrik::server_options plain = make_busy_options(0);
    plain.rate_per_minute = 0;
    tovrik::server_options compressed = make_busy_options(1);
    compressed.rate_per_minute = 0;
    ASSERT_NO_FATAL_FAILURE(begin({}, plain, compressed));
    ASSERT_NO_FATAL_FAILURE(connect_both());
    const auto greeted = [&] {
        return client.terminal().wait_until(
            [&] {
                return client.status_lines().back().starts_with("Uptime: ") ||
                       client.status_lines()[2].starts_with("Uptime: ");
            },
            "the greetings are over");
    };
    ASSERT_TRUE(greeted());
    const tovrik::transmission message{.mode = "X",
                                       .registration = "G-ABCD",
                                       .label = "5Z",
                                       .block_id = "7",
                                       .message_number = "M99A",
                                       .flight_number = "BA0042",
                                       .content = "ALL IS WELL\nON BOARD",
                                       .from = "LHR",
                                       .to = "CDG",
                                       .aircraft = "B744",
                                       .operator_name = "British Airways",
                                       .time = 1'700'000'000};
    const acars_message shown{.mode = "X",
                              .registration = "G-ABCD",
                              .aircraft = "B744",
                              .label = "5Z",
                              .block = "7",
                              .number = "M99A",
                              .flight = "BA0042",
                              .from = "LHR",
                              .to = "CDG",
                              .operator_name = "British Airways",
                              .content = "ALL IS WELL\nON BOARD",
                              .day = "14",
                              .month = "11",
                              .year = "2023",
                              .hour = "22",
                              .minute = "13"};
    for (const auto& server : servers)
        ASSERT_TRUE(server->push_transmission(tovrik::transmission_xml(message)));
    std::vector<std::string> both = lines_of(shown);
    both.emplace_back("");
    for (const std::string& line : lines_of(shown))
        both.push_back(line);
    ASSERT_TRUE(wait_for_message_rows(client, both));
}

TEST_F(demo_road, a_protected_server_accepts_the_right_password)
{
    tovrik::server_options guarded = make_busy_options(0);
    guarded.password = "abc";
    guarded.ask_identification = false;
    tovrik::server_options open = make_busy_options(1);
    open.rate_per_minute = 0;
    ASSERT_NO_FATAL_FAILURE(begin({}, guarded, open));
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_for_text("[ Password required ]"));
    client.terminal().send("wrong\r");
    ASSERT_TRUE(client.terminal().wait_for_text("Your password doesnt match."));
    EXPECT_FALSE(client.terminal().shows("ACARS mode: "));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.terminal().wait_for_text("Connection to alpha:"));
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_for_text("[ Password required ]"));
    client.terminal().send("abc\r");
    ASSERT_TRUE(client.terminal().wait_for_text("Password accepted. MessageAccess granted"));
    ASSERT_TRUE(client.terminal().wait_for_text("ACARS mode: "));
}

TEST_F(demo_road, a_server_that_closes_can_be_connected_again)
{
    tovrik::server_options open = make_busy_options(1);
    ASSERT_NO_FATAL_FAILURE(begin({}, make_busy_options(0), open));
    ASSERT_NO_FATAL_FAILURE(connect_both());
    ASSERT_TRUE(client.terminal().wait_for_text("ACARS mode: "));
    EXPECT_EQ(servers[0]->close_clients(), 1U);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == " "; },
                                             "the marker goes"));
    ASSERT_TRUE(servers[0]->wait_for_clients(0, default_patience));
    EXPECT_EQ(client.marker(2).text, "*");
    ASSERT_TRUE(select_row(client, 1));
    client.terminal().send_control('l');
    ASSERT_TRUE(servers[0]->wait_for_clients(1, default_patience));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == "*"; },
                                             "the marker returns"));
}

} // namespace
