// report_reception_test.cpp - receiving reports: their announcement and their pieces.
#include "e2e/report_session.hpp"

namespace
{

constexpr const char* refused = "Report refused, its announced size is out of bounds";

using report_reception = report_session;

TEST_F(report_reception, accepts_pieces_of_any_size)
{
    ASSERT_TRUE(begin());
    std::string text;
    for (int line = 0; line < 3000; ++line)
        text += "line " + std::to_string(line * 7919 % 100'003) + '\n';
    ASSERT_TRUE(send_report(text, 1500));
    ASSERT_TRUE(answer(save_prompt(), "large.txt"));
    expect_saved("./large.txt", text);
    ASSERT_TRUE(send_report("small", 1));
    ASSERT_TRUE(answer(save_prompt(), "small.txt"));
    expect_saved("./small.txt", "small");
}

TEST_F(report_reception, a_text_may_be_four_times_the_announced_size)
{
    ASSERT_TRUE(begin());
    const std::string text(4000, 'x');
    ASSERT_TRUE(send_report(text));
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    expect_saved("./report.txt", text);
}

TEST_F(report_reception, a_text_beyond_four_times_its_size_is_refused)
{
    ASSERT_TRUE(begin());
    const std::string bytes = compressed(std::string(4001, 'x'));
    ASSERT_TRUE(announce(std::to_string(bytes.size()) + "\t1000", "1000"));
    send_piece(bytes);
    ASSERT_TRUE(client.wait_for_status("Unable to decompress binary paket. Err: -5", pairs::error));
    EXPECT_TRUE(terminal().wait_until([&] { return terminal().bells() == 1; }, "a bell"));
    ASSERT_TRUE(wait_until_handled("goes on"));
    expect_nothing_offered();
}

TEST_F(report_reception, bytes_that_are_no_report_are_refused)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(announce("1000\t4000", "4000"));
    send_piece(std::string(999, 'x'));
    ASSERT_TRUE(wait_until_handled("a byte is missing"));
    EXPECT_FALSE(terminal().shows("Unable to decompress"));
    send_piece("x");
    ASSERT_TRUE(client.wait_for_status("Unable to decompress binary paket. Err: -3", pairs::error));
    EXPECT_TRUE(terminal().wait_until([&] { return terminal().bells() == 1; }, "a bell"));
    send_piece("more"); // belongs to no report
    ASSERT_TRUE(wait_until_handled("goes on"));
    expect_nothing_offered();
}

TEST_F(report_reception, bytes_beyond_the_total_are_cut)
{
    ASSERT_TRUE(begin());
    const std::string bytes = compressed("the text");
    ASSERT_TRUE(announce(std::to_string(bytes.size()) + "\t100", "100"));
    send_piece(bytes.substr(0, 3));
    send_piece(bytes.substr(3) + std::string(4000, 'x'));
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    expect_saved("./report.txt", "the text");
}

TEST_F(report_reception, unannounced_pieces_are_dropped)
{
    ASSERT_TRUE(begin());
    send_pieces(compressed("never asked for"), 5);
    ASSERT_TRUE(wait_until_handled("first"));
    ASSERT_TRUE(announce("4000", "4000")); // a size alone announces nothing
    send_pieces(compressed("never asked for"), 5);
    ASSERT_TRUE(wait_until_handled("second"));
    expect_nothing_offered();
    EXPECT_EQ(terminal().bells(), 0);
}

TEST_F(report_reception, a_new_announcement_starts_over)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(announce("200000000\t50", "50"));
    send_piece(std::string(4000, 'x'));
    ASSERT_TRUE(announce("100\t60", "60"));
    send_piece(std::string(99, 'x'));
    ASSERT_TRUE(send_report("the third"));
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    expect_saved("./report.txt", "the third");
}

TEST_F(report_reception, disconnecting_drops_an_incomplete_report)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(announce("10\t100", "100"));
    send_piece("123");
    ASSERT_TRUE(wait_until_handled("half way"));
    terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status(
        "Connection to alpha:" + std::to_string(server.port()) + " closed", pairs::success));
    connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    send_piece("4567890");
    ASSERT_TRUE(wait_until_handled("nothing came of it"));
    EXPECT_FALSE(terminal().shows("Unable to decompress"));
    EXPECT_EQ(terminal().bells(), 0);
}

TEST_F(report_reception, starts_over_on_the_next_connection)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(announce("100\t100", "100"));
    send_piece("123");
    ASSERT_TRUE(connection->send(3, "bye"));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(send_report("the text"));
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    expect_saved("./report.txt", "the text");
}

TEST_F(report_reception, is_given_up_on_exit)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(announce("2000\t4000", "4000"));
    send_piece(std::string(1999, 'x'));
    ASSERT_TRUE(wait_until_handled("half way"));
    client.quit();
}

struct header_case {
    const char* header;
    const char* size; // as reported; null: the report is refused
};

TEST_F(report_reception, announced_numbers_have_bounds)
{
    ASSERT_TRUE(begin());
    for (const auto& [header, size] : {header_case{"10\t-1", nullptr},
                                       {"-1\t10", nullptr},
                                       {"-5", nullptr},
                                       {"10\t67108865", nullptr},
                                       {"268435457\t10", nullptr},
                                       {"99999999999999999999\t99999999999999999999", nullptr},
                                       {"-99999999999999999999\t1", nullptr},
                                       {"4294967296\t11", nullptr},
                                       {"268435456\t67108864", "67108864"},
                                       {"\t12", "12"},
                                       {"13\t", "0"},
                                       {"x\ty", "0"},
                                       {"x", "0"},
                                       {" 14\t 15x", "15"},
                                       {"16\t17\t18", "17"},
                                       {"%n%s\t19", "19"}}) {
        SCOPED_TRACE(header);
        ASSERT_TRUE(connection->send(74, header));
        ASSERT_TRUE(size == nullptr ? client.wait_for_status(refused, pairs::error)
                                    : client.wait_for_status(size_line(size), pairs::notice));
        // Four lines push out a line that the next header may repeat.
        for (const char* notice : {"one", "two", "three", "four"})
            ASSERT_TRUE(wait_until_handled(notice));
    }
}

TEST_F(report_reception, a_refused_announcement_drops_what_came_before)
{
    ASSERT_TRUE(begin());
    const std::string bytes = compressed("the text");
    ASSERT_TRUE(announce(std::to_string(bytes.size()) + "\t100", "100"));
    send_piece(bytes.substr(0, 3));
    ASSERT_TRUE(connection->send(74, "-1\t100"));
    ASSERT_TRUE(client.wait_for_status(refused, pairs::error));
    send_piece(bytes.substr(3));
    ASSERT_TRUE(wait_until_handled("nothing came of it"));
    expect_nothing_offered();
}

TEST_F(report_reception, waits_with_its_prompt_for_the_end_of_a_menu)
{
    ASSERT_TRUE(begin());
    terminal().send_control('a');
    ASSERT_TRUE(menu_is(update_menu));
    client.clock().stop();
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(client.wait_for_polls());
    terminal().send("x"); // no key of the menu
    EXPECT_TRUE(menu_is(update_menu));
    expect_nothing_offered();
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(answer(save_prompt(), "1.txt"));
    expect_saved("./1.txt", "text");
    ASSERT_TRUE(dialog_ends(save_question));
}

TEST_F(report_reception, waits_with_its_prompt_for_the_end_of_another)
{
    ASSERT_TRUE(begin());
    terminal().send_control('o');
    ASSERT_TRUE(prompt_is({"Date of report (DD/MM/YYYY)", 12}));
    client.clock().stop();
    terminal().send("16/11");
    const prompt_look typed{"Date of report (DD/MM/YYYY)", 12, or_cancel, "16/11"};
    ASSERT_TRUE(prompt_is(typed));
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(client.wait_for_polls());
    expect_nothing_offered();
    ASSERT_TRUE(answer(typed, "/2026"));
    expect_sent({.kind = 70, .payload = "1794787201\t*#cnam#\t#cnum#\t0\t0"});
    ASSERT_TRUE(escape(save_prompt()));
}

} // namespace
