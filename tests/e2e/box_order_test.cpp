// box_order_test.cpp - boxes that servers open: whose they are, which one is open, and what becomes
// of those that nobody answers.
#include "e2e/network_session.hpp"
#include "support/compressed.hpp"

#include <ostream>

namespace
{

constexpr const char* digest_of_abc = "900150983cd24fb0d6963f7d28e17f72";
constexpr const char* digest_of_secret = "5ebe2294ecd0e0f08eab7690d2a6ee69";
constexpr const char* password_title = "[ Password required ]";
constexpr int answer_time_s = 11; // more than any box waits
constexpr int quiet_time_s = 61;  // more than a server's boxes stay closed

bool send_demand(server_connection& server)
{
    return server.send(capabilities_packet("<NeedAuth>1</NeedAuth>"));
}

bool send_list(server_connection& server)
{
    return server.send(89, "D-AIQA\tFRA\tLH400");
}

bool send_report(server_connection& server)
{
    const std::string bytes = compressed("the text");
    return server.send(74, std::to_string(bytes.size()) + "\t100") &&
           server.send({.kind = 205, .payload = bytes});
}

/// A box that a server can open at any time.
struct box_case {
    const char* name;
    bool (*send)(server_connection&);
    const char* sign; // what is on the screen as long as it is open
};

std::ostream& operator<<(std::ostream& out, const box_case& box)
{
    return out << box.name;
}

const box_case box_cases[] = {
    {"a_demand", send_demand, password_title},
    {"a_list", send_list, "[ Press ESC to close ]"},
    {"a_report", send_report, "[ Save ZOBE Style Report as... ]"},
};

/// Two servers: alpha, which opens boxes, and bravo, which is selected and offers everything. The
/// client's clock stands still, so that boxes stay open.
class box_order : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(client.start(servers.settings()));
        connections = connect_all(client, servers);
        ASSERT_EQ(connections.size(), servers.count());
        ASSERT_TRUE(bravo().send(capabilities_packet("<Reports>1</Reports><Pager>1</Pager>")));
        ASSERT_TRUE(wait_for_notice(client, bravo(), "begin"));
        client.clock().stop();
        terminal().forget_raw_output();
    }

    server_connection& alpha()
    {
        return connections[0];
    }
    server_connection& bravo()
    {
        return connections[1];
    }
    terminal_session& terminal()
    {
        return client.terminal();
    }

    /// Waits for the password box of this server, whole and in its place.
    testing::AssertionResult box_asks_for(const std::string& name, const std::string& typed = "")
    {
        return terminal().wait_until(
            [&] {
                const terminal_screen& screen = terminal().screen();
                return screen.text(8, 20, 42) == "┌─[ Password required ]──────────────────┐" &&
                       screen.text(9, 20, 42) ==
                           "│ " + typed + "_" + std::string(38 - typed.size(), ' ') + "│" &&
                       screen.text(10, 20, 42) ==
                           "└─[ " + name + " ]──────[ RET=OK - ESC=CANCEL ]─┘";
            },
            "the box of " + name);
    }

    /// Whether the screen has shown this since forget_raw_output, even if only for a moment.
    bool has_shown(const char* text)
    {
        terminal().take_in_everything();
        return terminal().raw_output().find(text) != std::string::npos;
    }

    listed_servers servers{2};
    client_session client;
    std::vector<server_connection> connections;
};

TEST_F(box_order, a_demand_waits_until_the_users_own_prompt_is_answered)
{
    terminal().send_control('o');
    ASSERT_TRUE(terminal().wait_for_text("[ Date of report (DD/MM/YYYY) ]"));
    terminal().send("16/11");
    ASSERT_TRUE(terminal().wait_for_text("│ 16/11_"));
    ASSERT_TRUE(send_demand(alpha()));
    ASSERT_TRUE(alpha().send(103, "behind the demand"));
    for (const char* text : {"one", "two", "three", "four"})
        ASSERT_TRUE(bravo().send(103, text));
    ASSERT_TRUE(client.wait_for_status("four", pairs::plain, false)) << "others are served";
    terminal().send("/2026");
    ASSERT_TRUE(terminal().wait_for_text("│ 16/11/2026_"));
    EXPECT_FALSE(has_shown("Password"));
    EXPECT_FALSE(has_shown("behind"));
    terminal().send("\r");
    EXPECT_EQ(bravo().read_packet(),
              (server_packet{.kind = 70, .payload = "1794787201\t*#cnam#\t#cnum#\t0\t0"}));
    ASSERT_TRUE(box_asks_for("alpha"));
    EXPECT_FALSE(alpha().has_unread_bytes());
    EXPECT_FALSE(has_shown("behind"));
    terminal().send("secret\r");
    EXPECT_EQ(alpha().read_packet(), (server_packet{.kind = 81, .payload = digest_of_secret}));
    ASSERT_TRUE(client.wait_for_status("behind the demand", pairs::plain, false));
    EXPECT_FALSE(bravo().has_unread_bytes());
}

TEST_F(box_order, a_demand_waits_for_the_whole_dialog_of_a_menu)
{
    terminal().send_control('p');
    ASSERT_TRUE(terminal().wait_for_text("[ Press 1-3 or ESC to quit ]"));
    ASSERT_TRUE(send_demand(alpha()));
    ASSERT_TRUE(client.wait_for_polls());
    terminal().send("3");
    ASSERT_TRUE(terminal().wait_for_text("[ Enter your email address ]"));
    terminal().send("me@example.com\r");
    ASSERT_TRUE(terminal().wait_for_text("[ Your subscription code ]"));
    ASSERT_TRUE(client.wait_for_polls());
    terminal().send("12");
    ASSERT_TRUE(terminal().wait_for_text("│ 12_"));
    EXPECT_FALSE(has_shown("Password"));
    terminal().send("\r");
    EXPECT_EQ(bravo().read_packet(),
              (server_packet{.kind = 89, .payload = "me@example.com", .param1 = 12}));
    ASSERT_TRUE(box_asks_for("alpha"));
}

TEST_F(box_order, what_opens_no_box_does_not_wait)
{
    terminal().send_control('o');
    ASSERT_TRUE(terminal().wait_for_text("[ Date of report (DD/MM/YYYY) ]"));
    ASSERT_TRUE(alpha().send(capabilities_packet("<NeedAuth>0</NeedAuth>"
                                                 "<ServerUUID>7</ServerUUID>")));
    ASSERT_TRUE(client.wait_for_status("ServerID: 7", pairs::plain, std::nullopt));
    const std::string bytes = compressed("the text");
    ASSERT_TRUE(alpha().send(74, std::to_string(bytes.size()) + "\t100"));
    ASSERT_TRUE(alpha().send({.kind = 205, .payload = bytes.substr(1)}));
    ASSERT_TRUE(alpha().send(103, "all was taken"));
    ASSERT_TRUE(client.wait_for_status("all was taken", pairs::plain, false));
    EXPECT_TRUE(terminal().shows("[ Date of report (DD/MM/YYYY) ]"));
}

TEST_F(box_order, two_servers_ask_one_after_the_other)
{
    ASSERT_TRUE(send_demand(alpha()));
    ASSERT_TRUE(send_demand(bravo()));
    ASSERT_TRUE(box_asks_for("alpha"));
    terminal().send("abc");
    ASSERT_TRUE(box_asks_for("alpha", "abc"));
    terminal().send("\r");
    ASSERT_TRUE(box_asks_for("bravo"));
    EXPECT_EQ(alpha().read_packet(), (server_packet{.kind = 81, .payload = digest_of_abc}));
    terminal().send("secret\r");
    EXPECT_EQ(bravo().read_packet(), (server_packet{.kind = 81, .payload = digest_of_secret}));
    EXPECT_FALSE(alpha().has_unread_bytes());
}

TEST_F(box_order, a_server_that_leaves_while_its_demand_waits_does_no_harm)
{
    terminal().send_control('o');
    ASSERT_TRUE(terminal().wait_for_text("[ Date of report (DD/MM/YYYY) ]"));
    ASSERT_TRUE(send_demand(alpha()));
    ASSERT_TRUE(alpha().send(3, "bye"));
    ASSERT_TRUE(client.wait_for_polls());
    alpha().half_close();
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(box_asks_for("alpha"));
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    EXPECT_TRUE(alpha().wait_for_close());
    ASSERT_TRUE(wait_for_notice(client, bravo(), "all is well"));
}

class unasked_boxes : public box_order, public testing::WithParamInterface<box_case>
{
protected:
    /// Has alpha open its box.
    testing::AssertionResult opens()
    {
        if (!GetParam().send(alpha()))
            return testing::AssertionFailure() << "the client takes no bytes";
        return terminal().wait_for_text(GetParam().sign);
    }

    /// Has alpha open its box, and nobody answer it.
    testing::AssertionResult is_left_alone()
    {
        if (testing::AssertionResult open = opens(); !open)
            return open;
        client.clock().jump(answer_time_s);
        testing::AssertionResult gone = terminal().wait_for_no_text(GetParam().sign);
        return gone ? client.wait_for_polls() : gone; // now its end has been noted, too
    }

    testing::AssertionResult is_escaped()
    {
        testing::AssertionResult open = opens();
        terminal().send_key(named_key::escape);
        return open ? terminal().wait_for_no_text(GetParam().sign) : open;
    }

    /// Has alpha try again, and waits until that has been handled.
    testing::AssertionResult stays_closed()
    {
        terminal().take_in_everything();
        terminal().forget_raw_output();
        const bool is_sent = GetParam().send(alpha());
        const std::string notice = "after try " + std::to_string(++tries);
        testing::AssertionResult handled = wait_for_notice(client, alpha(), notice);
        if (is_sent && handled && has_shown(GetParam().sign))
            return testing::AssertionFailure() << "it has been open";
        return handled;
    }

    int tries = 0;
};

INSTANTIATE_TEST_SUITE_P(all, unasked_boxes, testing::ValuesIn(box_cases),
                         [](const auto& about) { return about.param.name; });

TEST_P(unasked_boxes, do_not_open_after_two_that_nobody_answered)
{
    ASSERT_TRUE(is_left_alone());
    ASSERT_TRUE(is_left_alone());
    for (int count = 1; count <= 45; ++count) {
        ASSERT_TRUE(GetParam().send(alpha()));
        ASSERT_TRUE(bravo().send(103, "message " + std::to_string(count)));
    }
    terminal().forget_raw_output();
    ASSERT_TRUE(client.wait_for_status("message 45", pairs::plain, false));
    ASSERT_TRUE(stays_closed());
    EXPECT_FALSE(alpha().has_unread_bytes());
    EXPECT_EQ(client.marker(1).text, "*");
}

TEST_P(unasked_boxes, of_another_server_open)
{
    ASSERT_TRUE(is_left_alone());
    ASSERT_TRUE(is_left_alone());
    ASSERT_TRUE(GetParam().send(bravo()));
    ASSERT_TRUE(terminal().wait_for_text(GetParam().sign));
}

TEST_P(unasked_boxes, open_once_a_minute_while_nobody_answers)
{
    ASSERT_TRUE(is_left_alone());
    ASSERT_TRUE(is_left_alone());
    for (int round = 0; round < 2; ++round) {
        client.clock().jump(quiet_time_s - 2);
        ASSERT_TRUE(stays_closed());
        client.clock().jump(2);
        ASSERT_TRUE(is_left_alone());
        ASSERT_TRUE(stays_closed());
    }
}

TEST_P(unasked_boxes, open_as_long_as_the_user_answers)
{
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(is_left_alone());
        ASSERT_TRUE(is_escaped());
    }
    ASSERT_TRUE(is_left_alone());
    ASSERT_TRUE(is_left_alone());
    ASSERT_TRUE(stays_closed());
}

TEST_P(unasked_boxes, open_again_on_a_new_connection)
{
    ASSERT_TRUE(is_left_alone());
    ASSERT_TRUE(is_left_alone());
    ASSERT_TRUE(stays_closed());
    ASSERT_TRUE(select_row(client, 1));
    terminal().send_control('d');
    ASSERT_TRUE(alpha().wait_for_close());
    std::optional<server_connection> again = client.connect_selected(servers[0]);
    ASSERT_TRUE(again);
    connections[0] = std::move(*again);
    ASSERT_TRUE(opens());
}

TEST_P(unasked_boxes, wait_no_longer_if_the_clock_is_set_back)
{
    constexpr int far_back_s = 1'000'000;
    ASSERT_TRUE(opens());
    client.clock().jump(-far_back_s);
    client.clock().set_speed(100);
    EXPECT_TRUE(terminal().wait_for_no_text(GetParam().sign));
}

TEST_F(box_order, lists_that_the_user_asks_for_open)
{
    for (int round = 0; round < 3; ++round) {
        terminal().send_control('p');
        ASSERT_TRUE(terminal().wait_for_text("[ Press 1-3 or ESC to quit ]"));
        terminal().send("3");
        ASSERT_TRUE(terminal().wait_for_text("[ Enter your email address ]"));
        terminal().send("me@example.com\r");
        ASSERT_TRUE(terminal().wait_for_text("[ Your subscription code ]"));
        terminal().send("12\r");
        EXPECT_EQ(bravo().read_packet(),
                  (server_packet{.kind = 89, .payload = "me@example.com", .param1 = 12}));
        ASSERT_TRUE(send_list(bravo()));
        ASSERT_TRUE(terminal().wait_for_text("[ Press ESC to close ]"));
        client.clock().jump(answer_time_s);
        ASSERT_TRUE(terminal().wait_for_no_text("[ Press ESC to close ]"));
    }
}

TEST_F(box_order, reports_that_the_user_asks_for_open)
{
    for (int round = 0; round < 3; ++round) {
        terminal().send_control('o');
        ASSERT_TRUE(terminal().wait_for_text("[ Date of report (DD/MM/YYYY) ]"));
        terminal().send("16/11/2026\r");
        ASSERT_TRUE(bravo().read_packet());
        ASSERT_TRUE(send_report(bravo()));
        ASSERT_TRUE(terminal().wait_for_text("[ Save ZOBE Style Report as... ]"));
        client.clock().jump(answer_time_s);
        ASSERT_TRUE(terminal().wait_for_no_text("[ Save ZOBE Style Report as... ]"));
    }
}

TEST_F(box_order, a_menu_waits_no_longer_if_the_clock_is_set_back)
{
    terminal().send_control('p');
    ASSERT_TRUE(terminal().wait_for_text("[ Press 1-3 or ESC to quit ]"));
    client.clock().jump(-1'000'000);
    client.clock().set_speed(100);
    EXPECT_TRUE(terminal().wait_for_no_text("[ Press 1-3 or ESC to quit ]"));
}

} // namespace
