// settings_page_test.cpp - the page of switches: its look, its hot keys, and what closing it
// applies.
#include "e2e/settings_session.hpp"

#include <gtest/gtest.h>

namespace
{

class settings_page : public settings_test
{
};

struct page_row {
    int row;
    std::string text;  // from column 2 on
    int letter_column; // of the hot key; 0: none
};

const std::vector<page_row> page_rows = {
    {2, "[ ] Save ACARS data to tovrik-style logfile", 11},
    {3, "    The Logfilename is created from the servername+.log", 0},
    {4, "[ ] Show Informations about Contacts", 11},
    {5, "[ ] Save Hostpasswords to configuration file", 11},
    {6, "[ ] Show FlightStats on every server", 11},
    {7, "[ ] Save all Transmissions to one logfile", 15},
    {8, "    Logfilename is ACARS.log and will be created within the current folder", 0},
    {9, "[ ] Dont show uplink messages", 6},
    {10, "[ ] Fetch new Serverlist during Startup", 7},
    {11, "[ ] Save configuration on exit", 6},
    {12, "", 0},
    {14, "", 0},
    {15, "Folder for Logfiles: ./", 13},
    {16, "Folder for Reports: ./", 13},
    {17, "", 0},
};

/// The row of the switch with a given letter.
const std::map<char, int> switch_rows = {{'a', 2}, {'i', 4}, {'h', 5},  {'f', 6},
                                         {'t', 7}, {'d', 9}, {'e', 10}, {'s', 11}};

std::string repeat(const std::string& text, int count)
{
    std::string all;
    for (int at = 0; at < count; ++at)
        all += text;
    return all;
}

std::string add_frame(const std::string& text, int columns)
{
    const auto width = static_cast<std::size_t>(columns - 3);
    return "│ " + text + std::string(width - text.size(), ' ') + "│";
}

client_settings switch_everything_on()
{
    client_settings settings;
    settings.acars_log = true;
    settings.contact_info = true;
    settings.save_passwords = true;
    settings.flight_stats = true;
    settings.save_to_one = true;
    settings.no_uplinks = true;
    settings.fetch_on_start = true;
    settings.save_on_exit = true;
    return settings;
}

void expect_letters(terminal_session& terminal, const page_row& expected)
{
    for (int column = 6; column < 40; ++column) {
        const screen_cell cell = terminal.cell(expected.row, column);
        const bool is_value = expected.row >= 15 && column >= 22;
        if (cell.text == " " || is_value)
            continue;
        const bool is_hot = column == expected.letter_column;
        EXPECT_EQ(cell, pair_cell(pairs::plain, is_hot, cell.text))
            << "row " << expected.row << " column " << column;
    }
}

TEST_F(settings_page, is_drawn_exactly)
{
    for (const auto& [rows, columns] : {std::pair{24, 80}, {30, 100}}) {
        client_session other;
        ASSERT_TRUE(other.start({}, {.rows = rows, .columns = columns}));
        terminal_session& terminal = other.terminal();
        ASSERT_TRUE(open_settings_page(other));
        EXPECT_EQ(terminal.row(0),
                  "┌─[ ncurses tovrik client - Settings ]" + repeat("─", columns - 39) + "┐");
        EXPECT_EQ(terminal.row(1), add_frame("", columns));
        for (const page_row& expected : page_rows) {
            EXPECT_EQ(terminal.row(expected.row), add_frame(expected.text, columns));
            expect_letters(terminal, expected);
        }
        EXPECT_EQ(terminal.row(13), "├" + repeat("─", columns - 2) + "┤");
        EXPECT_EQ(terminal.row(rows - 1),
                  "└" + repeat("─", columns - 59) +
                      "[ To switch use ALT+highlighted Key - To exit press ^E ]─┘");
        EXPECT_EQ(terminal.cell(0, 2), pair_cell(pairs::frame, true, "["));
        EXPECT_EQ(terminal.cell(0, 1), pair_cell(pairs::frame, false, "─"));
        EXPECT_EQ(terminal.cell(13, 0), pair_cell(pairs::frame, false, "├"));
        EXPECT_EQ(terminal.cell(13, columns - 1), pair_cell(pairs::frame, false, "┤"));
        EXPECT_EQ(terminal.cell(rows - 1, columns - 58), pair_cell(pairs::plain, true, "["));
        EXPECT_EQ(terminal.cell(15, 23), pair_cell(pairs::plain, true, "."));
    }
}

TEST_F(settings_page, shows_what_the_configuration_says)
{
    client_settings settings = switch_everything_on();
    settings.fetch_on_start = false;
    settings.contact_info = false;
    settings.report_folder = "some/where";
    settings.log_folder = "logs";
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    for (const auto& [letter, row] : switch_rows) {
        const bool is_on = letter != 'e' && letter != 'i';
        const screen_cell mark = client.terminal().cell(row, 3);
        EXPECT_EQ(mark.text, is_on ? "X" : " ") << letter;
        EXPECT_EQ(mark, pair_cell(pairs::success, true, mark.text)) << letter;
    }
    EXPECT_EQ(client.terminal().screen().text(3, 2, 4), "    ") << "a line without a box";
    EXPECT_EQ(page_text(15, 2), "Folder for Logfiles: logs");
    EXPECT_EQ(page_text(16, 2), "Folder for Reports: some/where");
}

struct key_form {
    const char* locale;
    meta_form form;
};

TEST_F(settings_page, every_hot_key_works_in_every_form_and_is_saved)
{
    const key_form forms[] = {{"C.UTF-8", meta_form::escape_first},
                              {"C.UTF-8", meta_form::utf8},
                              {"C.UTF-8", meta_form::high_bit},
                              {"C", meta_form::escape_first},
                              {"C", meta_form::high_bit}};
    for (const key_form& typed : forms) {
        SCOPED_TRACE(std::string{typed.locale} + " form " +
                     std::to_string(static_cast<int>(typed.form)));
        client_session other;
        client_start how;
        how.environment["LC_ALL"] = typed.locale;
        how.utf8 = how.environment["LC_ALL"] != "C";
        ASSERT_TRUE(other.start({}, how));
        terminal_session& terminal = other.terminal();
        ASSERT_TRUE(open_settings_page(other));
        for (const auto& [letter, row] : switch_rows) {
            terminal.send_meta(letter, typed.form);
            ASSERT_TRUE(terminal.wait_until(
                [&, mark_row = row] {
                    return terminal.cell(mark_row, 3) == pair_cell(pairs::success, true, "X");
                },
                std::string{"the mark of "} + letter));
        }
        EXPECT_EQ(terminal.bells(), 0);
        other.quit();
        EXPECT_EQ(other.home().read_config(), config_text(switch_everything_on()));
    }
}

TEST_F(settings_page, a_hot_key_pressed_twice_changes_nothing)
{
    for (const bool is_on : {false, true}) {
        client_session other;
        client_settings settings = is_on ? switch_everything_on() : client_settings{};
        settings.save_to_one = false; // which would turn the other logs off
        settings.fetch_on_start = false;
        settings.save_on_exit = true;
        ASSERT_TRUE(other.start(settings));
        terminal_session& terminal = other.terminal();
        ASSERT_TRUE(open_settings_page(other));
        const std::string before = terminal.screen().whole_text();
        for (const char* mark : {is_on ? " " : "X", is_on ? "X" : " "}) {
            terminal.send_meta('a');
            ASSERT_TRUE(
                terminal.wait_until([&] { return terminal.cell(2, 3).text == mark; }, "a mark"));
        }
        EXPECT_EQ(terminal.screen().whole_text(), before);
        other.quit();
        EXPECT_EQ(other.home().read_config(), config_text(settings));
    }
}

TEST_F(settings_page, takes_hot_keys_without_showing_anything_while_hidden)
{
    ASSERT_TRUE(client.start(with_aliases({"alpha"})));
    ASSERT_TRUE(client.wait_for_keys());
    const std::string before = client.terminal().screen().whole_text();
    client.terminal().send_meta('t');
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.terminal().screen().whole_text(), before);
    ASSERT_TRUE(open_page());
    EXPECT_EQ(client.terminal().cell(7, 3), pair_cell(pairs::success, true, "X"));
    EXPECT_EQ(client.terminal().cell(2, 3).text, " ");
}

TEST_F(settings_page, other_letters_do_nothing)
{
    ASSERT_TRUE(client.start({}));
    ASSERT_TRUE(open_page());
    const std::string before = client.terminal().screen().whole_text();
    for (const char letter : {'b', 'c', 'g', 'x', 'z'})
        client.terminal().send_meta(letter);
    client.terminal().send("aitsAITS~*1");
    client.terminal().send_meta('d');
    ASSERT_TRUE(mark_becomes(9, "X"));
    client.terminal().send_meta('d');
    ASSERT_TRUE(mark_becomes(9, " "));
    EXPECT_EQ(client.terminal().screen().whole_text(), before);
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST_F(settings_page, stays_in_front_with_its_values_through_a_resize)
{
    client_settings settings;
    settings.log_folder = "logs";
    settings.flight_stats = true;
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(open_page());
    client.terminal().send_meta('s');
    ASSERT_TRUE(mark_becomes(11, "X"));
    client.terminal().resize(30, 100);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().row(29).ends_with("exit press ^E ]─┘"); }, "a new page"));
    EXPECT_EQ(client.terminal().row(13), "├" + repeat("─", 98) + "┤");
    for (const auto& [letter, row] : switch_rows)
        EXPECT_EQ(client.terminal().cell(row, 3).text, letter == 's' || letter == 'f' ? "X" : " ");
    EXPECT_EQ(page_text(15, 23), "logs");
    client.terminal().send_meta('f');
    ASSERT_TRUE(mark_becomes(6, " "));
    ASSERT_TRUE(close_page());
}

TEST_F(settings_page, arrows_do_not_move_behind_it)
{
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    ASSERT_TRUE(open_page());
    const std::string before = client.terminal().screen().whole_text();
    client.terminal().send_key(named_key::down);
    client.terminal().send_key(named_key::down);
    client.terminal().send_meta('a');
    ASSERT_TRUE(mark_becomes(2, "X"));
    client.terminal().send_meta('a');
    ASSERT_TRUE(mark_becomes(2, " "));
    EXPECT_EQ(client.terminal().screen().whole_text(), before);
    ASSERT_TRUE(close_page());
    EXPECT_EQ(client.bar_row(), 1);
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 2; }, "one down"));
    ASSERT_TRUE(open_page());
    client.terminal().send_key(named_key::up);
    ASSERT_TRUE(close_page());
    EXPECT_EQ(client.bar_row(), 2);
}

TEST_F(settings_page, closes_the_information_window_and_comes_before_the_help)
{
    ASSERT_TRUE(client.start(with_aliases({"alpha"})));
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(client.terminal().wait_for_text("[ Close Window ^I ]"));
    ASSERT_TRUE(open_page());
    ASSERT_TRUE(close_page());
    EXPECT_FALSE(client.terminal().shows("Close Window"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    ASSERT_TRUE(open_page());
    client.terminal().send_control('e');
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return panes_are_in_front(); }, "the panes"));
}

} // namespace
