// server_info_test.cpp - how the information window lays out its texts, and what opens and closes
// it.
#include "services/server_info.hpp"

#include "unit/net_fixture.hpp"

#include <cstdlib>

namespace
{

constexpr int info_row = 5;

/// A window about one server on a screen of 80 columns, where info texts wrap at 60.
class server_info_window : public net_test
{
protected:
    server_info_window() : net_test(80), entry(add_server("host.example", "srv")) {}

    void show_info(const std::string& text)
    {
        if (app_state.popup_win != nullptr)
            server_info_toggle();
        std::free(entry.Info);
        entry.Info = owned_text(text);
        server_info_toggle();
    }
    std::string row(int number) const
    {
        return screen.row_text(app_state.popup_win, number);
    }
    /// A row up to the window's last column, where text may overwrite the frame.
    std::string whole_row(int number) const
    {
        std::string text = row(number);
        const int last = getmaxx(app_state.popup_win) - 1;
        text.resize(static_cast<std::size_t>(last - 1), ' ');
        return text + static_cast<char>(mvwinch(app_state.popup_win, number, last) & A_CHARTEXT);
    }

    /// The look of each cell of a row, up to the length, as a letter: label, value, key.
    std::string looks(int number, std::size_t length) const
    {
        std::string letters;
        for (int column = 1; column <= static_cast<int>(length); ++column) {
            const int pair = screen.pair_at(app_state.popup_win, number, column);
            const bool bold = screen.is_bold_at(app_state.popup_win, number, column);
            letters += pair == 7 && bold    ? 'l'
                       : pair == 2 && !bold ? 'v'
                       : pair == 11 && bold ? 'k'
                                            : '?';
        }
        return letters;
    }

    server_entry& entry;
};

TEST_F(server_info_window, has_its_place_and_size)
{
    server_info_toggle();
    ASSERT_NE(app_state.popup_win, nullptr);
    EXPECT_EQ(getmaxx(app_state.popup_win), 68);
    EXPECT_EQ(getmaxy(app_state.popup_win), 11);
    EXPECT_EQ(getbegx(app_state.popup_win), 6);
    EXPECT_EQ(getbegy(app_state.popup_win), 8);
    EXPECT_TRUE(is_scrollok(app_state.popup_win));
    EXPECT_EQ(app_state.dialog_win, nullptr);
}

struct row_part {
    const char* text;
    char look;
};

TEST_F(server_info_window, has_labels_values_and_keys_in_colours_of_their_own)
{
    entry.crc_check = entry.can_mail = entry.can_modify = entry.can_page = entry.can_report = 1;
    server_info_toggle();
    const std::pair<int, std::vector<row_part>> rows[] = {
        {1,
         {{"ServerName: ", 'l'},
          {"srv", 'v'},
          {" Port: ", 'l'},
          {"2202", 'v'},
          {" Version: ", 'l'},
          {"unknown", 'v'}}},
        {2, {{"Location: ", 'l'}, {"unknown", 'v'}}},
        {3, {{"Connected: ", 'l'}, {"NO", 'v'}, {" Unique ServerID: ", 'l'}, {"unknown", 'v'}}},
        {4, {{"ServerFlags: ", 'l'}, {"CRC MAILING MODIFY PAGER REPORTS", 'v'}}},
        {5, {{"Info: ", 'l'}, {"unknown", 'v'}}},
        {9,
         {{"Special Keys: ", 'l'}, {"| ^A Add entries | ^M Mailing | ^O Reports | ^P Page", 'k'}}},
    };
    for (const auto& [number, parts] : rows) {
        std::string text;
        std::string look;
        for (const row_part& part : parts) {
            text += part.text;
            look += std::string(std::string_view{part.text}.size(), part.look);
        }
        EXPECT_EQ(whole_row(number).substr(0, text.size()), text);
        EXPECT_EQ(looks(number, text.size()), look) << text;
    }
}

TEST_F(server_info_window, an_info_of_exactly_the_width_is_one_line)
{
    const std::string text = std::string(29, 'a') + ' ' + std::string(30, 'b');
    show_info(text);
    EXPECT_EQ(row(info_row), "Info: " + text);
    EXPECT_EQ(row(info_row + 1), "");
}

TEST_F(server_info_window, an_info_one_letter_longer_wraps_and_overwrites_the_label)
{
    show_info(std::string(40, 'a') + ' ' + std::string(20, 'b'));
    // The second line overwrites the first one and its label.
    EXPECT_EQ(row(info_row), std::string(20, 'b') + std::string(26, 'a'));
    EXPECT_EQ(row(info_row + 1), "");
    EXPECT_EQ(screen.pair_at(app_state.popup_win, info_row, 1), 2);
}

TEST_F(server_info_window, a_short_second_line_leaves_the_rest_of_the_label)
{
    show_info(std::string(58, 'a').append(" bb"));
    EXPECT_EQ(row(info_row), "bbfo: " + std::string(58, 'a'));
    EXPECT_EQ(screen.pair_at(app_state.popup_win, info_row, 1), 2);
    EXPECT_EQ(screen.pair_at(app_state.popup_win, info_row, 3), 7);
}

TEST_F(server_info_window, a_blank_right_after_the_width_is_a_break)
{
    show_info(std::string(60, 'a').append(" b"));
    EXPECT_EQ(row(info_row), "bnfo: " + std::string(60, 'a'));
}

TEST_F(server_info_window, a_blank_at_the_very_end_is_dropped)
{
    show_info(std::string(60, 'a').append(" "));
    EXPECT_EQ(row(info_row), "Info: " + std::string(60, 'a'));
}

TEST_F(server_info_window, further_lines_continue_below)
{
    const auto word = [](char letter) { return std::string(55, letter); };
    show_info(word('a') + ' ' + word('b') + ' ' + word('c') + ' ' + word('d') + ' ' + word('e') +
              ' ' + word('f'));
    EXPECT_EQ(row(info_row), word('b') + "aaaaaa");
    EXPECT_EQ(row(info_row + 1), word('c'));
    EXPECT_EQ(row(info_row + 2), word('d'));
    EXPECT_EQ(row(info_row + 3), word('e'));
    EXPECT_EQ(row(9), "Special Keys: |");
}

TEST_F(server_info_window, only_blanks_are_breaks)
{
    show_info(std::string(30, 'a').append("-").append(29, 'b').append("cc"));
    // No place to break: cut after 60 letters.
    EXPECT_EQ(row(info_row), "ccfo: " + std::string(30, 'a') + "-" + std::string(29, 'b'));
}

TEST_F(server_info_window, endless_infos_stop_above_the_keys)
{
    for (const std::string& text : {std::string(100'000, 'x'), std::string(100'000, ' '),
                                    std::string(4096, 'y').append(" z")}) {
        show_info(text);
        EXPECT_EQ(row(4), "ServerFlags:");
        EXPECT_EQ(row(9), "Special Keys: |");
        EXPECT_TRUE(row(10).find("[ Close Window ^I ]") != std::string::npos);
    }
    show_info(std::string(100'000, 'x'));
    for (int number = info_row + 1; number <= 8; ++number)
        EXPECT_EQ(row(number), std::string(60, 'x'));
}

TEST_F(server_info_window, an_empty_info_differs_from_an_unknown_one)
{
    show_info("");
    EXPECT_EQ(row(info_row), "Info:");
    server_info_toggle();
    std::free(entry.Info);
    entry.Info = nullptr;
    server_info_toggle();
    EXPECT_EQ(row(info_row), "Info: unknown");
}

TEST_F(server_info_window, every_key_can_be_read_at_80_columns)
{
    entry.crc_check = entry.can_mail = entry.can_modify = entry.can_page = entry.can_report = 1;
    server_info_toggle();
    EXPECT_EQ(row(4), "ServerFlags: CRC MAILING MODIFY PAGER REPORTS");
    EXPECT_EQ(whole_row(9), "Special Keys: | ^A Add entries | ^M Mailing | ^O Reports | ^P Pager");
}

TEST_F(server_info_window, texts_end_at_the_last_column)
{
    std::free(entry.ServerAlias);
    entry.ServerAlias = owned_text(std::string(200, 'n'));
    entry.server_uuid = owned_text(std::string(200, 'u'));
    server_info_toggle();
    EXPECT_EQ(whole_row(1), "ServerName: " + std::string(55, 'n'));
    EXPECT_EQ(row(2), "Location: unknown");
    EXPECT_EQ(whole_row(3), "Connected: NO Unique ServerID: " + std::string(36, 'u'));
    EXPECT_EQ(row(4), "ServerFlags:");
}

TEST_F(server_info_window, a_socket_means_connected)
{
    const server_end server = connect(entry);
    entry.connected = 0; // also while the connect is in progress
    server_info_toggle();
    EXPECT_EQ(row(3), "Connected: YES Unique ServerID: unknown");
}

TEST_F(server_info_window, a_port_of_0_is_shown_as_the_usual_port)
{
    entry.ServerPort = 0;
    server_info_toggle();
    EXPECT_EQ(row(1), "ServerName: srv Port: 2202 Version: unknown");
}

TEST_F(server_info_window, needs_a_selection)
{
    for (const std::int32_t selected : {-1, 0, 2, 100}) {
        app_state.selected = selected;
        server_info_toggle();
        EXPECT_EQ(app_state.popup_win, nullptr) << selected;
    }
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(server_info_window, closes_another_window_too_but_opens_beside_it)
{
    app_state.dialog_win = newwin(1, 10, 3, 30);
    server_info_toggle();
    EXPECT_NE(app_state.popup_win, nullptr);
    EXPECT_NE(app_state.dialog_win, nullptr);
    server_info_toggle();
    EXPECT_EQ(app_state.popup_win, nullptr);
    EXPECT_EQ(app_state.dialog_win, nullptr);
}

} // namespace
