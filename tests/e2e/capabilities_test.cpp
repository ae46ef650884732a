// capabilities_test.cpp - the capabilities that a server reports, and which keys they enable.
#include "e2e/network_session.hpp"

#include <ostream>

namespace
{

/// A key that needs a service, and the text that refuses it.
struct gated_key {
    char letter; // with CTRL
    const char* refusal;
};

constexpr gated_key updates{'a', "Database updates are not allowed on alpha"};
constexpr gated_key mailings{'j', "Daily mailings are not supported on alpha"};
constexpr gated_key reports{'o', "Reports are not supported on alpha"};
constexpr gated_key pager_lists{'p', "Pagerlists are not supported on alpha"};

/// A capability document, and which of the four keys it enables.
struct opening {
    const char* name;
    const char* elements;
    bool updates = false; // and mailings with them
    bool reports = false;
    bool pager_lists = false;
};

std::ostream& operator<<(std::ostream& out, const opening& row)
{
    return out << row.name;
}

constexpr opening openings[] = {
    {"nothing", ""},
    {"mailing_alone", "<Mailing>1</Mailing>"},
    {"updates", "<DBModify>1</DBModify>", true},
    {"modify_flags", "<ModifyFlags>4</ModifyFlags>", true},
    {"modify_flags_without_updates", "<DBModify>0</DBModify><ModifyFlags>1</ModifyFlags>", true},
    {"updates_without_modify_flags", "<DBModify>1</DBModify><ModifyFlags>0</ModifyFlags>", true},
    {"both_zero", "<DBModify>0</DBModify><ModifyFlags>0</ModifyFlags>"},
    {"reports", "<Reports>1</Reports>", false, true},
    {"pager", "<Pager>1</Pager>", false, false, true},
    {"zeroes", "<Reports>0</Reports><Pager>0</Pager>"},
    {"no_numbers", "<Reports>yes</Reports><Pager></Pager>"},
    {"leading_digits", "<Reports>2x</Reports><Pager>-1</Pager>", false, true, true},
    {"all", "<DBModify>1</DBModify><Reports>1</Reports><Pager>1</Pager>", true, true, true},
};

class capabilities_open : public testing::TestWithParam<opening>
{
protected:
    /// Presses a key and leaves what it may have opened; true if the key was refused with a beep.
    bool is_refused(const gated_key& key)
    {
        const int bells = client.terminal().bells();
        client.terminal().send_control(key.letter);
        client.terminal().send("\033");
        EXPECT_TRUE(client.wait_for_keys());
        const bool refused = client.terminal().shows(key.refusal);
        EXPECT_EQ(client.terminal().bells() - bells, refused ? 1 : 0) << key.refusal;
        return refused;
    }

    scripted_server server;
    client_session client;
};

TEST_P(capabilities_open, enable_exactly_the_keys_that_they_name)
{
    ASSERT_TRUE(client.start(knowing(server), wide_terminal));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(connection->send(capabilities_packet(GetParam().elements)));
    ASSERT_TRUE(wait_for_notice(client, *connection, "known"));
    EXPECT_EQ(is_refused(updates), !GetParam().updates);
    EXPECT_EQ(is_refused(mailings), !GetParam().updates);
    EXPECT_EQ(is_refused(reports), !GetParam().reports);
    EXPECT_EQ(is_refused(pager_lists), !GetParam().pager_lists);
}

INSTANTIATE_TEST_SUITE_P(all, capabilities_open, testing::ValuesIn(openings));

/// A wide client connected to `count` servers.
struct connected_client {
    explicit connected_client(int count) : servers(count) {}
    testing::AssertionResult begin()
    {
        if (testing::AssertionResult started = client.start(servers.settings(), wide_terminal);
            !started)
            return started;
        connections = connect_all(client, servers);
        return connections.size() == servers.count()
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "no connection";
    }
    testing::AssertionResult say(std::size_t server, std::string_view elements)
    {
        if (!connections[server].send(capabilities_packet(elements)))
            return testing::AssertionFailure() << "the client takes no bytes";
        return testing::AssertionSuccess();
    }
    listed_servers servers;
    client_session client;
    std::vector<server_connection> connections;
};

TEST(capabilities, the_servers_identity_is_shown_in_plain_white)
{
    connected_client run(1);
    ASSERT_TRUE(run.begin());
    ASSERT_TRUE(run.say(0, "<Version>1.0</Version><ServerUUID>b-1234</ServerUUID>"));
    ASSERT_TRUE(run.client.wait_for_status("ServerID: b-1234", pairs::plain, false));
    EXPECT_EQ(run.client.terminal().bells(), 0);
    EXPECT_FALSE(run.connections[0].has_unread_bytes());
}

TEST(capabilities, nothing_is_shown_without_an_identity)
{
    connected_client run(1);
    ASSERT_TRUE(run.begin());
    const std::vector<std::string> before = run.client.status_lines();
    ASSERT_TRUE(run.say(0, "<Version>1.0</Version><NeedAuth>0</NeedAuth>"));
    ASSERT_TRUE(run.say(0, "<ServerUUID></ServerUUID><NeedAuth></NeedAuth>"));
    ASSERT_TRUE(run.say(0, "<NeedAuth>none</NeedAuth>"));
    ASSERT_TRUE(run.connections[0].send(41, "no document"));
    ASSERT_TRUE(wait_for_notice(run.client, run.connections[0], "silence so far"));
    EXPECT_EQ(run.client.status_lines()[2], before[3]);
    EXPECT_FALSE(run.connections[0].has_unread_bytes());
}

TEST(capabilities, later_ones_replace_earlier_ones)
{
    connected_client run(1);
    ASSERT_TRUE(run.begin());
    ASSERT_TRUE(run.say(0, "<Reports>1</Reports>"));
    ASSERT_TRUE(run.say(0, "<Pager>1</Pager>"));
    ASSERT_TRUE(wait_for_notice(run.client, run.connections[0], "known"));
    run.client.terminal().send_control('o');
    ASSERT_TRUE(run.client.wait_for_status(reports.refusal, pairs::error));
}

TEST(capabilities, apply_to_one_server)
{
    connected_client run(2);
    ASSERT_TRUE(run.begin());
    ASSERT_TRUE(run.say(0, "<Reports>1</Reports>"));
    ASSERT_TRUE(wait_for_notice(run.client, run.connections[0], "known"));
    run.client.terminal().send_control('o'); // the bar is on the second server
    ASSERT_TRUE(run.client.wait_for_status("Reports are not supported on bravo", pairs::error));
}

TEST(duplicates, the_second_connection_to_one_server_is_closed_with_good_bye)
{
    connected_client run(3);
    ASSERT_TRUE(run.begin());
    ASSERT_TRUE(run.say(0, "<ServerUUID>same</ServerUUID>"));
    ASSERT_TRUE(run.client.wait_for_status("ServerID: same", pairs::plain, false));
    ASSERT_TRUE(run.say(1, "<ServerUUID>same, but for this</ServerUUID>"));
    ASSERT_TRUE(run.client.wait_for_status("ServerID: same, but for this", pairs::plain, false));
    ASSERT_TRUE(run.say(2, "<ServerUUID>same</ServerUUID>"));
    ASSERT_TRUE(
        run.client.wait_for_status("You are already connected to this server!", pairs::error));
    EXPECT_TRUE(run.client.terminal().wait_until([&] { return run.client.terminal().bells() == 1; },
                                                 "the beep after the line"));
    EXPECT_EQ(run.connections[2].read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    EXPECT_TRUE(run.connections[2].wait_for_close());
    ASSERT_TRUE(run.client.terminal().wait_until([&] { return run.client.marker(3).text == " "; },
                                                 "its own marker goes"));
    EXPECT_EQ(run.client.marker(1).text, "*");
    EXPECT_EQ(run.client.marker(2).text, "*");
    ASSERT_TRUE(wait_for_notice(run.client, run.connections[0], "the first lives on"));
    run.client.terminal().send_control('d');
    ASSERT_TRUE(run.client.wait_for_status("You are not connected to charlie", pairs::error));
}

TEST(duplicates, a_server_may_repeat_itself)
{
    connected_client run(1);
    ASSERT_TRUE(run.begin());
    for (int times = 0; times < 3; ++times)
        ASSERT_TRUE(run.say(0, "<ServerUUID>same</ServerUUID>"));
    ASSERT_TRUE(wait_for_notice(run.client, run.connections[0], "still here"));
    EXPECT_EQ(run.client.status_lines()[0], "ServerID: same");
    EXPECT_EQ(run.client.terminal().bells(), 0);
}

TEST(duplicates, servers_without_an_identity_are_not_duplicates)
{
    connected_client run(2);
    ASSERT_TRUE(run.begin());
    ASSERT_TRUE(run.say(0, "<Version>1</Version>"));
    ASSERT_TRUE(run.say(1, "<Version>1</Version>"));
    ASSERT_TRUE(wait_for_notice(run.client, run.connections[1], "both are welcome"));
    EXPECT_EQ(run.client.terminal().bells(), 0);
}

TEST(duplicates, the_second_is_accepted_once_the_first_is_gone)
{
    connected_client run(2);
    ASSERT_TRUE(run.begin());
    ASSERT_TRUE(run.say(0, "<ServerUUID>same</ServerUUID>"));
    ASSERT_TRUE(run.client.wait_for_status("ServerID: same", pairs::plain, false));
    ASSERT_TRUE(run.connections[0].send(3, "x"));
    ASSERT_TRUE(wait_for_last_status(run.client, "Connection closed by server"));
    ASSERT_TRUE(run.say(1, "<ServerUUID>same</ServerUUID>"));
    ASSERT_TRUE(wait_for_notice(run.client, run.connections[1], "welcome"));
    EXPECT_EQ(run.client.terminal().bells(), 0);
}

TEST(duplicates, a_password_is_asked_for_before_they_are_detected)
{
    connected_client run(2);
    ASSERT_TRUE(run.begin());
    ASSERT_TRUE(run.say(0, "<ServerUUID>same</ServerUUID>"));
    ASSERT_TRUE(run.client.wait_for_status("ServerID: same", pairs::plain, false));
    ASSERT_TRUE(run.say(1, "<ServerUUID>same</ServerUUID><NeedAuth>1</NeedAuth>"));
    ASSERT_TRUE(run.client.terminal().wait_for_text("[ Password required ]"));
    EXPECT_FALSE(run.client.terminal().shows("already connected"));
    run.client.terminal().send("abc\r");
    EXPECT_EQ(run.connections[1].read_packet(),
              (server_packet{.kind = 81, .payload = "900150983cd24fb0d6963f7d28e17f72"}));
    EXPECT_EQ(run.connections[1].read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    ASSERT_TRUE(
        run.client.wait_for_status("You are already connected to this server!", pairs::error));
}

} // namespace
