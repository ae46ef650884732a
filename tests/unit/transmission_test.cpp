// transmission_test.cpp - how a transmission looks on the screen, from packet to pane.
#include "net/transmission.hpp"
#include "unit/net_fixture.hpp"

#include "support/compressed.hpp"
#include "ui/server_pane.hpp"
#include "ui/window.hpp"

namespace
{

const int bottom_row = 24 - 9; // of the message pane's scrolling region

class transmission : public net_test
{
protected:
    explicit transmission(int columns = 160)
        : net_test(columns), entry(add_server("host.example")), server(connect(entry))
    {
    }

    void receive(const std::string& elements) const
    {
        server.send({40, transmission_xml(elements)});
        poll_all();
    }

    /// The message pane's rows `first` to `last`.
    std::vector<std::string> message_rows(int first, int last) const
    {
        std::vector<std::string> rows;
        for (int row = first; row <= last; ++row)
            rows.push_back(message_row(row));
        return rows;
    }

    server_entry& entry;
    server_end server;
};

using texts = std::vector<std::string>;

const texts plain_rows = {"ACARS mode: 2  Aircraft reg: .D-AIPA [A320]",
                          "Message label: H1 Block id: 7  Message number: M01A",
                          "Flight number: LH0123  Flight: EDDF-EGLL", "Operator: Lufthansa",
                          "-------------------------------------------------[ 05/03/2004 12:34 ]-"};

TEST_F(transmission, takes_five_rows_and_a_blank_one_without_a_message_text)
{
    receive(plain_elements);
    texts expected = {"", ""};
    expected.insert(expected.end(), plain_rows.begin(), plain_rows.end());
    expected.emplace_back("");
    EXPECT_EQ(message_rows(bottom_row - 7, bottom_row), expected);
    EXPECT_EQ(message_row(bottom_row + 1), "");
    EXPECT_EQ(said(), status_lines{});
}

TEST_F(transmission, takes_two_more_rows_with_a_message_text)
{
    receive(plain_elements + content_elements);
    texts expected = {""};
    expected.insert(expected.end(), plain_rows.begin(), plain_rows.end());
    expected.insert(expected.end() - 1, {"Message content: -", "POSITION REPORT"});
    expected.emplace_back("");
    EXPECT_EQ(message_rows(bottom_row - 8, bottom_row), expected);
}

TEST_F(transmission, begins_at_column_one_in_plain_white)
{
    receive(plain_elements);
    WINDOW* pane = app_state.message_pane;
    EXPECT_EQ(mvwinch(pane, bottom_row - 5, 1) & A_CHARTEXT, static_cast<chtype>('A'));
    EXPECT_EQ(mvwinch(pane, bottom_row - 5, 0) & A_CHARTEXT, static_cast<chtype>(' '));
    EXPECT_EQ(screen.pair_at(pane, bottom_row - 5, 1), 2);
    EXPECT_FALSE(screen.is_bold_at(pane, bottom_row - 5, 1));
}

TEST_F(transmission, pushes_the_previous_one_up)
{
    receive("<ACARS><ACARSMode>first</ACARSMode></ACARS>");
    receive(plain_elements);
    EXPECT_EQ(message_row(bottom_row - 11), "ACARS mode: first  Aircraft reg:  []");
    EXPECT_EQ(message_rows(bottom_row - 5, bottom_row - 1), plain_rows);
}

TEST_F(transmission, never_touches_the_rows_outside_the_scrolling_region)
{
    mvwaddch(app_state.message_pane, 0, 1, 'T');
    mvwaddch(app_state.message_pane, bottom_row + 1, 1, 'B');
    for (int count = 0; count < 10; ++count)
        receive(plain_elements + content_elements);
    EXPECT_EQ(message_row(0), "T");
    EXPECT_EQ(message_row(bottom_row + 1), "B");
}

TEST_F(transmission, has_empty_fields_without_any_element)
{
    const texts expected = {
        "ACARS mode:   Aircraft reg:  []",
        "Message label:  Block id:   Message number:", "Flight number:   Flight: -",
        "Operator:", std::string(49, '-') + "[ // : ]-"};
    receive("");
    EXPECT_EQ(message_rows(bottom_row - 5, bottom_row - 1), expected);
    server.send({40, "no document at all"});
    poll_all();
    EXPECT_EQ(message_rows(bottom_row - 5, bottom_row - 1), expected);
    EXPECT_EQ(message_row(bottom_row - 11), expected[0]);
}

TEST_F(transmission, counts_as_one_without_a_message_text_if_it_is_empty)
{
    receive(plain_elements + "<ACARS><Authorized><MessageContent></MessageContent></Authorized>"
                             "</ACARS>");
    EXPECT_EQ(message_rows(bottom_row - 5, bottom_row - 1), plain_rows);
    EXPECT_EQ(message_row(bottom_row - 6), "");
}

TEST_F(transmission, looks_for_a_message_text_by_name_and_shows_the_one_at_its_path)
{
    receive(plain_elements + "<Elsewhere><MessageContent>lost</MessageContent></Elsewhere>");
    EXPECT_EQ(message_row(bottom_row - 3), "Message content: -");
    EXPECT_EQ(message_row(bottom_row - 2), "");
    EXPECT_EQ(message_row(bottom_row - 1), plain_rows.back());
}

TEST_F(transmission, shows_the_lines_of_a_message_text)
{
    receive(plain_elements + "<ACARS><Authorized><MessageContent>one\ntwo\r\n\nthree"
                             "</MessageContent></Authorized></ACARS>");
    EXPECT_EQ(message_rows(bottom_row - 6, bottom_row - 1),
              (texts{"Message content: -", "one", "two", "", "three", plain_rows.back()}));
}

TEST_F(transmission, shows_control_bytes_as_stand_ins)
{
    receive("<Extended><Operator>\x1b[2J\x9b\x07</Operator></Extended>");
    EXPECT_EQ(message_row(bottom_row - 2), "Operator: ?[2J??");
}

TEST_F(transmission, closes_the_popup_that_is_open)
{
    app_state.popup_win = popup_open(20, 5, 30, 5, false, colour::frame, true);
    app_state.dialog_win = popup_open(20, 5, 32, 6, false, colour::frame, true);
    receive(plain_elements);
    EXPECT_EQ(app_state.popup_win, nullptr);
    EXPECT_EQ(app_state.dialog_win, nullptr);
}

TEST_F(transmission, is_written_but_not_shown_behind_the_settings_page)
{
    app_state.settings_shown = 1;
    receive(plain_elements);
    EXPECT_EQ(message_rows(bottom_row - 5, bottom_row - 1), plain_rows);
    EXPECT_TRUE(is_wintouched(app_state.message_pane));
    app_state.settings_shown = 0;
    receive(plain_elements);
    EXPECT_FALSE(is_wintouched(app_state.message_pane));
    EXPECT_FALSE(is_wintouched(app_state.status_pane));
}

TEST_F(transmission, brings_the_status_pane_to_the_front_unless_the_settings_page_is_there)
{
    const int row = getbegy(app_state.status_pane) + 1;
    const int column = getbegx(app_state.status_pane) + 2;
    const unique_window cover{newwin(1, 1, row, column)};
    for (const std::int32_t settings_shown : {1, 0}) {
        app_state.settings_shown = settings_shown;
        mvwaddch(cover.get(), 0, 0, 'X');
        wrefresh(cover.get());
        receive(plain_elements);
        EXPECT_EQ((mvwinch(newscr, row, column) & A_CHARTEXT) == 'X', settings_shown != 0);
    }
}

TEST_F(transmission, may_be_compressed)
{
    const std::string xml = transmission_xml(plain_elements);
    const auto hint = static_cast<std::uint16_t>(xml.size() / 4 + 1);
    server.send({204, compressed(xml), hint});
    poll_all();
    EXPECT_EQ(message_rows(bottom_row - 5, bottom_row - 1), plain_rows);
    EXPECT_EQ(said(), status_lines{});
}

/// What zlib says where there is room for nothing: -3 or, in newer versions, -5.
int error_without_room(const std::string& bytes)
{
    Bytef none = 0;
    uLongf length = 0;
    const int error =
        uncompress(&none, &length, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    EXPECT_TRUE(error == -3 || error == -5) << error;
    return error;
}

TEST_F(transmission, is_dropped_when_it_cannot_be_decompressed)
{
    const std::string xml = transmission_xml(plain_elements);
    const struct {
        wire_packet packet;
        int error;
    } rows[] = {
        {{204, compressed(xml), 10}, -5},
        {{204, compressed(xml), 0}, error_without_room(compressed(xml))},
        {{204, "not compressed", 100}, -3},
        {{204, compressed(xml).substr(0, 60), 1000}, -3},
    };
    for (const auto& row : rows) {
        mark();
        server.send(row.packet);
        poll_all();
        const std::string line =
            "Unable to decompress binary paket. Err: " + std::to_string(row.error);
        EXPECT_EQ(said(), (status_lines{{line, 5}}));
        EXPECT_EQ(beeps(), 1U);
    }
    EXPECT_EQ(message_rows(1, bottom_row), texts(static_cast<std::size_t>(bottom_row)));
}

class contacts : public transmission
{
protected:
    contacts()
    {
        app_state.setting_flags = ContactInfo;
    }
};

TEST_F(contacts, are_cyan_below_the_transmission)
{
    receive(plain_elements + "<Contacts>12 contacts with this aircraft</Contacts>");
    EXPECT_EQ(message_row(bottom_row - 1), plain_rows.back());
    EXPECT_EQ(message_row(bottom_row), "12 contacts");
    EXPECT_EQ(screen.pair_at(app_state.message_pane, bottom_row, 1), 11);
    EXPECT_FALSE(screen.is_bold_at(app_state.message_pane, bottom_row, 1));
}

TEST_F(contacts, lose_with_this_aircraft_wherever_it_occurs_and_keep_percent_signs)
{
    receive("<Contacts>1 with this aircraft and 2 with this aircraft today, 50%s</Contacts>");
    EXPECT_EQ(message_row(bottom_row), "1 and 2 today, 50%s");
    receive("<Contacts>3 with these aircraft</Contacts>");
    EXPECT_EQ(message_row(bottom_row), "3 with these aircraft");
    EXPECT_EQ(message_row(bottom_row - 6), "1 and 2 today, 50%s");
}

TEST_F(contacts, leave_the_row_empty_if_they_are_missing)
{
    receive(plain_elements);
    receive(plain_elements + "<Elsewhere><Contacts>9</Contacts></Elsewhere>");
    EXPECT_EQ(message_row(bottom_row - 1), plain_rows.back());
    EXPECT_EQ(message_row(bottom_row), "");
}

TEST_F(contacts, are_not_shown_while_the_switch_is_off)
{
    app_state.setting_flags = 0;
    receive(plain_elements + "<Contacts>12 contacts</Contacts>");
    EXPECT_EQ(message_row(bottom_row), "");
}

class statistics : public transmission
{
protected:
    statistics()
    {
        app_state.setting_flags = FlightStats;
    }

    const std::string flights = "<ContactData><DailyFlights>42</DailyFlights></ContactData>";
};

TEST_F(statistics, are_bold_white_on_blue_beside_the_server)
{
    add_server("z.example");
    entry.list_row = 2; // the second in the list
    receive(plain_elements + flights);
    ASSERT_NE(app_state.dialog_win, nullptr);
    EXPECT_EQ(getbegy(app_state.dialog_win), 3);
    EXPECT_EQ(getbegx(app_state.dialog_win), 27);
    EXPECT_EQ(getmaxy(app_state.dialog_win), 1);
    ASSERT_EQ(getmaxx(app_state.dialog_win), 18);
    std::string text;
    for (int column = 0; column < 18; ++column) {
        text += static_cast<char>(mvwinch(app_state.dialog_win, 0, column) & A_CHARTEXT);
        EXPECT_EQ(screen.pair_at(app_state.dialog_win, 0, column), 10) << column;
        EXPECT_TRUE(screen.is_bold_at(app_state.dialog_win, 0, column)) << column;
    }
    EXPECT_EQ(text, "Unique Flights: 42");
    EXPECT_FALSE(is_wintouched(app_state.dialog_win));
}

TEST_F(statistics, are_beside_the_scrolled_row_of_the_server)
{
    const int rows_visible = LINES - 4;
    for (int index = 0; index < rows_visible + 3; ++index)
        add_server(("z" + std::to_string(index)).c_str());
    server_list_select(app_state.servers->count); // the last one, "host.example"
    entry.list_row = app_state.selected;
    receive(flights);
    ASSERT_NE(app_state.dialog_win, nullptr);
    EXPECT_EQ(getbegy(app_state.dialog_win), 1 + rows_visible);
}

TEST_F(statistics, stay_until_the_next_transmission)
{
    receive(plain_elements + flights);
    server.send({103, "something else"});
    poll_all();
    EXPECT_NE(app_state.dialog_win, nullptr);
    receive(plain_elements);
    EXPECT_EQ(app_state.dialog_win, nullptr);
}

TEST_F(statistics, are_replaced_by_newer_ones)
{
    receive(flights);
    receive("<ContactData><DailyFlights>12345</DailyFlights></ContactData>");
    ASSERT_NE(app_state.dialog_win, nullptr);
    EXPECT_EQ(getmaxx(app_state.dialog_win), 21);
}

TEST_F(statistics, are_not_shown_without_element_or_switch_or_behind_the_settings_page)
{
    receive(plain_elements + "<DailyFlights>42</DailyFlights>");
    EXPECT_EQ(app_state.dialog_win, nullptr);
    app_state.settings_shown = 1;
    receive(flights);
    EXPECT_EQ(app_state.dialog_win, nullptr);
    app_state.settings_shown = 0;
    app_state.setting_flags = 0;
    receive(flights);
    EXPECT_EQ(app_state.dialog_win, nullptr);
}

TEST_F(statistics, do_no_harm_at_any_length_and_place)
{
    const std::string long_value(511, '9');
    for (const std::int32_t row : {1, 22, 23, 500}) {
        entry.list_row = row;
        receive("<ContactData><DailyFlights>" + long_value + "</DailyFlights></ContactData>");
        EXPECT_EQ(message_row(bottom_row - 1), std::string(49, '-') + "[ // : ]-");
    }
}

class narrow_transmission : public transmission
{
protected:
    narrow_transmission() : transmission(80) {}
};

TEST_F(narrow_transmission, wraps_at_the_edge_of_the_pane)
{
    receive(plain_elements);
    // 52 columns: long rows continue at the left edge of the next one.
    EXPECT_EQ(message_row(bottom_row - 2), std::string(49, '-') + "[");
    EXPECT_EQ(message_row(bottom_row - 1), "5/03/2004 12:34 ]-");
    EXPECT_EQ(message_row(0), "");
    EXPECT_EQ(message_row(bottom_row + 1), "");
}

} // namespace
