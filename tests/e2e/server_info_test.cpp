// server_info_test.cpp - the window about the selected server: texts, wrapping, open and close.
#include "e2e/client_session.hpp"

#include <gtest/gtest.h>

namespace
{

constexpr int top = 8; // of a screen with 24 rows
constexpr int left = 6;
constexpr int width = 68; // of a screen with 80 columns
constexpr const char* close_text = "[ Close Window ^I ]";
constexpr const char* everything = "<?xml version=\"1.0\"?><tovrik><Version>1.7</Version>"
                                   "<ServerUUID>id-1234</ServerUUID><CRCCheck>1</CRCCheck>"
                                   "<Mailing>1</Mailing><DBModify>1</DBModify>"
                                   "<Reports>1</Reports><Pager>1</Pager></tovrik>";

class server_info : public testing::Test
{
protected:
    [[nodiscard]] testing::AssertionResult open_window()
    {
        client.terminal().send_key(named_key::tab);
        return client.terminal().wait_for_text(close_text);
    }
    [[nodiscard]] testing::AssertionResult window_closes()
    {
        return client.terminal().wait_for_no_text(close_text);
    }
    /// A row of the window without its frame and trailing blanks.
    std::string row(int number)
    {
        std::string text = client.terminal().screen().text(top + number, left + 1, width - 2);
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    }
    screen_cell cell(int number, int column)
    {
        return client.terminal().cell(top + number, left + column);
    }
    void connect()
    {
        connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
    }
    /// Sends the server's capabilities and waits until the client has read them.
    void tell(const std::string& capabilities)
    {
        ASSERT_TRUE(connection->send(41, capabilities));
        ASSERT_TRUE(connection->send(85, "x"));
        EXPECT_EQ(connection->read_packet(),
                  (server_packet{.kind = 85, .payload = "ncursesclient"}));
    }

    scripted_server server;
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(server_info, is_drawn_exactly_for_a_server_of_which_nothing_is_known)
{
    client_settings settings;
    settings.servers = {{.name = "host.example", .port = "0"}};
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_window());
    const terminal_screen& screen = client.terminal().screen();
    std::string line;
    for (int column = 2; column < width; ++column)
        line += "─";
    EXPECT_EQ(screen.text(top, left, width), "┌" + line + "┐");
    EXPECT_EQ(row(1), "ServerName: host.example Port: 2202 Version: unknown");
    EXPECT_EQ(row(2), "Location: unknown");
    EXPECT_EQ(row(3), "Connected: NO Unique ServerID: unknown");
    EXPECT_EQ(row(4), "ServerFlags:");
    EXPECT_EQ(row(5), "Info: unknown");
    for (int empty = 6; empty <= 8; ++empty)
        EXPECT_EQ(row(empty), "");
    EXPECT_EQ(row(9), "Special Keys: |");
    EXPECT_EQ(screen.text(top + 10, left + 46, 22), std::string{close_text} + "──┘");
    EXPECT_EQ(screen.text(top + 10, left, 2), "└─");
    for (int number = 1; number <= 9; ++number)
        EXPECT_EQ(cell(number, width - 1).text, "│") << number;

    EXPECT_EQ(cell(0, 0), pair_cell(pairs::frame, false, "┌"));
    EXPECT_EQ(cell(10, 46), pair_cell(pairs::frame, true, "["));
    EXPECT_EQ(cell(1, 1), pair_cell(pairs::success, true, "S"));
    EXPECT_EQ(cell(1, 13), pair_cell(pairs::plain, false, "h"));
    EXPECT_EQ(cell(1, 26), pair_cell(pairs::success, true, "P"));
    EXPECT_EQ(cell(1, 32), pair_cell(pairs::plain, false, "2"));
    EXPECT_EQ(cell(5, 1), pair_cell(pairs::success, true, "I"));
    EXPECT_EQ(cell(5, 7), pair_cell(pairs::plain, false, "u"));
    EXPECT_EQ(cell(9, 1), pair_cell(pairs::success, true, "S"));
    EXPECT_EQ(cell(9, 15), pair_cell(pairs::secondary, true, "|"));
}

TEST_F(server_info, shows_everything_a_server_tells_about_itself)
{
    client_settings settings = knowing(server);
    settings.servers[0].location = "EDDF";
    settings.servers[0].info = "some facts";
    ASSERT_TRUE(client.start(settings));
    connect();
    tell(everything);
    ASSERT_TRUE(open_window());
    EXPECT_EQ(row(1), "ServerName: alpha Port: " + std::to_string(server.port()) + " Version: 1.7");
    EXPECT_EQ(row(2), "Location: EDDF");
    EXPECT_EQ(row(3), "Connected: YES Unique ServerID: id-1234");
    EXPECT_EQ(row(4), "ServerFlags: CRC MAILING MODIFY PAGER REPORTS");
    EXPECT_EQ(row(5), "Info: some facts");
    // The last key reaches the very edge of the window.
    EXPECT_EQ(client.terminal().screen().text(top + 9, left + 1, width - 1),
              "Special Keys: | ^A Add entries | ^M Mailing | ^O Reports | ^P Pager");
    EXPECT_EQ(row(8), "");
    EXPECT_EQ(client.terminal().screen().text(top + 10, left, 2), "└─") << "nothing wraps";
    EXPECT_EQ(cell(4, 14), pair_cell(pairs::plain, false, "C"));
    EXPECT_EQ(cell(9, 17), pair_cell(pairs::secondary, true, "^"));
}

TEST_F(server_info, each_service_has_its_word_and_its_key)
{
    const std::tuple<const char*, const char*, const char*> services[] = {
        {"<CRCCheck>0</CRCCheck>", "ServerFlags: CRC", "Special Keys: |"},
        {"<Mailing>1</Mailing>", "ServerFlags: MAILING", "Special Keys: | ^M Mailing |"},
        {"<ModifyFlags>1</ModifyFlags>", "ServerFlags: MODIFY", "Special Keys: | ^A Add entries |"},
        {"<Pager>1</Pager>", "ServerFlags: PAGER", "Special Keys: | ^P Pager |"},
        {"<Reports>1</Reports>", "ServerFlags: REPORTS", "Special Keys: | ^O Reports |"},
        {"<Reports>0</Reports><Mailing>no</Mailing>", "ServerFlags:", "Special Keys: |"},
    };
    ASSERT_TRUE(client.start(knowing(server)));
    connect();
    for (const auto& [element, flags, keys] : services) {
        tell(std::string{"<?xml version=\"1.0\"?><tovrik>"} + element + "</tovrik>");
        ASSERT_TRUE(open_window());
        EXPECT_EQ(row(4), flags);
        EXPECT_EQ(row(9), keys);
        client.terminal().send_key(named_key::tab);
        ASSERT_TRUE(window_closes());
    }
}

TEST_F(server_info, is_drawn_once)
{
    ASSERT_TRUE(client.start(knowing(server)));
    connect();
    ASSERT_TRUE(open_window());
    tell(everything);
    EXPECT_EQ(row(3), "Connected: YES Unique ServerID: unknown");
    EXPECT_EQ(row(4), "ServerFlags:");
    client.terminal().send("\t\t");
    ASSERT_TRUE(client.terminal().wait_for_text("Unique ServerID: id-1234"));
}

TEST_F(server_info, restores_the_screen_when_toggled_twice)
{
    ASSERT_TRUE(client.start(knowing(server)));
    connect();
    ASSERT_TRUE(connection->send(40, "<?xml version=\"1.0\"?><tovrik></tovrik>"));
    ASSERT_TRUE(connection->send(103, "behind it"));
    ASSERT_TRUE(client.wait_for_status("behind it", pairs::plain, false));
    const terminal_screen& screen = client.terminal().screen();
    std::vector<screen_cell> before;
    for (int at = 0; at < 24 * 80; ++at)
        before.push_back(screen.cell(at / 80, at % 80));
    ASSERT_TRUE(open_window());
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(window_closes());
    ASSERT_TRUE(client.wait_for_polls());
    for (int at = 0; at < 24 * 80; ++at)
        EXPECT_EQ(client.terminal().cell(at / 80, at % 80), before[static_cast<std::size_t>(at)])
            << "row " << at / 80 << " column " << at % 80;
}

TEST_F(server_info, nothing_happens_without_a_server)
{
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(client.wait_for_keys());
    const std::string before = client.terminal().screen().whole_text();
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().whole_text() == before; }, "the panes alone"));
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST_F(server_info, closes_on_a_transmission_an_arrow_and_a_resize)
{
    client_settings settings = knowing(server);
    settings.servers.push_back({.name = "0.example"});
    ASSERT_TRUE(client.start(settings));
    connect();
    ASSERT_TRUE(open_window());
    ASSERT_TRUE(connection->send(40, "<?xml version=\"1.0\"?><tovrik></tovrik>"));
    ASSERT_TRUE(window_closes());
    EXPECT_TRUE(client.terminal().wait_for_text("ACARS mode:"));
    ASSERT_TRUE(open_window());
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 2; }, "the bar"));
    EXPECT_FALSE(client.terminal().shows(close_text));
    ASSERT_TRUE(open_window());
    EXPECT_EQ(row(1), "ServerName: 0.example Port: 2202 Version: unknown");
    client.terminal().resize(30, 100);
    ASSERT_TRUE(window_closes());
}

TEST_F(server_info, stays_when_an_arrow_cannot_move_the_bar)
{
    ASSERT_TRUE(client.start(knowing(server)));
    ASSERT_TRUE(open_window());
    client.terminal().send_key(named_key::down);
    client.terminal().send_key(named_key::up);
    client.terminal().send_control('d'); // refused with a beep, and a notice on the lower rows
    ASSERT_TRUE(
        client.terminal().wait_until([&] { return client.terminal().bells() == 1; }, "a beep"));
    EXPECT_TRUE(row(1).starts_with("ServerName: alpha"));
    EXPECT_TRUE(row(9).starts_with("Special Keys: |"));
}

TEST_F(server_info, removes_the_statistics_when_it_closes)
{
    client_settings settings = knowing(server);
    settings.flight_stats = true;
    ASSERT_TRUE(client.start(settings));
    connect();
    ASSERT_TRUE(connection->send(40, "<?xml version=\"1.0\"?><tovrik><ContactData><DailyFlights>7"
                                     "</DailyFlights></ContactData></tovrik>"));
    ASSERT_TRUE(client.terminal().wait_for_text("Unique Flights: 7"));
    ASSERT_TRUE(open_window());
    EXPECT_TRUE(client.terminal().shows("Unique Flights: 7"));
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(window_closes());
    EXPECT_TRUE(client.terminal().wait_for_no_text("Unique Flights: 7"));
}

TEST_F(server_info, fits_terminals_of_other_sizes)
{
    client_settings settings;
    settings.servers = {{.name = "host.example", .alias = "a rather long alias", .info = "facts"}};
    for (const auto& [rows, columns] :
         {std::pair{24, 40}, {24, 200}, {25, 80}, {43, 132}, {18, 80}}) {
        client_session other;
        SCOPED_TRACE(rows);
        ASSERT_TRUE(other.start(settings, {.rows = rows, .columns = columns}));
        other.terminal().send_key(named_key::tab);
        ASSERT_TRUE(other.terminal().wait_for_text(close_text));
        const terminal_screen& screen = other.terminal().screen();
        const int top_row = rows / 2 - 4;
        EXPECT_EQ(screen.text(top_row, left, 1), "┌");
        EXPECT_EQ(screen.text(top_row, left + columns - 13, 1), "┐");
        EXPECT_EQ(screen.text(top_row + 10, columns - 28, 19), close_text);
        const std::string name = "ServerName: a rather long alias Port: 2202 Version: unknown";
        const std::string seen = screen.text(top_row + 1, left + 1, columns - 13);
        EXPECT_TRUE(seen.starts_with(name.substr(0, static_cast<std::size_t>(columns - 13))))
            << seen;
        EXPECT_TRUE(screen.text(top_row + 2, left + 1).starts_with("Location: unknown"));
        EXPECT_TRUE(screen.text(top_row + 5, left + 1).starts_with("Info: facts"));
    }
}

TEST_F(server_info, survives_terminals_that_are_too_small_for_it)
{
    client_settings settings;
    settings.servers = {{.name = "host.example", .info = std::string(200, 'i') + " facts"}};
    ASSERT_TRUE(client.start(settings));
    for (const auto& [rows, columns] :
         {std::pair{24, 30}, {24, 20}, {24, 19}, {24, 14}, {24, 11}, {6, 80}, {3, 40}, {24, 80}}) {
        client.terminal().resize(rows, columns);
        client.terminal().send("\t");
        ASSERT_TRUE(client.wait_for_polls());
        client.terminal().send("\t\t");
        ASSERT_TRUE(client.wait_for_polls());
    }
    client.terminal().resize(25, 90); // closes what is open, whatever the keys hit
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 1; }, "the panes"));
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(client.terminal().wait_for_text("Location: unknown"));
}

TEST_F(server_info, wraps_nothing_on_terminals_narrower_than_its_margins)
{
    client_settings settings;
    settings.servers = {{.name = "host.example", .info = "some facts"}};
    ASSERT_TRUE(client.start(settings));
    const terminal_screen& screen = client.terminal().screen();
    const auto shows_label = [&] { return screen.text(top + 5, left + 1, 6) == "Info: "; };
    client.terminal().resize(24, 19);
    client.terminal().send_key(named_key::tab);
    EXPECT_TRUE(client.terminal().wait_until(shows_label, "the label, not written over"));
}

TEST_F(server_info, bytes_of_a_server_do_not_control_the_terminal)
{
    client_settings settings = knowing(server);
    settings.servers[0].location = "M\xFCnchen";
    settings.servers[0].info = "one\033[7mtwo\a\x9B";
    ASSERT_TRUE(client.start(settings));
    connect();
    tell("<?xml version=\"1.0\"?><tovrik><Version>\033[8m</Version><ServerUUID>" +
         std::string(300, 'u') + "</ServerUUID></tovrik>");
    ASSERT_TRUE(open_window());
    EXPECT_EQ(row(2), "Location: München");
    EXPECT_EQ(row(5), "Info: one?[7mtwo??");
    EXPECT_TRUE(row(1).ends_with(" Version: ?[8m"));
    EXPECT_EQ(row(4), "ServerFlags:") << "a long identity ends at the edge";
    EXPECT_EQ(client.terminal().bells(), 0);
}

} // namespace
