// report_request_test.cpp - requesting the report of a day, and the servers' answers.
#include "e2e/service_session.hpp"

namespace
{

const prompt_look date_prompt{"Date of report (DD/MM/YYYY)", 12};
constexpr const char* wrong_format = "Wrong date format. Please use DD/MM/YYYY";

/// Berlin's rules in full, so that no time zone files are needed.
constexpr const char* berlin = "CET-1CEST,M3.5.0,M10.5.0/3";

class report_request : public service_test
{
protected:
    static client_start in_zone(const char* zone)
    {
        return {.environment = {{"TZ", zone}}};
    }

    testing::AssertionResult ask(std::string_view date)
    {
        terminal().send_control('o');
        return answer(date_prompt, date);
    }

    void expect_asked_for(const std::string& moment)
    {
        expect_sent({.kind = 70, .payload = moment + "\t*#cnam#\t#cnum#\t0\t0"});
    }
};

struct date_case {
    const char* typed;
    const char* moment;
};

TEST_F(report_request, a_day_is_sent_as_its_first_second_in_the_local_time)
{
    ASSERT_TRUE(begin({}, in_zone("UTC")));
    for (const auto& [typed, moment] : {date_case{"16/11/2026", "1794787201"},
                                        {"16/7/2026", "1784160001"},
                                        {"5/13/2026", "1799107201"},
                                        {"/11/2026", "1793404801"},
                                        {" 16/ 11/ 26", "-61319116799"},
                                        {"6x/1y/2026", "1767657601"},
                                        {"16/11", "-2207692799"},
                                        {"16/", "-2207692799"},
                                        {"1/1/1970/9", "1"},
                                        {"16/11/20269", "577488268801"}}) {
        SCOPED_TRACE(typed);
        ASSERT_TRUE(ask(typed));
        expect_asked_for(moment);
    }
    EXPECT_EQ(terminal().bells(), 0);
}

TEST_F(report_request, daylight_saving_time_is_ignored)
{
    ASSERT_TRUE(begin({}, in_zone(berlin)));
    ASSERT_TRUE(ask("16/11/2026"));
    expect_asked_for("1794783601");
    ASSERT_TRUE(ask("16/07/2026")); // one second past one o'clock in summer time
    expect_asked_for("1784156401");
}

TEST_F(report_request, days_far_beyond_the_calendar_do_no_harm)
{
    ASSERT_TRUE(begin({}, in_zone("UTC")));
    for (const char* typed : {"//", "/", "-1/-1/-1", "99999999/1/", "2147483648/", "1/1/9999999",
                              "//999999999", "x/y/z", "%s/%n/%d"}) {
        SCOPED_TRACE(typed);
        ASSERT_TRUE(ask(typed));
        const std::optional<server_packet> sent = connection->read_packet();
        ASSERT_TRUE(sent);
        EXPECT_EQ(sent->kind, 70U);
        const std::size_t tab = sent->payload.find('\t');
        ASSERT_NE(tab, std::string::npos);
        EXPECT_GT(tab, 0U);
        EXPECT_EQ(sent->payload.find_first_not_of("-0123456789"), tab);
        EXPECT_EQ(sent->payload.substr(tab), "\t*#cnam#\t#cnum#\t0\t0");
    }
}

TEST_F(report_request, an_answer_without_a_slash_is_refused)
{
    ASSERT_TRUE(begin());
    int bells = 0;
    for (const char* typed : {"161126", "16.11.2026", "%s", "x"}) {
        ASSERT_TRUE(ask(typed));
        ASSERT_TRUE(client.wait_for_status(wrong_format, pairs::error));
        EXPECT_TRUE(terminal().wait_until(
            [&, wanted = bells + 1] { return terminal().bells() == wanted; }, "one more bell"));
        ++bells;
    }
    expect_nothing_sent();
}

TEST_F(report_request, holds_eleven_characters)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(ask("00000000000/11/2026"));
    ASSERT_TRUE(client.wait_for_status(wrong_format, pairs::error)); // the slash did not fit
    expect_nothing_sent();
}

TEST_F(report_request, escape_an_empty_line_and_a_time_out_end_it_silently)
{
    ASSERT_TRUE(begin());
    const std::vector<std::string> before = client.status_lines();
    terminal().send_control('o');
    ASSERT_TRUE(prompt_is(date_prompt));
    terminal().send("1/1");
    ASSERT_TRUE(escape({"Date of report (DD/MM/YYYY)", 12, or_cancel, "1/1"}));
    ASSERT_TRUE(ask(""));
    ASSERT_TRUE(dialog_ends(date_prompt.question));
    terminal().send_control('o');
    ASSERT_TRUE(prompt_is(date_prompt));
    client.clock().jump(11);
    ASSERT_TRUE(dialog_ends(date_prompt.question));
    expect_nothing_sent();
    EXPECT_EQ(terminal().bells(), 0);
    EXPECT_EQ(client.status_lines(), before);
}

TEST_F(report_request, its_prompt_stays_whole_through_traffic_and_resizes)
{
    ASSERT_TRUE(begin());
    terminal().send_control('o');
    ASSERT_TRUE(prompt_is(date_prompt));
    client.clock().stop();
    terminal().send("16/11/");
    const prompt_look typed{"Date of report (DD/MM/YYYY)", 12, or_cancel, "16/11/"};
    ASSERT_TRUE(traffic());
    EXPECT_TRUE(prompt_is(typed));
    for (const auto& [rows, columns] : {std::pair{43, 133}, {25, 81}, {24, 80}}) {
        terminal().resize(rows, columns);
        EXPECT_TRUE(prompt_is(typed)) << rows << " x " << columns;
    }
    ASSERT_TRUE(answer(typed, "2026"));
    expect_asked_for("1794787201");
}

TEST_F(report_request, nothing_is_sent_once_the_server_has_closed)
{
    ASSERT_TRUE(begin());
    terminal().send_control('o');
    ASSERT_TRUE(prompt_is(date_prompt));
    ASSERT_TRUE(connection->send(3, "bye"));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    ASSERT_TRUE(answer(date_prompt, "16/11/2026"));
    ASSERT_TRUE(dialog_ends(date_prompt.question));
    ASSERT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes());
}

struct reply_case {
    std::uint32_t kind;
    const char* text;
    int pair;
    int bells;
};

TEST_F(report_request, replies_are_reported_whether_requested_or_not)
{
    ASSERT_TRUE(begin());
    for (const auto& [kind, text, pair, bells] :
         {reply_case{71, "Report creation process started...", pairs::notice, 0},
          {72, "All report processes are busy. Try later", pairs::error, 1},
          {73, "No messages for the selected date found", pairs::error, 2}}) {
        ASSERT_TRUE(connection->send(kind, "ignored"));
        EXPECT_TRUE(client.wait_for_status(text, pair));
        EXPECT_EQ(terminal().bells(), bells) << text;
    }
    EXPECT_FALSE(terminal().shows("ignored"));
    expect_nothing_sent();
}

} // namespace
