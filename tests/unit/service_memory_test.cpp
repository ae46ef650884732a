// service_memory_test.cpp - what is shown and kept of servers' messages when out of memory.
#include "unit/failing_memory.hpp"
#include "unit/net_fixture.hpp"
#include "unit/own_clock.hpp"
#include "unit/report_replies.hpp"

#include "data/template.hpp"
#include "data/text.hpp"
#include "net/transmission.hpp"
#include "services/mailing.hpp"
#include "services/pager.hpp"
#include "services/pager_list.hpp"
#include "services/request_text.hpp"
#include "services/server_info.hpp"
#include "support/compressed.hpp"
#include "support/temp_home.hpp"
#include "ui/popup.hpp"
#include "ui/window.hpp"

#include <algorithm>
#include <utility>

namespace
{

constexpr int bottom_row = 24 - 9; // of the message pane's scrolling region

class services_out_of_memory : public net_test
{
protected:
    services_out_of_memory() : entry(add_server("host.example")) {}
    ~services_out_of_memory() override
    {
        popup_close();
        flushinp();
    }
    services_out_of_memory(const services_out_of_memory&) = delete;
    services_out_of_memory& operator=(const services_out_of_memory&) = delete;

    server_entry& entry;
};

TEST_F(services_out_of_memory, leaves_placeholders_that_it_cannot_fill_without_a_percent_sign)
{
    const xml_document document{xml_parse("<?xml?><a><b>one</b><c>and two</c></a>")};
    const std::string pattern = "1: %a/b%, 2: %a/c%, 3: %a/d%.";
    const std::string filled_up_to[] = {"1: #a/b#, 2: #a/c#, 3: #a/d#.",
                                        "1: one, 2: #a/c#, 3: #a/d#.",
                                        "1: one, 2: and two, 3: #a/d#."};
    const std::string whole = "1: one, 2: and two, 3: .";
    heap_text text;
    try_each_allocation({
        .prepare = [&] { text.reset(str_dup(pattern.c_str())); },
        .call = [&] { text.reset(fill_template(text.release(), document.get())); },
        .expect_after_failure =
            [&](memory_failure failure, long nth) {
                ASSERT_TRUE(text);
                // One placeholder takes a text, and memory for a longer result.
                const std::string expected =
                    failure == memory_failure::once ? whole : filled_up_to[std::min(nth / 2, 2L)];
                EXPECT_EQ(text.get(), expected);
            },
        .expect_success = [&] { EXPECT_EQ(text.get(), whole); },
    });
}

TEST_F(services_out_of_memory, loses_one_transmission_at_most)
{
    app_state.setting_flags = ContactInfo | FlightStats;
    const xml_document document{
        xml_parse(transmission_xml(plain_elements + content_elements +
                                   "<Contacts>3 with this aircraft</Contacts>"
                                   "<ContactData><DailyFlights>77</DailyFlights></ContactData>")
                      .c_str())};
    try_each_allocation({
        .prepare =
            [&] {
                popup_close();
                wscrl(app_state.message_pane, bottom_row);
            },
        .call = [&] { present_transmission(entry, document.get()); },
        .expect_after_failure =
            [&](memory_failure failure, long nth) {
                for (int row = 0; row <= bottom_row; ++row)
                    EXPECT_EQ(message_row(row).find('%'), std::string::npos) << row;
                if (failure == memory_failure::from_then_on && nth == 1) {
                    EXPECT_EQ(message_row(bottom_row - 1), "") << "there was no text at all";
                    EXPECT_EQ(app_state.dialog_win, nullptr);
                }
            },
        .expect_success =
            [&] {
                EXPECT_NE(app_state.dialog_win, nullptr);
                EXPECT_EQ(message_row(bottom_row), "3");
                EXPECT_EQ(message_row(bottom_row - 1).substr(0, 10), "----------");
                EXPECT_EQ(message_row(bottom_row - 2), "POSITION REPORT");
            },
    });
}

TEST_F(services_out_of_memory, shows_no_pager_list_or_its_records_blank)
{
    try_each_allocation({
        .prepare =
            [&] {
                popup_close();
                app_state.popup_win = popup_open(10, 5, 2, 2, true, colour::frame, true);
                flushinp();
                type_ahead("\033");
            },
        .call = [] { pager_list_show("D-AIQA\tFRA\tLH400~^\t^\tBA117"); },
        .expect_after_failure =
            [&](memory_failure, long nth) {
                // The list's own texts come first: without them nothing happens at all.
                EXPECT_EQ(app_state.popup_win != nullptr, nth <= 2);
                EXPECT_EQ(getch() != ERR, nth <= 2) << "the key is for the list alone";
            },
        .expect_success = [&] { EXPECT_EQ(app_state.popup_win, nullptr); },
    });
}

TEST_F(services_out_of_memory, expects_no_more_of_a_report_than_it_has_memory_for)
{
    const auto piece = [&](std::string_view bytes) {
        report_piece(entry, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    };
    try_each_allocation({
        .call = [&] { report_header(entry, "1000\t4000"); },
        .expect_after_failure =
            [&](memory_failure, long) {
                EXPECT_EQ(entry.report_size, 4000U);
                EXPECT_TRUE(entry.report_total == 1000 || entry.report_total == 0);
                const bool takes_bytes =
                    entry.report_buffer != nullptr && entry.report_total == 1000;
                piece("123");
                EXPECT_EQ(entry.report_received, takes_bytes ? 3U : 0U);
            },
        .expect_success =
            [&] {
                ASSERT_NE(entry.report_buffer, nullptr);
                EXPECT_EQ(entry.report_total, 1000U);
                EXPECT_EQ(entry.report_received, 0U);
                piece("123");
                EXPECT_EQ(entry.report_received, 3U);
            },
    });
}

TEST_F(services_out_of_memory, saves_a_whole_report_or_none)
{
    const temp_home home;
    std::free(app_state.setting_texts[ReportPath]);
    app_state.setting_texts[ReportPath] = owned_text(home.path() + "/");
    const std::string text(300, 't');
    const std::vector<unsigned char> bytes = compressed_bytes(text);
    const std::string header = std::to_string(bytes.size()) + "\t100";
    try_each_allocation({
        .prepare =
            [&] {
                std::remove(home.path_of("saved.txt").c_str());
                report_header(entry, header.c_str());
                flushinp();
                type_ahead("saved.txt\n");
            },
        .call = [&] { report_piece(entry, bytes.data(), bytes.size()); },
        .expect_after_failure =
            [&](memory_failure, long) {
                EXPECT_EQ(entry.report_buffer, nullptr);
                if (!home.files().empty()) {
                    EXPECT_EQ(home.read_file("saved.txt"), text);
                }
            },
        .expect_success =
            [&] {
                EXPECT_EQ(entry.report_buffer, nullptr);
                EXPECT_EQ(home.read_file("saved.txt"), text);
            },
    });
}

TEST_F(services_out_of_memory, reports_a_field_that_it_could_not_add)
{
    const own_clock clock; // no pause takes time
    constexpr request_field field = {"Question", 20, "hint", nullptr};
    heap_text text;
    bool is_added = false;
    try_each_allocation({
        .prepare =
            [&] {
                text.reset(str_dup("one"));
                flushinp();
                type_ahead("two\n");
            },
        .call = [&] { is_added = request_field_ask(text, field); },
        .expect_after_failure =
            [&](memory_failure, long) {
                EXPECT_EQ(is_added, std::string_view{text.get()} == "one\ttwo") << text.get();
            },
        .expect_success =
            [&] {
                EXPECT_TRUE(is_added);
                EXPECT_STREQ(text.get(), "one\ttwo");
            },
    });
}

TEST_F(services_out_of_memory, sends_no_pager_entry_that_lacks_a_field)
{
    const own_clock clock; // no pause takes time
    const server_end server = connect(entry);
    try_each_allocation({
        .prepare =
            [&] {
                server.take_bytes();
                flushinp();
                type_ahead("1me\n7\nD-AIQA\nLH400\nFRA\n");
            },
        .call = [&] { pager_dialog(entry); },
        .expect_after_failure =
            [&](memory_failure, long) {
                for (const wire_packet& sent : server.take_packets())
                    EXPECT_EQ(std::ranges::count(sent.text, '\t'), 3) << sent;
            },
        .expect_success =
            [&] {
                EXPECT_EQ(
                    server.take_packets(),
                    (wire_packets{{.kind = 77, .text = "me\tD-AIQA\tLH400\tFRA", .param1 = 7}}));
            },
    });
}

TEST_F(services_out_of_memory, forgets_no_address_and_no_code)
{
    const own_clock clock; // no pause takes time
    try_each_allocation({
        .prepare =
            [&] {
                std::free(entry.UseEMail);
                entry.UseEMail = owned_text("me");
                std::free(entry.SubCode);
                entry.SubCode = owned_text("7");
                flushinp();
                type_ahead("3@home\n8\n");
            },
        .call = [&] { mailing_dialog(entry); },
        .expect_after_failure =
            [&](memory_failure, long) {
                ASSERT_NE(entry.UseEMail, nullptr);
                ASSERT_NE(entry.SubCode, nullptr);
                EXPECT_EQ(std::string_view{entry.UseEMail}.substr(0, 2), "me");
                EXPECT_EQ(std::string_view{entry.SubCode}.substr(0, 1), "7");
            },
        .expect_success =
            [&] {
                EXPECT_STREQ(entry.UseEMail, "me@home");
                EXPECT_STREQ(entry.SubCode, "78");
            },
    });
}

TEST_F(services_out_of_memory, opens_no_window_about_a_server)
{
    try_each_allocation({
        .prepare = [] { popup_close(); },
        .call = [] { server_info_toggle(); },
        .expect_after_failure = [](memory_failure,
                                   long) { EXPECT_EQ(app_state.popup_win, nullptr); },
        .expect_success = [] { EXPECT_NE(app_state.popup_win, nullptr); },
    });
}

} // namespace
