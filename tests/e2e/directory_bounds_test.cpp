// directory_bounds_test.cpp - lists that are long, endless or absurd, and fetches during traffic,
// resizes and other pages.
#include "e2e/directory_session.hpp"

#include <gtest/gtest.h>

namespace
{

constexpr std::size_t max_bytes = 16UL * 1024 * 1024; // of an answer
constexpr int max_servers = 100'000;

class directory_bounds : public directory_test
{
protected:
    /// Tries ^R once; it is refused until the fetch before it has ended.
    bool a_new_fetch_begins()
    {
        if (directory.has_waiting_client())
            return true;
        const int bells = client.terminal().bells();
        client.terminal().send_control('r');
        const auto answered = [&] {
            return directory.has_waiting_client() || client.terminal().bells() > bells;
        };
        EXPECT_TRUE(client.terminal().wait_until(answered, "a fetch or a refusal"));
        return directory.has_waiting_client();
    }

    const server_settings known = settings.servers.front();
    const server_settings first{.name = "b.example", .port = "2300", .alias = "first"};
};

TEST_F(directory_bounds, ten_thousand_servers_are_added_and_can_be_used)
{
    constexpr int count = 10'000;
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->send_bytes(answer_header + many_lines(count)));
    list->close();
    ASSERT_TRUE(client.wait_for_keys());
    ASSERT_TRUE(wait_for_fetched(count + 1));
    EXPECT_EQ(client.server_row(1), " n010000.example" + std::string(9, ' '));
    EXPECT_EQ(client.server_row(20), " n009981.example" + std::string(9, ' '));
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "n009999.example"; },
                                             "the second one"));
}

TEST_F(directory_bounds, more_servers_than_the_list_may_hold_are_left_out)
{
    ASSERT_TRUE(start());
    std::string list;
    for (int number = max_servers + 50; number > 0; --number) // in list order: quick to add
        list += "n" + std::to_string(1'000'000 + number) + "\t1\t\t\t\t\t\t\t\n";
    ASSERT_TRUE(fetch_answered(answer_header + list, max_servers));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.bar_row(), 1);
}

TEST_F(directory_bounds, lines_of_a_million_letters_are_ordinary_lines)
{
    constexpr std::size_t million = 1'000'000;
    ASSERT_TRUE(start());
    const server_settings long_info{.name = "b.example", .info = std::string(million, 'i')};
    const server_settings long_name{.name = std::string(million, 'c')};
    const std::string no_fields = std::string(million, 'x') + '\n';
    const std::string tabs = std::string(million, '\t') + '\n';
    ASSERT_TRUE(fetch_answered(answer_header + no_fields + directory_line(long_info) + tabs +
                                   directory_line(long_name) +
                                   directory_line({.name = "a.example"}),
                               4));
    EXPECT_EQ(client.server_row(1), " " + std::string(21, 'c') + "...");
    client.terminal().send_key(named_key::down);
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(client.terminal().wait_for_text("[ Close Window ^I ]"));
    EXPECT_TRUE(client.terminal().shows("iiiiiiiiii"));
    client.terminal().send_key(named_key::tab);
    expect_saved({long_name, long_info, {.name = "a.example"}, known});
}

TEST_F(directory_bounds, an_endless_answer_is_read_up_to_a_bound)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    const std::string block(64UL * 1024, 'x');
    std::size_t sent = 0;
    while (sent < 8 * max_bytes && list->send_bytes(block))
        sent += block.size();
    EXPECT_LT(sent, 8 * max_bytes) << "the client goes on reading";
    EXPECT_GE(sent, max_bytes - 64UL * 1024);
    EXPECT_TRUE(wait_for_fetched(2));
}

TEST_F(directory_bounds, nothing_after_the_bound_is_read)
{
    ASSERT_TRUE(start());
    const std::string within = answer_header + directory_line(first);
    const std::string padding = std::string(1023, 'x') + '\n';
    std::string answer = within;
    while (answer.size() < max_bytes)
        answer += padding;
    answer += directory_line({.name = "c.example"});
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    list->send_bytes(answer); // the client may have hung up before the end
    list->close();
    EXPECT_TRUE(wait_for_fetched(2));
    expect_saved({first, known});
}

TEST_F(directory_bounds, a_million_empty_lines_add_nothing)
{
    ASSERT_TRUE(start());
    std::string lines;
    for (int count = 0; count < 1'000'000; ++count)
        lines += "\t\t\t\t\t\t\t\t\n";
    ASSERT_TRUE(fetch_answered(answer_header + lines + directory_line(first), 2));
}

TEST_F(directory_bounds, the_settings_page_stays_whole_in_front)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    client.terminal().send_control('e');
    ASSERT_TRUE(client.terminal().wait_for_text("exit press ^E ]"));
    const std::string page = client.terminal().screen().whole_text();
    client.terminal().send_control('r'); // refused, and out of sight
    ASSERT_TRUE(
        client.terminal().wait_until([&] { return client.terminal().bells() == 1; }, "a beep"));
    ASSERT_TRUE(list->send_bytes(answer_header + many_lines(30)));
    list->close();
    ASSERT_TRUE(client.terminal().wait_until([&] { return a_new_fetch_begins(); }, "the end"));
    EXPECT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().whole_text() == page; }, "the page as it was"));
    std::optional<server_connection> second = take_request();
    ASSERT_TRUE(second);
    second->close();
    client.terminal().send_control('e');
    ASSERT_TRUE(client.terminal().wait_for_text("^D Disconnect"));
    EXPECT_TRUE(wait_for_fetched(31));
    EXPECT_FALSE(client.terminal().shows("Settings ]"));
    EXPECT_EQ(client.server_row(1), " n000030.example" + std::string(9, ' '));
}

TEST_F(directory_bounds, the_list_is_behind_the_help)
{
    client.home().write_file("ncursesclient.hlp", "a line of help\n");
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    const std::string page = client.terminal().screen().whole_text();
    ASSERT_TRUE(list->send_bytes(answer_header + many_lines(5)));
    list->close();
    ASSERT_TRUE(client.terminal().wait_until([&] { return a_new_fetch_begins(); }, "the end"));
    client.terminal().take_in_everything();
    EXPECT_EQ(client.terminal().screen().whole_text(), page);
    std::optional<server_connection> second = take_request();
    ASSERT_TRUE(second);
    second->close();
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_for_text("n000005.example"));
    EXPECT_TRUE(wait_for_fetched(6));
}

TEST_F(directory_bounds, goes_on_through_traffic_resizes_and_keys)
{
    scripted_server server;
    settings.servers = knowing(server).servers;
    settings.flight_stats = true;
    ASSERT_TRUE(start());
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->send_bytes(answer_header));
    constexpr int rounds = 12;
    for (int round = 0; round < rounds; ++round) {
        ASSERT_TRUE(list->send_bytes(many_lines(50, "r" + std::to_string(100 + round) + "n")));
        ASSERT_TRUE(connection->send(40, "<?xml version=\"1.0\"?><tovrik><ACARS><ACARSMode>2"
                                         "</ACARSMode></ACARS></tovrik>"));
        ASSERT_TRUE(connection->send(5, "x"));
        client.terminal().resize(24 + round % 3, 80 + 10 * (round % 2));
        client.terminal().send(round % 2 == 0 ? "\005" : "\t");
    }
    list->close();
    ASSERT_TRUE(connection->send(85, "x"));
    while (connection->read_packet().value_or(server_packet{.kind = 85}).kind != 85) {
    }
    client.terminal().resize(24, 80);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.server_row(1).starts_with(" r111n000050.example"); }, "the new list"));
    expect_saved([&] {
        std::vector<server_settings> servers;
        for (int round = rounds - 1; round >= 0; --round)
            for (int number = 50; number > 0; --number)
                servers.push_back({.name = "r" + std::to_string(100 + round) + "n0000" +
                                           (number < 10 ? "0" : "") + std::to_string(number) +
                                           ".example"});
        servers.push_back(settings.servers.front());
        return servers;
    }());
}

} // namespace
