// log_files_test.cpp - transmissions in log files, byte for byte.
#include "e2e/network_session.hpp"

namespace
{

/// Two servers, and a client that is not yet running.
class log_files : public testing::Test
{
protected:
    testing::AssertionResult begin(client_settings settings)
    {
        settings.servers = servers.settings().servers;
        if (testing::AssertionResult started = client.start(settings, wide_terminal); !started)
            return started;
        connections = connect_all(client, servers);
        return connections.size() == servers.count()
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "no connection";
    }

    testing::AssertionResult send(std::size_t server, const acars_message& message)
    {
        return connections[server].send(plain_packet(document_of(message)))
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "the client takes no bytes";
    }

    listed_servers servers{2};
    client_session client;
    std::vector<server_connection> connections;
};

const acars_message first{.flight = "F1", .content = "with\ntwo lines"};
const acars_message second{.flight = "F2"};

TEST_F(log_files, a_servers_log_is_in_the_folder_of_its_name)
{
    client.home().make_folder("alpha");
    client.home().make_folder("bravo");
    client.home().write_file("bravo/logs.log", "from before");
    ASSERT_TRUE(begin({.acars_log = true, .log_folder = "logs"}));
    ASSERT_TRUE(
        client.wait_for_status("Logfile 'bravo/logs.log' successfully opened", pairs::notice));
    ASSERT_TRUE(wait_for_file(client, "alpha/logs.log", ""));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_file(client, "alpha/logs.log", text_of(first)));
    ASSERT_TRUE(connections[0].send(compressed_packet(document_of(second))));
    ASSERT_TRUE(wait_for_file(client, "alpha/logs.log", text_of(first) + text_of(second)));
    ASSERT_TRUE(send(1, second));
    ASSERT_TRUE(wait_for_file(client, "bravo/logs.log", "from before" + text_of(second)));
    client.quit();
    EXPECT_EQ(client.home().read_file("alpha/logs.log"), text_of(first) + text_of(second));
    EXPECT_EQ(client.home().files(),
              (std::vector<std::string>{"alpha/", "alpha/logs.log", "bravo/", "bravo/logs.log",
                                        "ncursesclient.conf"}));
}

TEST_F(log_files, the_default_folder_gives_a_hidden_file)
{
    client.home().make_folder("alpha");
    ASSERT_TRUE(begin({.acars_log = true, .log_folder = "./"}));
    ASSERT_TRUE(client.wait_for_status("Logfile 'bravo/./.log' not opened", pairs::notice));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_file(client, "alpha/.log", text_of(first)));
}

TEST_F(log_files, a_log_that_cannot_be_opened_costs_only_the_log)
{
    client.home().write_file("alpha", "a file where a folder is wanted");
    ASSERT_TRUE(begin({.acars_log = true, .log_folder = "logs"}));
    EXPECT_TRUE(client.terminal().shows("Logfile 'alpha/logs.log' not opened"));
    ASSERT_TRUE(client.wait_for_status("Logfile 'bravo/logs.log' not opened", pairs::notice));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of(first)));
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.home().files(), (std::vector<std::string>{"alpha", "ncursesclient.conf"}));
}

TEST_F(log_files, a_name_that_is_too_long_is_not_opened)
{
    ASSERT_TRUE(begin({.save_to_one = true, .log_folder = std::string(300, 'd')}));
    EXPECT_TRUE(client.terminal().shows("Logfile '" + std::string(50, 'd')));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of(first)));
    EXPECT_EQ(client.home().files(), std::vector<std::string>{"ncursesclient.conf"});
}

TEST_F(log_files, the_shared_log_takes_all_servers_and_is_opened_once)
{
    client.home().make_folder("logs");
    ASSERT_TRUE(begin({.save_to_one = true, .log_folder = "logs"}));
    ASSERT_TRUE(
        client.wait_for_status("Logfile 'logs/ACARS.log' successfully opened", pairs::notice));
    // The second connection adds no line.
    EXPECT_EQ(client.status_lines()[1], "Logfile 'logs/ACARS.log' successfully opened");
    EXPECT_TRUE(client.status_lines()[3].starts_with("Successfully connected bravo"));
    ASSERT_TRUE(send(1, second));
    ASSERT_TRUE(wait_for_file(client, "logs/ACARS.log", text_of(second)));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_file(client, "logs/ACARS.log", text_of(second) + text_of(first)));
    client.quit();
    EXPECT_EQ(client.home().files(),
              (std::vector<std::string>{"logs/", "logs/ACARS.log", "ncursesclient.conf"}));
}

TEST_F(log_files, the_shared_log_is_written_with_both_switches_on)
{
    client.home().make_folder("alpha");
    client.home().write_file("ACARS.log", "earlier\n");
    ASSERT_TRUE(begin({.acars_log = true, .save_to_one = true, .log_folder = "."}));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_file(client, "ACARS.log", "earlier\n" + text_of(first)));
    EXPECT_EQ(client.home().files(),
              (std::vector<std::string>{"ACARS.log", "alpha/", "ncursesclient.conf"}));
}

TEST_F(log_files, the_working_folder_is_named_in_full_without_a_folder)
{
    ASSERT_TRUE(begin({.save_to_one = true, .log_folder = ""}));
    ASSERT_TRUE(client.wait_for_status(
        "Logfile '" + client.home().path_of("ACARS.log") + "' successfully opened", pairs::notice));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_file(client, "ACARS.log", text_of(first)));
}

TEST_F(log_files, there_are_none_without_a_switch)
{
    client.home().make_folder("alpha");
    ASSERT_TRUE(begin({.log_folder = "."}));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of(first)));
    EXPECT_FALSE(client.terminal().shows("Logfile"));
    EXPECT_EQ(client.home().files(), (std::vector<std::string>{"alpha/", "ncursesclient.conf"}));
}

TEST_F(log_files, messages_about_a_transmission_are_not_logged)
{
    client.home().make_folder("logs");
    ASSERT_TRUE(begin(
        {.contact_info = true, .flight_stats = true, .save_to_one = true, .log_folder = "logs"}));
    acars_message message = first;
    message.contacts = "5 contacts with this aircraft";
    message.daily_flights = "77";
    ASSERT_TRUE(send(0, message));
    ASSERT_TRUE(wait_for_notice(client, connections[0], "done"));
    EXPECT_EQ(client.home().read_file("logs/ACARS.log"), text_of(first));
}

TEST_F(log_files, keep_the_bytes_that_the_screen_cannot_show)
{
    client.home().make_folder("logs");
    ASSERT_TRUE(begin({.save_to_one = true, .log_folder = "logs"}));
    const acars_message message{.operator_name = "a\tb\x01\x1B[1m\x7F\x80\x9B\xA0\xE9\xFF"};
    ASSERT_TRUE(send(0, message));
    ASSERT_TRUE(wait_for_file(client, "logs/ACARS.log", text_of(message)));
}

TEST_F(log_files, a_servers_log_continues_after_the_server_has_closed_the_connection)
{
    client.home().make_folder("alpha");
    client.home().make_folder("bravo");
    ASSERT_TRUE(begin({.acars_log = true, .log_folder = "l"}));
    ASSERT_TRUE(select_row(client, 1));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(connections[0].send(3, "x"));
    ASSERT_TRUE(wait_for_last_status(client, "Connection closed by server"));
    std::optional<server_connection> again = client.connect_selected(servers[0]);
    ASSERT_TRUE(again);
    connections[0] = std::move(*again);
    ASSERT_TRUE(send(0, second));
    ASSERT_TRUE(wait_for_file(client, "alpha/l.log", text_of(first) + text_of(second)));
}

TEST_F(log_files, a_servers_log_is_closed_with_its_connection_and_opened_with_the_next)
{
    client.home().make_folder("alpha");
    client.home().make_folder("bravo");
    ASSERT_TRUE(begin({.acars_log = true, .log_folder = "l"}));
    ASSERT_TRUE(select_row(client, 1));
    ASSERT_TRUE(send(0, first));
    ASSERT_TRUE(wait_for_file(client, "alpha/l.log", text_of(first)));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.terminal().wait_for_text("Connection to alpha:"));
    client.home().write_file("alpha/l.log", "new file\n");
    client.terminal().send_control('l');
    ASSERT_TRUE(wait_for_last_status(client, "Logfile 'alpha/l.log' successfully opened"));
    std::optional<server_connection> again = servers[0].accept();
    ASSERT_TRUE(again);
    connections[0] = std::move(*again);
    ASSERT_TRUE(send(0, second));
    ASSERT_TRUE(wait_for_file(client, "alpha/l.log", "new file\n" + text_of(second)));
}

} // namespace
