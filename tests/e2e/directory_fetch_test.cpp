// directory_fetch_test.cpp - fetching the list of servers: the request, the lines, the messages,
// and what does not change.
#include "e2e/directory_session.hpp"
#include "e2e/network_session.hpp"

#include <gtest/gtest.h>

namespace
{

class directory_fetch : public directory_test
{
protected:
    const server_settings known = settings.servers.front();
};

TEST_F(directory_fetch, sends_exactly_this_request_and_closes)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    EXPECT_TRUE(client.wait_for_status("Fetch Serverlist from localhost...", pairs::notice));
    EXPECT_FALSE(list->has_unread_bytes());
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line({.name = "b.example"})));
    list->half_close();
    EXPECT_TRUE(wait_for_fetched(2));
    EXPECT_TRUE(list->wait_for_close());
    EXPECT_EQ(list->received(), directory_request);
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.server_row(1), " b.example" + std::string(15, ' '));
    EXPECT_EQ(client.server_row(2), " alpha" + std::string(19, ' '));
}

TEST_F(directory_fetch, turns_lines_into_servers_by_their_fields)
{
    ASSERT_TRUE(start());
    const std::string list =
        "i.example\t2300\t\tEDDF\tSome info\t\tFrankfurt\t\t\n" // all fields that are used
        "h.example\t0\t\t\t\t\t\t\t\n"                          // no port
        "g.example\tx\ta\t\t\tb\t\tc\td\n"                      // no number
        "f.example\t2301\t\t\tM\xFCnchen\t\t\t\t\r\n"           // a different end of line
        "eight.example\t1\t3\t4\t5\t6\t7\t8\n"                  // one field too few
        "ten.example\t1\t3\t4\t5\t6\t7\t8\t9\t10\n"             // one field too many
        "\n"
        "words without any tab\n"
        "\t2300\t\t\t\t\tnameless\t\t\n"
        "e.example\t2302 \t\t\t\t\tafter them\t\t\n"
        "last.example\t1\t3\t4\t5\t6\t7\t8\t9"; // no line feed
    EXPECT_TRUE(fetch_answered(answer_header + list, 6));
    expect_saved({{.name = "i.example",
                   .port = "2300",
                   .alias = "Frankfurt",
                   .location = "EDDF",
                   .info = "Some info"},
                  {.name = "h.example", .port = "2202"},
                  {.name = "g.example", .port = "2202"},
                  {.name = "f.example", .port = "2301", .info = "M\xFCnchen"},
                  {.name = "e.example", .port = "2302", .alias = "after them"},
                  known});
}

TEST_F(directory_fetch, known_servers_win_and_duplicates_count_once)
{
    settings.servers = {{.name = "b.example", .port = "2300", .alias = "mine", .info = "kept"},
                        known};
    ASSERT_TRUE(start());
    const server_settings other_port{.name = "b.example", .port = "2301", .alias = "another"};
    const std::string list =
        directory_line({.name = "b.example", .port = "2300", .alias = "theirs", .info = "lost"}) +
        directory_line(other_port) +
        directory_line({.name = "b.example", .port = "2301", .alias = "again"});
    EXPECT_TRUE(fetch_answered(answer_header + list, 3));
    std::optional<server_connection> again = fetch();
    ASSERT_TRUE(again);
    ASSERT_TRUE(again->send_bytes(answer_header + list + directory_line({.name = "a.example"})));
    again->close();
    EXPECT_TRUE(wait_for_fetched(4));
    expect_saved({settings.servers[0], other_port, {.name = "a.example"}, known});
}

TEST_F(directory_fetch, answers_without_a_list_change_nothing)
{
    const std::string line = directory_line({.name = "b.example"});
    for (const std::string& answer :
         {std::string{}, std::string{"HTTP/1.0 200 OK"}, line + line,
          "HTTP/1.0 200 OK\n\n" + line,              // not the end of a header
          answer_header, answer_header + "\r\n\r\n", // nothing after it
          "HTTP/1.0 200 OK\r\n" + std::string(1, '\0') + "\r\n\r\n" + line}) {
        SCOPED_TRACE(answer);
        scripted_server place;
        client_session other;
        ASSERT_TRUE(other.start(settings, with_directory(place.port())));
        other.terminal().send_control('r');
        std::optional<server_connection> list = place.accept();
        ASSERT_TRUE(list);
        ASSERT_TRUE(list->read_bytes(directory_request.size()));
        ASSERT_TRUE(list->send_bytes(answer));
        list->close();
        EXPECT_TRUE(other.wait_for_status(fetched(1), pairs::server_text, false));
        EXPECT_EQ(other.server_row(1), " alpha" + std::string(19, ' '));
    }
}

TEST_F(directory_fetch, an_answer_may_come_in_pieces)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    const std::string answer = answer_header + directory_line({.name = "b.example"});
    for (const char byte : answer)
        ASSERT_TRUE(list->send_bytes({&byte, 1}));
    list->close();
    EXPECT_TRUE(wait_for_fetched(2));
    EXPECT_EQ(client.server_row(1), " b.example" + std::string(15, ' '));
}

TEST_F(directory_fetch, bytes_of_a_list_do_not_drive_the_terminal)
{
    ASSERT_TRUE(start());
    ASSERT_TRUE(fetch_answered(
        answer_header + directory_line({.name = "b\a.example", .alias = "\033[7mtwo\a\x9B"}), 2));
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.terminal().raw_output().find("\033[7mtwo"), std::string::npos);
    EXPECT_EQ(client.server_row(2), " alpha" + std::string(19, ' '));
}

TEST_F(directory_fetch, runs_only_one_at_a_time)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    for (int bells = 1; bells <= 2; ++bells) {
        client.terminal().send_control('r');
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.terminal().bells() == bells; },
                                                 "a beep"));
        EXPECT_TRUE(
            client.wait_for_status("Unable to fetch serverlist from localhost", pairs::error));
    }
    EXPECT_FALSE(directory.has_waiting_client());
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line({.name = "b.example"})));
    list->close();
    EXPECT_TRUE(wait_for_fetched(2));
    EXPECT_FALSE(directory.has_waiting_client());
    EXPECT_TRUE(fetch_answered(answer_header + directory_line({.name = "c.example"}), 3));
    EXPECT_EQ(client.terminal().bells(), 2);
}

TEST_F(directory_fetch, a_directory_that_refuses_or_has_no_address_leaves_the_count_unchanged)
{
    const closed_port nobody;
    for (const bool has_address : {true, false}) {
        client_start how = with_directory(nobody.port());
        if (!has_address)
            how.environment["TEST_RESOLVE_FAILS"] = "1";
        client_session other;
        ASSERT_TRUE(other.start(with_aliases({"alpha", "beta", "gamma"}), how));
        other.terminal().send_control('r');
        EXPECT_TRUE(other.wait_for_status("Fetch Serverlist from localhost...", pairs::notice));
        EXPECT_TRUE(other.wait_for_status(fetched(3), pairs::server_text, false));
        EXPECT_EQ(other.terminal().bells(), 0);
    }
}

TEST_F(directory_fetch, a_slow_look_up_does_not_delay_the_keys)
{
    client_start how;
    how.environment["TEST_RESOLVE_DELAY_MS"] = "3600000";
    ASSERT_TRUE(start(how));
    client.terminal().send_control('r');
    ASSERT_TRUE(client.wait_for_status("Fetch Serverlist from localhost...", pairs::notice));
    ASSERT_TRUE(client.wait_for_keys());
    ASSERT_TRUE(client.wait_for_polls());
    client.terminal().send_control('r');
    EXPECT_TRUE(client.wait_for_status("Unable to fetch serverlist from localhost", pairs::error));
}

TEST_F(directory_fetch, a_directory_may_be_silent_for_longer_than_it_is_waited_for)
{
    ASSERT_TRUE(start());
    client.clock().set_speed(500);
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    const std::int64_t some_waits_later = client.clock().now_ms() + 120'000;
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.clock().now_ms() > some_waits_later; }, "two minutes of the client's"));
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line({.name = "b.example"})));
    list->close();
    EXPECT_TRUE(wait_for_fetched(2));
}

TEST_F(directory_fetch, hangs_up_even_while_an_attempt_to_connect_holds_its_socket)
{
    const silent_port nowhere;
    settings.servers = {{.port = std::to_string(nowhere.port()), .alias = "alpha"}};
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    client.terminal().send_control('l');
    const auto is_under_way = [&] { return !children_of(client.terminal().process_id()).empty(); };
    ASSERT_TRUE(client.terminal().wait_until(is_under_way, "an attempt"));
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line({.name = "b.example"})));
    list->half_close();
    EXPECT_TRUE(list->wait_for_close());
    EXPECT_TRUE(is_under_way());
}

TEST_F(directory_fetch, a_reset_is_the_end_of_the_answer)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    list->reset();
    EXPECT_TRUE(wait_for_fetched(1));
}

TEST_F(directory_fetch, begins_by_itself_when_configured)
{
    settings.fetch_on_start = true;
    settings.servers.clear();
    ASSERT_TRUE(start());
    std::optional<server_connection> list = take_request();
    ASSERT_TRUE(list);
    EXPECT_TRUE(client.wait_for_status("Fetch Serverlist from localhost...", pairs::notice));
    EXPECT_EQ(client.bar_row(), 0);
    const server_settings first{.name = "b.example", .port = "2300", .alias = "first"};
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    list->close();
    EXPECT_TRUE(wait_for_fetched(1));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "first"; },
                                             "the first server under the bar"));
    expect_saved({first});
}

TEST_F(directory_fetch, does_not_begin_by_itself_unless_configured)
{
    ASSERT_TRUE(start());
    ASSERT_TRUE(client.wait_for_polls());
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(directory.has_waiting_client());
}

TEST_F(directory_fetch, a_shorter_name_covers_a_longer_one_whole)
{
    settings.servers = with_aliases({"a-name-longer-than-its-room"}).servers;
    ASSERT_TRUE(start());
    ASSERT_EQ(client.server_row(1), " a-name-longer-than-it...");
    ASSERT_TRUE(fetch_answered(answer_header + many_lines(1), 2));
    EXPECT_EQ(client.server_row(1), " n000001.example" + std::string(9, ' '));
    EXPECT_EQ(client.server_row(2), " a-name-longer-than-it...");
}

TEST_F(directory_fetch, the_bar_stays_on_its_row)
{
    settings.servers = with_aliases({"alpha", "beta", "gamma"}).servers;
    ASSERT_TRUE(start());
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "beta"; }, "beta"));
    ASSERT_TRUE(fetch_answered(answer_header + many_lines(4), 7));
    EXPECT_EQ(client.bar_row(), 2);
    EXPECT_EQ(client.bar_text(), "n000003.example");
    client.terminal().send_control('d');
    EXPECT_TRUE(client.wait_for_status("You are not connected to n000003.example", pairs::error));
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "n000002.example"; },
                                             "the next one"));
}

TEST_F(directory_fetch, a_connection_moves_to_another_row_and_is_marked_at_the_next_tick)
{
    scripted_server server;
    settings.servers = knowing(server, "connected").servers;
    ASSERT_TRUE(start());
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(fetch_answered(answer_header + many_lines(3), 4));
    EXPECT_EQ(client.bar_row(), 1);
    for (int number = 1; number <= 5; ++number)
        EXPECT_EQ(client.marker(number).text, " ") << "a list drawn anew has no marks";
    ASSERT_TRUE(connection->send(5, "x"));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(5).text == "-"; },
                                             "a mark one row below the server"));
    ASSERT_TRUE(connection->send(103, "still there"));
    EXPECT_TRUE(client.wait_for_status("still there", pairs::plain, false));
}

TEST_F(directory_fetch, closes_the_information_window)
{
    ASSERT_TRUE(start());
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(client.terminal().wait_for_text("[ Close Window ^I ]"));
    ASSERT_TRUE(fetch_answered(answer_header + many_lines(1), 2));
    for (const char* text : {"Close Window", "ServerFlags", "Special Keys", "ServerID"})
        EXPECT_FALSE(client.terminal().shows(text)) << text;
}

} // namespace
