// dispatch_test.cpp - what the client does with each kind of packet from a server.
#include "unit/net_fixture.hpp"

#include "net/packet_dispatch.hpp"
#include "net/report_reception.hpp"
#include "ui/layout.hpp"
#include "ui/pane.hpp"
#include "ui/screen.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>

namespace
{

class dispatch : public net_test
{
protected:
    dispatch() : entry(add_server("host.example", "srv")), server(connect(entry)) {}

    /// Sends one packet through the connection and makes the client receive it.
    void receive(const wire_packet& packet)
    {
        mark();
        server.send(packet);
        poll_all();
    }

    server_entry& entry;
    server_end server;
};

TEST_F(dispatch, says_beeps_and_answers_by_the_kind)
{
    const struct {
        wire_packet packet;
        status_lines lines;
        std::size_t beeps;
        wire_packets answer;
    } rows[] = {
        {{35, "x"}, {{"Your update request was successfully added", 7}}, 0, {}},
        {{36, "x"}, {{"Your update request could not be added", 5}}, 1, {}},
        {{71, "x"}, {{"Report creation process started...", 6}}, 0, {}},
        {{72, "x"}, {{"All report processes are busy. Try later", 5}}, 1, {}},
        {{73, "x"}, {{"No messages for the selected date found", 5}}, 1, {}},
        {{76, "x"}, {{"Pager process is blocked. Please try later", 5}}, 1, {}},
        {{78, "x"}, {{"Your Pager Request was successfully added/removed", 7}}, 0, {}},
        {{79, "x"}, {{"Your Pager Request could not be added/removed", 5}}, 1, {}},
        {{82, "x"}, {{"Password accepted. MessageAccess granted", 7}}, 1, {}},
        {{83, "x"}, {{"Your password doesnt match. MessageAccess denied", 5}}, 1, {}},
        {{85, "x"}, {{"Answering identification request...", 11}}, 0, {{85, "ncursesclient"}}},
        {{86, "x"}, {{"Client identified. Access granted", 11}}, 0, {}},
        {{87, "x"}, {{"Identification unknown. Client rejected", 5}}, 0, {}},
        {{103, "a notice"}, {{"a notice", 2}}, 0, {}},
        {{103, "100%s %n %5$s"}, {{"100%s %n %5$s", 2}}, 0, {}},
        {{106, "x"}, {{"Updates on this database are not allowed", 5}}, 1, {}},
        {{108, "an error %d"}, {{"an error %d", 5}}, 1, {}},
        {{149, "x"}, {{"You are still connected to srv", 6}}, 3, {}},
        {{27, "x", 0, 25, 0}, {{"Now receiving the last 25 transmissions", 6}}, 0, {}},
        {{27, "x", 0, 25, 1}, {{"Now receiving the last 65561 transmissions", 6}}, 0, {}},
        {{3, "x"}, {{"Connection closed by server", 5}}, 0, {}},
        {{100, "x"}, {{"Connection closed by server", 5}}, 0, {}},
        {{102, "x"}, {{"Connection closed by server", 5}}, 0, {}},
    };
    for (const auto& row : rows) {
        receive(row.packet);
        EXPECT_EQ(said(), row.lines) << row.packet;
        EXPECT_EQ(beeps(), row.beeps) << row.packet;
        EXPECT_EQ(server.take_packets(), row.answer) << row.packet;
        const bool is_close =
            row.packet.kind == 3 || row.packet.kind == 100 || row.packet.kind == 102;
        EXPECT_EQ(entry.socket_fd == 0, is_close) << row.packet;
        if (is_close)
            server = connect(entry);
    }
}

TEST_F(dispatch, shows_errors_notices_and_successes_in_bold_but_not_plain_text)
{
    const struct {
        std::uint32_t kind;
        bool is_bold;
    } rows[] = {{87, true}, {71, true}, {78, true}, {103, false}};
    for (const auto& row : rows) {
        receive({row.kind, "text"});
        EXPECT_EQ(screen.is_bold_at(app_state.status_pane, status_row, 1), row.is_bold) << row.kind;
    }
}

/// Every cell of the status pane, its frame included.
std::string read_status_pane()
{
    std::string cells;
    for (int row = 0; row < getmaxy(app_state.status_pane); ++row)
        for (int column = 0; column < getmaxx(app_state.status_pane); ++column)
            cells += static_cast<char>(mvwinch(app_state.status_pane, row, column) & A_CHARTEXT);
    return cells;
}

TEST_F(dispatch, leaves_the_screen_that_every_line_of_a_long_text_would_leave)
{
    const int width = getmaxx(app_state.status_pane);
    for (const int wide : {10, width - 3, width - 2, width - 1, width, 3 * width}) {
        std::vector<std::string> lines;
        lines.reserve(100);
        for (int number = 0; number < 100; ++number)
            lines.push_back("line " + std::to_string(number));
        for (const std::size_t place : {1U, 20U, 23U, 97U})
            lines[place].resize(static_cast<std::size_t>(wide), 'w');
        std::string text;
        mark();
        for (const std::string& line : lines) {
            status_report(colour::server_text, "%s", line.c_str());
            text += line + '\n';
        }
        const std::string expected = read_status_pane();
        screen_clear();
        ASSERT_EQ(screen_build(), 1);
        receive({64, text});
        EXPECT_EQ(read_status_pane(), expected) << wide;
        EXPECT_EQ(said().back().text, "line 99");
        screen_clear();
        ASSERT_EQ(screen_build(), 1);
    }
}

TEST_F(dispatch, ignores_every_other_kind)
{
    const std::set<std::uint32_t> known = {3,  5,  25,  26,  27,  35,  36,  40,  41,  64,  71,
                                           72, 73, 74,  76,  78,  79,  82,  83,  85,  86,  87,
                                           89, 90, 100, 102, 103, 106, 108, 149, 153, 204, 205};
    mark();
    const auto ignored = [&](std::uint32_t kind) {
        server.send({kind, "some text"});
        poll_all();
        EXPECT_EQ(said(), status_lines{}) << kind;
        EXPECT_EQ(server.take_bytes(), "") << kind;
        ASSERT_NE(entry.socket_fd, 0) << kind;
    };
    for (std::uint32_t kind = 0; kind <= 300; ++kind) {
        if (!known.contains(kind))
            ignored(kind);
    }
    for (const std::uint32_t kind : {65'539U, 1'000'003U, 0x80000003U, 0xFFFFFFFFU})
        ignored(kind);
    EXPECT_EQ(beeps(), 0U);
    EXPECT_EQ(message_row(LINES - 9), "");
    EXPECT_EQ(entry.rx_packet, nullptr);
}

TEST_F(dispatch, closing_clears_the_connection_and_leaves_the_rest)
{
    for (const std::uint32_t kind : {3U, 100U, 102U}) {
        entry.server_uuid = owned_text("uuid");
        entry.server_version = owned_text("1.0");
        entry.can_mail = 1;
        entry.log_file = std::tmpfile();
        entry.report_buffer = owned_text("half a report");
        entry.report_received = 13;
        EXPECT_EQ(marker_of(entry), '*');
        receive({kind, "x"});
        EXPECT_TRUE(server.is_ended()) << kind;
        EXPECT_EQ(entry.socket_fd, 0);
        EXPECT_EQ(entry.server_uuid, nullptr);
        EXPECT_EQ(entry.server_version, nullptr);
        EXPECT_EQ(marker_of(entry), ' ');
        EXPECT_EQ(entry.rx_packet, nullptr);
        // Only the user's commands and new connections change these.
        EXPECT_EQ(entry.connected, 1);
        EXPECT_EQ(entry.can_mail, 1);
        EXPECT_STREQ(static_cast<const char*>(entry.report_buffer), "half a report");
        EXPECT_EQ(entry.report_received, 13U);
        report_reception_drop(entry);
        ASSERT_NE(entry.log_file, nullptr);
        std::fclose(entry.log_file);
        entry.log_file = nullptr;
        server = connect(entry);
    }
}

TEST_F(dispatch, ignores_a_close_without_payload)
{
    receive({3, ""});
    EXPECT_EQ(said(), status_lines{});
    EXPECT_NE(entry.socket_fd, 0);
}

TEST_F(dispatch, turns_the_marker_with_every_tick)
{
    std::string markers{marker_of(entry)};
    for (int tick = 0; tick < 5; ++tick) {
        receive({5, "x"});
        markers += marker_of(entry);
    }
    EXPECT_EQ(markers, "*-/-/-");
    EXPECT_EQ(screen.pair_at(app_state.server_pane, entry.list_row + 1, 1), 7);
    EXPECT_TRUE(screen.is_bold_at(app_state.server_pane, entry.list_row + 1, 1));
    EXPECT_EQ(said(), status_lines{});
}

TEST_F(dispatch, ticks_change_nothing_behind_the_settings_page)
{
    receive({5, "x"});
    app_state.settings_shown = 1;
    receive({5, "x"});
    EXPECT_EQ(marker_of(entry), '-');
    app_state.settings_shown = 0;
    receive({5, "x"});
    EXPECT_EQ(marker_of(entry), '/');
}

TEST_F(dispatch, ticks_turn_the_marker_behind_the_help_too)
{
    app_state.help_shown = 1;
    receive({5, "x"});
    EXPECT_EQ(marker_of(entry), '-');
    app_state.help_shown = 0;
}

TEST_F(dispatch, ticks_appear_below_the_row_that_the_entry_names)
{
    // list_row only places the markers; it is not looked up again.
    entry.list_row = 7;
    receive({5, "x"});
    EXPECT_EQ(mvwinch(app_state.server_pane, 8, 1) & A_CHARTEXT, static_cast<chtype>('-'));
}

TEST_F(dispatch, switches_crc_checking)
{
    receive({25, "x"});
    EXPECT_EQ(entry.crc_check, 1);
    receive({26, "x"});
    EXPECT_EQ(entry.crc_check, 0);
    EXPECT_EQ(said(), status_lines{});
}

TEST_F(dispatch, forgets_a_password_that_is_refused_and_keeps_one_that_is_accepted)
{
    entry.Password = owned_text("900150983cd24fb0d6963f7d28e17f72");
    receive({82, "x"});
    EXPECT_STREQ(entry.Password, "900150983cd24fb0d6963f7d28e17f72");
    receive({83, "x"});
    EXPECT_EQ(entry.Password, nullptr);
    receive({83, "x"});
    EXPECT_EQ(entry.Password, nullptr);
    EXPECT_NE(entry.socket_fd, 0);
}

TEST_F(dispatch, prints_texts_of_several_lines_line_by_line)
{
    const struct {
        const char* text;
        std::vector<std::string> lines;
    } rows[] = {
        {"one line", {"one line"}},
        {"a\nb", {"a", "b"}},
        {"a\n\nb", {"a", "b"}},
        {"a\n\n\nb", {"a", "", "b"}}, // two of the three become one
        {"a\n\n\n\nb", {"a", "", "b"}},
        {"\na", {"", "a"}},
        {"\n\na", {"", "a"}},
        {"a\n", {"a"}},
        {"a\n\n", {"a"}},
        {"a\n\n\n", {"a", ""}},
        {"a\nb\n", {"a", "b"}},
        {"100% %s\n%n%*d", {"100% %s", "%n%*d"}},
        {"%*s whole", {"%*s whole"}},
    };
    for (const std::uint32_t kind : {64U, 90U}) {
        for (const auto& row : rows) {
            receive({kind, row.text});
            status_lines expected;
            for (const std::string& line : row.lines)
                expected.push_back({line, line.empty() ? 0 : 15});
            EXPECT_EQ(said(), expected) << row.text;
        }
    }
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(dispatch, shows_the_last_four_lines_of_a_long_text)
{
    receive({90, "1\n2\n3\n4\n5\n6"});
    EXPECT_EQ(said(), (status_lines{{"3", 15}, {"4", 15}, {"5", 15}, {"6", 15}}));
}

TEST_F(dispatch, shows_control_bytes_of_a_server_as_stand_ins)
{
    receive({103, "\x1b[31mred\x9b\x07"});
    EXPECT_EQ(said(), (status_lines{{"?[31mred??", 2}}));
    EXPECT_EQ(beeps(), 0U);
    receive({64, "a\rb\tc\n\x1b]0;title\x07"});
    EXPECT_EQ(said(), (status_lines{{"a b c", 15}, {"?]0;title?", 15}}));
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(dispatch, survives_texts_that_fill_the_packet)
{
    for (const std::uint32_t kind : {41U, 64U, 90U, 103U, 108U, 153U}) {
        for (const char filler : {'x', '\n', '\t', '%', '<'}) {
            receive({kind, std::string(4096, filler)});
            ASSERT_NE(entry.socket_fd, 0);
            ASSERT_EQ(entry.rx_packet, nullptr);
        }
    }
}

TEST_F(dispatch, shows_the_uptime_of_a_server)
{
    const struct {
        const char* text;
        const char* line; // null: nothing is shown
    } rows[] = {
        {"90061\t12\tx", "Uptime: 1 days, 1 hours, 1 minutes 1 seconds. 12 clients connected"},
        {"0\t0\t", "Uptime: 0 days, 0 hours, 0 minutes 0 seconds. 0 clients connected"},
        {"86399\t1\tx", "Uptime: 0 days, 23 hours, 59 minutes 59 seconds. 1 clients connected"},
        {"8640000\t7\tx", "Uptime: 100 days, 0 hours, 0 minutes 0 seconds. 7 clients connected"},
        {"x\ty\tz", "Uptime: 0 days, 0 hours, 0 minutes 0 seconds. 0 clients connected"},
        {"\t\t", "Uptime: 0 days, 0 hours, 0 minutes 0 seconds. 0 clients connected"},
        {"90061\t12", nullptr},
        {"90061", nullptr},
        {"90061\t12\tx\ty", nullptr},
        {"90061 12 x", nullptr},
    };
    for (const auto& row : rows) {
        receive({153, row.text});
        status_lines expected;
        if (row.line != nullptr)
            expected.push_back({row.line, 11});
        EXPECT_EQ(said(), expected) << row.text;
    }
}

TEST_F(dispatch, handles_a_packet_in_memory_too)
{
    mark();
    packet_buffer packet = {};
    const std::string bytes = wire_bytes({103, "by hand"});
    std::copy(bytes.begin(), bytes.begin() + 12, packet.header);
    std::copy(bytes.begin() + 12, bytes.end(), packet.payload);
    packet_dispatch(entry, packet);
    EXPECT_EQ(said(), (status_lines{{"by hand", 2}}));
    EXPECT_EQ(std::memcmp(packet.header, bytes.data(), 12), 0);
}

} // namespace
