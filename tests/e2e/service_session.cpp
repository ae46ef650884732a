// service_session.cpp - what the tests of the services share.
#include "e2e/service_session.hpp"

#include <algorithm>

namespace
{

constexpr int transmissions_of_traffic = 3;

/// Whether the cell at (row, column) of a box looks right; null: any look will do.
using cell_check = std::function<bool(const screen_cell& seen, int row, int column)>;

bool has_look(const screen_cell& seen, int pair, bool bold)
{
    return seen.text == " " || seen == pair_cell(pair, bold, seen.text);
}

/// Cells that a UTF-8 text takes.
int count_cells(std::string_view text)
{
    return static_cast<int>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    }));
}

bool has_rows(const terminal_screen& screen, int row, int column,
              const std::vector<std::string>& rows)
{
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const int at = row + static_cast<int>(index);
        if (at < screen.rows() && screen.text(at, column, count_cells(rows[index])) != rows[index])
            return false;
    }
    return true;
}

bool has_cells(const terminal_screen& screen, int row, int column,
               const std::vector<std::string>& rows, const cell_check& check)
{
    for (int down = 0; down < static_cast<int>(rows.size()) && row + down < screen.rows(); ++down) {
        const int width = count_cells(rows[static_cast<std::size_t>(down)]);
        for (int along = 0; along < width; ++along) {
            if (!check(screen.cell(row + down, column + along), down, along))
                return false;
        }
    }
    return true;
}

std::string join_rows(const std::vector<std::string>& rows)
{
    std::string all;
    for (const std::string& row : rows)
        all += row + '\n';
    return all;
}

std::string pad_to_width(const std::string& text, int width)
{
    return text +
           std::string(static_cast<std::size_t>(std::max(0, width - count_cells(text))), ' ');
}

int find_prompt_width(const prompt_look& look)
{
    return std::max({look.size, static_cast<int>(look.question.size()) + 5,
                     static_cast<int>(look.hint.size()) + 4});
}

std::vector<std::string> make_prompt_rows(const prompt_look& look)
{
    const int width = find_prompt_width(look);
    const int question = static_cast<int>(look.question.size());
    const int hint = static_cast<int>(look.hint.size());
    const std::string name = look.name.empty() ? "" : "[ " + look.name + " ]";
    return {"┌─[ " + look.question + " ]" + times(width - question - 5, "─") + "┐",
            "│ " + pad_to_width(look.text + "_", width - 1) + "│",
            "└─" + name + times(width - hint - 6 - count_cells(name), "─") + "[ " + look.hint +
                " ]─┘"};
}

std::vector<std::string> make_menu_rows(const menu_look& look)
{
    std::vector<std::string> rows = {"┌" + times(look.width - 2, "─") + "┐"};
    char key = '1';
    for (const std::string& label : look.labels)
        rows.push_back("│" + pad_to_width(std::string{' ', key++, ' '} + label, look.width - 2) +
                       "│");
    const int hint = static_cast<int>(look.hint.size());
    rows.push_back("└────" + look.hint + times(look.width - 6 - hint, "─") + "┘");
    return rows;
}

/// A row of a list as it is shown; a row that is too long overwrites the frame.
std::string make_list_row(const std::string& text)
{
    std::string row = "│";
    for (const char character : text)
        row += character == '|' ? "│" : std::string{character};
    return text.size() > 24 ? row : row + std::string(24 - text.size(), ' ') + "│";
}

std::vector<std::string> make_list_rows(const list_look& look)
{
    std::vector<std::string> rows = {"┌" + times(24, "─") + "┐",
                                     make_list_row("Registr. Airp Flightno")};
    for (const std::string& row : look.rows)
        rows.push_back(make_list_row(row));
    if (look.height == 0)
        rows.push_back("└─[ Press ESC to close ]─┘");
    return rows;
}

} // namespace

const menu_look update_menu{35,
                            "[ Press 1-5 or ESC to quit ]",
                            {"Add new Airline", "Add new Flightnumber", "Add new Aircraft",
                             "Add new Airport", "Add new ACARS mode"}};
const menu_look mailing_menu{35,
                             "[ Press 1-5 or ESC to quit ]",
                             {"Subscribe for daily reports", "Activate Subscription",
                              "Pause Subscription", "Unsubscribe", "Change Report Type"}};
const menu_look pager_menu{38,
                           "[ Press 1-3 or ESC to quit ]",
                           {"Add entry to your pagerlist", "Remove entry from your pagerlist",
                            "Request pagerlist from Server"}};

testing::AssertionResult service_test::begin(client_settings settings, const client_start& how,
                                             std::string_view services)
{
    if (settings.servers.empty())
        settings.servers.push_back({.alias = "alpha"});
    settings.servers.front().port = std::to_string(server.port());
    if (testing::AssertionResult started = client.start(settings, how); !started)
        return started;
    connection = client.connect_selected(server);
    if (!connection || !connection->send(capabilities_of(services)) ||
        !connection->send(103, "the services are known"))
        return testing::AssertionFailure() << "no connection";
    return client.wait_for_status("the services are known", pairs::plain, false);
}

testing::AssertionResult service_test::prompt_is(const prompt_look& look)
{
    const std::vector<std::string> rows = make_prompt_rows(look);
    const int width = find_prompt_width(look);
    const int hint_first = width - static_cast<int>(look.hint.size()) - 4;
    const int question_end = 2 + static_cast<int>(look.question.size()) + 4;
    const int name_end = look.name.empty() ? 0 : 2 + count_cells(look.name) + 4;
    const cell_check check = [&](const screen_cell& seen, int row, int column) {
        if (row == 1 && column >= 2 && column <= width)
            return has_look(seen, pairs::success, true);
        const bool is_question = row == 0 && column >= 2 && column < question_end;
        const bool is_hint = row == 2 && column >= hint_first && column < width;
        const bool is_name = row == 2 && column >= 2 && column < name_end;
        return has_look(seen, pairs::frame, is_question || is_hint || is_name);
    };
    const auto holds = [&] {
        const terminal_screen& screen = terminal().screen();
        const int row = screen.rows() / 2 - 4;
        const int column = screen.columns() / 2 - width / 2;
        return has_rows(screen, row, column, rows) && has_cells(screen, row, column, rows, check);
    };
    return terminal().wait_until(holds, "in its place the prompt\n" + join_rows(rows));
}

testing::AssertionResult service_test::menu_is(const menu_look& look)
{
    const std::vector<std::string> rows = make_menu_rows(look);
    const int last = static_cast<int>(rows.size()) - 1;
    const int hint_end = 5 + static_cast<int>(look.hint.size());
    const cell_check check = [&](const screen_cell& seen, int row, int column) {
        const bool is_frame = row == 0 || column == 0 || column == look.width - 1;
        if (row == last && column >= 5 && column < hint_end)
            return has_look(seen, pairs::plain, true);
        if (is_frame || row == last)
            return has_look(seen, pairs::frame, false);
        return column < 4 ? has_look(seen, pairs::error, true) : has_look(seen, pairs::frame, true);
    };
    const auto holds = [&] {
        const terminal_screen& screen = terminal().screen();
        const int row = screen.rows() / 2 - 4;
        const int column = screen.columns() / 2 - 20;
        return has_rows(screen, row, column, rows) && has_cells(screen, row, column, rows, check);
    };
    return terminal().wait_until(holds, "in its place the menu\n" + join_rows(rows));
}

testing::AssertionResult service_test::list_is(const list_look& look)
{
    const std::vector<std::string> rows = make_list_rows(look);
    const int hint_row = look.height == 0 ? static_cast<int>(rows.size()) - 1 : look.height - 1;
    const cell_check check = [&](const screen_cell& seen, int row, int column) {
        const auto record = static_cast<std::size_t>(row - 2);
        const bool is_covered = record < look.rows.size() && look.rows[record].size() > 24;
        const bool is_frame_column = column == 0 || (column == 25 && !is_covered);
        if (row == hint_row && column >= 2 && column < 24)
            return has_look(seen, pairs::plain, true);
        if (row == 0 || row == hint_row || is_frame_column)
            return has_look(seen, pairs::frame, false);
        return row == 1 ? has_look(seen, pairs::success, true)
                        : has_look(seen, pairs::plain, false);
    };
    const auto holds = [&] {
        const terminal_screen& screen = terminal().screen();
        const int column = screen.columns() / 2 - 13;
        return has_rows(screen, 4, column, rows) && has_cells(screen, 4, column, rows, check);
    };
    return terminal().wait_until(holds, "in its place the list\n" + join_rows(rows));
}

testing::AssertionResult service_test::shows_at(int row, int column,
                                                const std::vector<std::string>& rows)
{
    return terminal().wait_until([&] { return has_rows(terminal().screen(), row, column, rows); },
                                 "at its place\n" + join_rows(rows));
}

testing::AssertionResult service_test::answer(const prompt_look& look, std::string_view text)
{
    testing::AssertionResult open = prompt_is(look);
    if (open) {
        terminal().send(text);
        terminal().send_key(named_key::enter);
    }
    return open;
}

testing::AssertionResult service_test::escape(const prompt_look& look)
{
    testing::AssertionResult open = prompt_is(look);
    if (open)
        terminal().send_key(named_key::escape);
    return open ? terminal().wait_for_no_text("[ " + look.question + " ]") : open;
}

testing::AssertionResult service_test::choose(char command, const menu_look& look, char choice)
{
    terminal().send_control(command);
    testing::AssertionResult open = menu_is(look);
    if (open)
        terminal().send({&choice, 1});
    return open;
}

testing::AssertionResult service_test::dialog_ends(std::string_view last_text)
{
    if (testing::AssertionResult gone = terminal().wait_for_no_text(last_text); !gone)
        return gone;
    return client.wait_for_keys();
}

void service_test::expect_sent(const server_packet& packet)
{
    EXPECT_EQ(connection->read_packet(), packet);
    EXPECT_FALSE(connection->has_unread_bytes());
}

void service_test::expect_nothing_sent()
{
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_FALSE(connection->has_unread_bytes());
}

testing::AssertionResult service_test::traffic()
{
    for (int count = 0; count < transmissions_of_traffic; ++count) {
        if (!connection->send(40, transmission_of(std::string(45, 'M'))))
            return testing::AssertionFailure() << "nobody takes the transmission";
    }
    const std::string notice = "notice " + std::to_string(++notices);
    connection->send(103, notice);
    return client.wait_for_status(notice, pairs::plain, false);
}

std::string transmission_of(const std::string& content)
{
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><tovrik><ACARS><ACARSMode>2</ACARSMode>"
           "<AircraftReg>D-AIQA</AircraftReg><MessageLabel>H1</MessageLabel><BlockID>7</BlockID>"
           "<MessageNumber>M01A</MessageNumber><FlightNumber>LH0123</FlightNumber><MessageDate>"
           "<Day>05</Day><Month>03</Month><Year>2024</Year><Hour>12</Hour><Minute>34</Minute>"
           "</MessageDate><Authorized><MessageContent>" +
           content +
           "</MessageContent></Authorized></ACARS><Extended><Aircraft>A320</Aircraft>"
           "<Operator>Lufthansa</Operator></Extended>"
           "<FlightRouting><From>EDDF</From><To>EGLL</To></FlightRouting></tovrik>";
}

server_packet capabilities_of(std::string_view elements)
{
    return {.kind = 41,
            .payload = "<?xml version=\"1.0\"?><tovrik>" + std::string{elements} + "</tovrik>"};
}

testing::AssertionResult file_holds(client_session& client, const std::string& name,
                                    const std::string& bytes)
{
    return client.terminal().wait_until([&] { return client.home().read_file(name) == bytes; },
                                        "the right bytes in " + name);
}

std::string times(int count, std::string_view text)
{
    std::string all;
    for (int index = 0; index < count; ++index)
        all += text;
    return all;
}
