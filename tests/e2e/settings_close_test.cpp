// settings_close_test.cpp - what happens behind the settings page, and what closing it applies:
// log files and the servers' uplinks.
#include "e2e/settings_session.hpp"

#include <filesystem>
#include <gtest/gtest.h>

namespace
{

const std::string uplinks_wanted{"\x5F\0\0\0\x01\0\0\0\0\0\0\0"
                                 "0",
                                 13};
const std::string uplinks_unwanted{"\x5F\0\0\0\x01\0\0\0\0\0\0\0"
                                   "1",
                                   13};
const std::string transmission = "<?xml version=\"1.0\"?><tovrik><ACARS><ACARSMode>2</ACARSMode>"
                                 "</ACARS></tovrik>";

class settings_close : public settings_test
{
protected:
    void SetUp() override
    {
        client.home().make_folder("alpha");
        settings = knowing(server);
        settings.log_folder = "logs";
        settings.save_on_exit = true;
    }

    void connect()
    {
        connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
    }
    [[nodiscard]] testing::AssertionResult toggle(char letter, int row, const std::string& mark)
    {
        client.terminal().send_meta(letter);
        return mark_becomes(row, mark);
    }
    /// Whether the client has a file in its home open.
    bool has_open(const std::string& name)
    {
        const std::filesystem::path wanted = client.home().path_of(name);
        const std::filesystem::path folder =
            "/proc/" + std::to_string(client.terminal().process_id()) + "/fd";
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator{folder, ignored})
            if (std::filesystem::read_symlink(entry, ignored) == wanted)
                return true;
        return false;
    }

    scripted_server server;
    client_settings settings;
    std::optional<server_connection> connection;
};

TEST_F(settings_close, opening_sends_nothing_and_closing_tells_about_uplinks)
{
    ASSERT_TRUE(client.start(settings));
    connect();
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(toggle('d', 9, "X"));
    EXPECT_FALSE(connection->has_unread_bytes());
    ASSERT_TRUE(close_page());
    EXPECT_EQ(connection->read_bytes(uplinks_unwanted.size()), uplinks_unwanted);
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(toggle('d', 9, " "));
    ASSERT_TRUE(close_page());
    EXPECT_EQ(connection->read_bytes(uplinks_wanted.size()), uplinks_wanted);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST_F(settings_close, every_connected_server_is_told)
{
    scripted_server other;
    settings.servers.push_back({.port = std::to_string(other.port()), .alias = "other"});
    settings.servers.push_back({.name = "0.example", .alias = "idle"});
    const bool in_order = server.port() < other.port(); // equal names are sorted by port
    ASSERT_TRUE(client.start(settings));
    std::optional<server_connection> upper = client.connect_selected(in_order ? server : other);
    ASSERT_TRUE(upper);
    client.terminal().send_key(named_key::down);
    std::optional<server_connection> lower = client.connect_selected(in_order ? other : server);
    ASSERT_TRUE(lower);
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(close_page());
    for (server_connection* told : {&*upper, &*lower})
        EXPECT_EQ(told->read_bytes(uplinks_wanted.size()), uplinks_wanted);
}

TEST_F(settings_close, a_shared_log_closes_the_servers_logs_and_their_box_keeps_its_mark)
{
    settings.acars_log = true;
    ASSERT_TRUE(client.start(settings));
    connect();
    ASSERT_TRUE(has_open("alpha/logs.log"));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(toggle('t', 7, "X"));
    ASSERT_TRUE(close_page());
    EXPECT_EQ(connection->read_bytes(uplinks_wanted.size()), uplinks_wanted);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(has_open("alpha/logs.log"));
    ASSERT_TRUE(open_page());
    EXPECT_EQ(client.terminal().cell(2, 3), pair_cell(pairs::success, true, "X"))
        << "the old mark stays";
    EXPECT_EQ(client.terminal().cell(7, 3), pair_cell(pairs::success, true, "X"));
    ASSERT_TRUE(close_page());
    client.quit();
    client_settings saved = settings;
    saved.acars_log = false;
    saved.save_to_one = true;
    EXPECT_EQ(client.home().read_config(), config_text(saved));
}

TEST_F(settings_close, a_hot_key_alone_applies_nothing)
{
    settings.acars_log = true;
    settings.save_to_one = true;
    ASSERT_TRUE(client.start(settings));
    connect();
    client.terminal().send_meta('d');
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(connection->has_unread_bytes());
    connection->send(3, "x");
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    client.quit();
    client_settings saved = settings;
    saved.no_uplinks = true;
    EXPECT_EQ(client.home().read_config(), config_text(saved)) << "both logs are still asked for";
}

TEST_F(settings_close, opens_and_closes_the_log_of_a_connected_server)
{
    ASSERT_TRUE(client.start(settings));
    connect();
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(toggle('a', 2, "X"));
    EXPECT_FALSE(has_open("alpha/logs.log"));
    ASSERT_TRUE(close_page());
    ASSERT_TRUE(
        client.wait_for_status("Logfile 'alpha/logs.log' successfully opened", pairs::notice));
    EXPECT_TRUE(has_open("alpha/logs.log"));
    ASSERT_TRUE(connection->send(40, transmission));
    ASSERT_TRUE(client.terminal().wait_for_text("ACARS mode: 2"));
    const std::optional<std::string> logged = client.home().read_file("alpha/logs.log");
    ASSERT_TRUE(logged);
    EXPECT_TRUE(logged->starts_with("\nACARS mode: 2  Aircraft reg:  []\n"));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(toggle('a', 2, " "));
    EXPECT_TRUE(has_open("alpha/logs.log"));
    ASSERT_TRUE(close_page());
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(has_open("alpha/logs.log"));
    ASSERT_TRUE(connection->send(40, transmission));
    ASSERT_TRUE(connection->send(103, "after it"));
    ASSERT_TRUE(client.wait_for_status("after it", pairs::plain, false));
    EXPECT_EQ(client.home().read_file("alpha/logs.log"), logged);
}

TEST_F(settings_close, a_log_that_cannot_be_opened_is_reported)
{
    settings.log_folder = "absent/deeper";
    ASSERT_TRUE(client.start(settings));
    connect();
    client.terminal().send_meta('a');
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(close_page());
    EXPECT_TRUE(
        client.wait_for_status("Logfile 'alpha/absent/deeper.log' not opened", pairs::notice));
}

TEST_F(settings_close, a_shared_log_switched_on_while_connected_begins_with_the_next_connection)
{
    client.home().make_folder("logs");
    ASSERT_TRUE(client.start(settings));
    connect();
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(toggle('t', 7, "X"));
    ASSERT_TRUE(close_page());
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(client.home().read_file("logs/ACARS.log"));
    client.terminal().send_control('d');
    ASSERT_TRUE(connection->wait_for_close());
    connect();
    ASSERT_TRUE(
        client.wait_for_status("Logfile 'logs/ACARS.log' successfully opened", pairs::notice));
    EXPECT_TRUE(has_open("logs/ACARS.log"));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(toggle('t', 7, " "));
    ASSERT_TRUE(close_page());
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(has_open("logs/ACARS.log"));
}

TEST_F(settings_close, notices_transmissions_and_ticks_wait_behind_the_page)
{
    settings.flight_stats = true;
    settings.contact_info = true;
    ASSERT_TRUE(client.start(settings));
    connect();
    ASSERT_TRUE(open_page());
    const std::string page = client.terminal().screen().whole_text();
    client.terminal().forget_raw_output();
    ASSERT_TRUE(connection->send(103, "a quiet notice"));
    ASSERT_TRUE(connection->send(5, "x"));
    ASSERT_TRUE(connection->send(
        40, "<?xml version=\"1.0\"?><tovrik><ACARS><ACARSMode>2</ACARSMode></ACARS><Contacts>3 "
            "contacts</Contacts><ContactData><DailyFlights>7</DailyFlights></ContactData>"
            "</tovrik>"));
    ASSERT_TRUE(connection->send(85, "x"));
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 85, .payload = "ncursesclient"}))
        << "all that was sent before has been dealt with";
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_EQ(client.terminal().screen().whole_text(), page);
    for (const char* hidden : {"quiet", "ACARS mode", "3 contacts", "Unique", "Answering"})
        EXPECT_EQ(client.terminal().raw_output().find(hidden), std::string::npos) << hidden;
    ASSERT_TRUE(close_page());
    EXPECT_TRUE(client.wait_for_status("a quiet notice", pairs::plain, false));
    EXPECT_TRUE(client.terminal().wait_for_text("ACARS mode: 2"));
    EXPECT_TRUE(client.terminal().shows("3 contacts"));
    EXPECT_FALSE(client.terminal().shows("Unique Flights"));
    EXPECT_EQ(client.marker(1).text, "*") << "no tick has turned it";
}

} // namespace
