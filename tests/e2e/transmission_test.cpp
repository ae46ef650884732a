// transmission_test.cpp - transmissions on the screen: their text, their place, their surroundings.
#include "e2e/network_session.hpp"

namespace
{

constexpr int text_column = 28;

/// A wide client connected to one server.
class transmission : public testing::Test
{
protected:
    testing::AssertionResult begin(client_settings settings = {},
                                   const client_start& how = wide_terminal)
    {
        settings.servers = servers.settings().servers;
        if (testing::AssertionResult started = client.start(settings, how); !started)
            return started;
        connection = client.connect_selected(servers[0]);
        return connection ? testing::AssertionSuccess()
                          : testing::AssertionFailure() << "no connection";
    }

    listed_servers servers{1};
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(transmission, is_shown_in_six_lines_without_a_content)
{
    ASSERT_TRUE(begin());
    const acars_message message;
    ASSERT_TRUE(connection->send(plain_packet(document_of(message))));
    const std::vector<std::string> lines = {
        "ACARS mode: 2  Aircraft reg: D-AIQA [A320]",
        "Message label: H1 Block id: 4  Message number: M07A",
        "Flight number: LH0400  Flight: FRA-JFK",
        "Operator: Lufthansa",
        "-------------------------------------------------[ 20/11/2026 14:05 ]-",
    };
    ASSERT_TRUE(wait_for_message_rows(client, lines));
    const int bottom = message_bottom_row(client);
    EXPECT_EQ(bottom, 15);
    const std::vector<std::string> rows = client.message_lines();
    EXPECT_EQ(rows[15], "") << "the row that it was printed on has been scrolled";
    EXPECT_EQ(rows[9], "") << "the first line of the six is empty";
    for (int row = bottom - 5; row < bottom; ++row) {
        const screen_cell first = client.terminal().cell(row, text_column);
        EXPECT_EQ(first, pair_cell(pairs::plain, false, first.text));
        EXPECT_EQ(client.terminal().cell(row, text_column - 1).text, " ");
    }
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST_F(transmission, is_shown_in_eight_lines_with_a_content)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(connection->send(plain_packet(document_of({.content = "POSITION REPORT"}))));
    ASSERT_TRUE(wait_for_message_rows(
        client,
        {"", "ACARS mode: 2  Aircraft reg: D-AIQA [A320]",
         "Message label: H1 Block id: 4  Message number: M07A",
         "Flight number: LH0400  Flight: FRA-JFK", "Operator: Lufthansa", "Message content: -",
         "POSITION REPORT",
         "-------------------------------------------------[ 20/11/2026 14:05 ]-", ""},
        0));
}

TEST_F(transmission, an_empty_content_counts_as_no_content)
{
    ASSERT_TRUE(begin());
    std::string document = document_of({.operator_name = "Nobody"});
    document.insert(document.find("</ACARS>"),
                    "<Authorized><MessageContent></MessageContent></Authorized>");
    ASSERT_TRUE(connection->send(plain_packet(document)));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.operator_name = "Nobody"})));
    EXPECT_FALSE(client.terminal().shows("Message content"));
}

TEST_F(transmission, a_content_of_several_lines_keeps_them)
{
    ASSERT_TRUE(begin());
    const acars_message message{.content = "FIRST LINE\n SECOND, INDENTED\nTHIRD"};
    ASSERT_TRUE(connection->send(plain_packet(document_of(message))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of(message)));
}

TEST_F(transmission, looks_the_same_when_compressed)
{
    ASSERT_TRUE(begin());
    const acars_message message{.content = "COMPRESSED"};
    ASSERT_TRUE(connection->send(compressed_packet(document_of(message))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of(message)));
}

TEST_F(transmission, may_be_longer_than_a_packet_when_compressed)
{
    ASSERT_TRUE(begin());
    acars_message message{.content = "AFTER MUCH ELSE"};
    std::string document = document_of(message);
    std::string filler;
    for (int count = 0; count < 2000; ++count)
        filler += "<F>x</F>";
    document.insert(document.find("<ACARS>"), filler);
    const server_packet packet = compressed_packet(document);
    ASSERT_GT(document.size(), 10000U);
    ASSERT_LT(packet.payload.size(), 4000U);
    ASSERT_TRUE(connection->send(packet));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of(message)));
}

TEST_F(transmission, the_previous_one_moves_up_with_an_empty_row_between)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(connection->send(plain_packet(document_of({.flight = "XX0001"}))));
    ASSERT_TRUE(connection->send(plain_packet(document_of({.flight = "XX0002"}))));
    std::vector<std::string> both = lines_of({.flight = "XX0001"});
    both.emplace_back("");
    for (const std::string& line : lines_of({.flight = "XX0002"}))
        both.push_back(line);
    ASSERT_TRUE(wait_for_message_rows(client, both));
}

TEST_F(transmission, old_ones_disappear_at_the_top_of_the_scrolling_region)
{
    ASSERT_TRUE(begin());
    for (int number = 1; number <= 4; ++number)
        ASSERT_TRUE(
            connection->send(plain_packet(document_of({.flight = "N" + std::to_string(number)}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "N4"})));
    EXPECT_FALSE(client.terminal().shows("Flight number: N2"));
    EXPECT_EQ(client.message_lines()[0], "") << "the first row does not scroll";
    EXPECT_TRUE(client.terminal().shows("Flight number: N3"));
}

TEST_F(transmission, the_bottom_row_follows_the_height_of_the_terminal)
{
    ASSERT_TRUE(begin({}, {.rows = 40, .columns = 132}));
    ASSERT_TRUE(connection->send(plain_packet(document_of({}))));
    EXPECT_EQ(message_bottom_row(client), 31);
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
}

TEST_F(transmission, the_date_is_wrapped_inside_the_pane_on_80_columns)
{
    ASSERT_TRUE(begin({}, {}));
    ASSERT_TRUE(connection->send(plain_packet(document_of({}))));
    std::vector<std::string> lines = lines_of({});
    lines.back() = std::string(49, '-') + "[";
    ASSERT_TRUE(client.terminal().wait_for_text("20/11/2026 14:05 ]-"));
    const std::vector<std::string> rows = client.message_lines();
    // The wrap at the bottom of the region has scrolled once, the line itself once more.
    EXPECT_EQ(rows[13], " " + lines.back());
    EXPECT_EQ(rows[14], "20/11/2026 14:05 ]-");
    EXPECT_EQ(rows[12], " Operator: Lufthansa");
    EXPECT_EQ(client.server_row(1).substr(0, 6), "*alpha");
    EXPECT_EQ(client.terminal().cell(17, 79).text, "┤");
}

TEST_F(transmission, elements_missing_from_a_document_are_left_empty)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(connection->send(plain_packet("<?xml version=\"1.0\"?><tovrik></tovrik>")));
    const std::vector<std::string> empty = {
        "ACARS mode:   Aircraft reg:  []",
        "Message label:  Block id:   Message number:", "Flight number:   Flight: -",
        "Operator:", "-------------------------------------------------[ // : ]-"};
    ASSERT_TRUE(wait_for_message_rows(client, empty));
    for (const char* document : {"no markup at all", "<tovrik><ACARS>", "?>", "<", "?><<<>>>"})
        ASSERT_TRUE(connection->send(plain_packet(document)));
    ASSERT_TRUE(connection->send(plain_packet(document_of({.operator_name = "Last"}))));
    std::vector<std::string> both = empty;
    both.emplace_back("");
    for (const std::string& line : lines_of({.operator_name = "Last"}))
        both.push_back(line);
    ASSERT_TRUE(wait_for_message_rows(client, both));
}

TEST_F(transmission, percent_signs_in_a_value_never_remain)
{
    ASSERT_TRUE(begin());
    // The last percent sign of a text becomes a number sign.
    ASSERT_TRUE(connection->send(plain_packet(document_of({.minute = "100%"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.minute = "100#"})));
    // A value between percent signs is looked up like the template's own.
    const char* path = "%tovrik/Extended/Operator%";
    ASSERT_TRUE(connection->send(plain_packet(document_of({.mode = path}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.mode = "Lufthansa"})));
}

TEST_F(transmission, values_that_name_themselves_end)
{
    ASSERT_TRUE(begin());
    const char* mode = "%tovrik/ACARS/ACARSMode%";
    for (const acars_message& message :
         {acars_message{.mode = mode}, acars_message{.mode = std::string{mode} + mode + mode},
          acars_message{.mode = "%tovrik/ACARS/AircraftReg%", .registration = mode}})
        ASSERT_TRUE(connection->send(plain_packet(document_of(message))));
    ASSERT_TRUE(wait_for_notice(client, *connection, "all three were shown"));
    ASSERT_TRUE(connection->send(plain_packet(document_of({}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
}

TEST_F(transmission, uplinks_are_shown_whatever_the_setting_says)
{
    ASSERT_TRUE(begin({.no_uplinks = true}));
    ASSERT_TRUE(connection->send(plain_packet(document_of({.block = "A"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.block = "A"})));
}

TEST(transmission_of_several, messages_of_two_servers_come_in_list_order)
{
    listed_servers servers(2);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings(), {.rows = 40, .columns = 132}));
    std::vector<server_connection> connections = connect_all(client, servers);
    ASSERT_EQ(connections.size(), 2U);
    ASSERT_TRUE(stop_polls(client)); // both messages wait for the same poll
    ASSERT_TRUE(connections[1].send(compressed_packet(document_of({.flight = "BRAVO1"}))));
    ASSERT_TRUE(connections[0].send(plain_packet(document_of({.flight = "ALPHA1"}))));
    ASSERT_TRUE(poll_once(client));
    std::vector<std::string> both = lines_of({.flight = "ALPHA1"});
    both.emplace_back("");
    for (const std::string& line : lines_of({.flight = "BRAVO1"}))
        both.push_back(line);
    ASSERT_TRUE(wait_for_message_rows(client, both));
}

} // namespace
