// mail_report_test.cpp - what mails say about a day, in each style.
#include "server/mail/day_news.hpp"
#include "server/mail/mail_day.hpp"
#include "server/mail/mail_report.hpp"
#include "server/protocol/packet.hpp"
#include "server/storage/kept_messages.hpp"
#include "unit/storage_fixture.hpp"

namespace
{

using tovrik::mail_style;

constexpr std::int64_t day = 20458; // 5 January 2026

class mail_report : public storage_database
{
protected:
    void keep(const tovrik::transmission& message, std::time_t second_of_day)
    {
        tovrik::transmission dated = message;
        dated.time = tovrik::mail_day_begin(day) + second_of_day;
        EXPECT_EQ(message_keep(in, dated, dated.time), "");
    }
    tovrik::mail_report made(mail_style style, std::size_t max_bytes = 100000)
    {
        tovrik::mail_report report;
        EXPECT_EQ(mail_report_make(
                      in,
                      {.day = day, .style = style, .server_name = "Home", .max_bytes = max_bytes},
                      reference, report),
                  "");
        EXPECT_EQ(report.subject, "Messages of 05/01/2026 from Home");
        return report;
    }

    tovrik::transmission full{.mode = "2",
                              .registration = "D-AIQA",
                              .label = "H1",
                              .block_id = "3",
                              .message_number = "M01A",
                              .flight_number = "LH0400",
                              .content = "HELLO\nWORLD",
                              .from = "FRA",
                              .to = "JFK",
                              .aircraft = "A320",
                              .operator_name = "Lufthansa",
                              .heard = {.station = "roof"}};
    tovrik::reference_data reference;
};

TEST_F(mail_report, of_the_first_style_is_as_clients_log)
{
    keep(full, 36000);
    keep({.registration = "X"}, 36060);
    EXPECT_EQ(made(mail_style::tovrik).text,
              "Messages of 05/01/2026 from Home\n"
              "2 messages. Times are UTC.\n"
              "\n"
              "ACARS mode: 2  Aircraft reg: D-AIQA [A320]\n"
              "Message label: H1 Block id: 3  Message number: M01A\n"
              "Flight number: LH0400  Flight: FRA-JFK\n"
              "Operator: Lufthansa\n"
              "Message content: -\n"
              "HELLO\n"
              "WORLD\n"
              "-------------------------------------------------[ 05/01/2026 10:00 ]-\n"
              "ACARS mode:   Aircraft reg: X []\n"
              "Message label:  Block id:   Message number: \n"
              "Flight number:   Flight: -\n"
              "Operator: \n"
              "-------------------------------------------------[ 05/01/2026 10:01 ]-\n");
}

TEST_F(mail_report, of_the_second_style_is_as_the_reports_that_clients_ask_for)
{
    ASSERT_TRUE(reference.add(tovrik::kind::add_airport, "FRA\tFrankfurt"));
    keep(full, 36000);
    EXPECT_EQ(made(mail_style::zobe).text, "Messages of 05/01/2026 from Home\n"
                                           "1 message. Times are UTC.\n"
                                           "\n"
                                           "10:00  D-AIQA  A320  Lufthansa\n"
                                           "       Flight LH0400  FRA (Frankfurt) - JFK\n"
                                           "       Mode 2  Label H1  Block 3  Message M01A\n"
                                           "       HELLO\n"
                                           "       WORLD\n"
                                           "\n");
}

TEST_F(mail_report, of_the_third_style_is_what_the_day_comes_to)
{
    keep(full, 36000);
    keep(full, 39599);
    keep({.registration = "D-AIQB", .flight_number = "LH400", .heard = {.station = "garden"}},
         39600);
    keep({.content = "Nobody"}, 86399);
    EXPECT_EQ(made(mail_style::news).text, "Messages of 05/01/2026 from Home\n"
                                           "4 messages of 2 aircraft and 1 flight. Times are UTC.\n"
                                           "\n"
                                           "Busiest hour: 10:00 to 10:59, 2 messages\n"
                                           "\n"
                                           "Heard most, aircraft:\n"
                                           "       2  D-AIQA  A320  Lufthansa\n"
                                           "       1  D-AIQB\n"
                                           "\n"
                                           "Heard most, flights:\n"
                                           "       3  LH400  FRA - JFK\n"
                                           "\n"
                                           "Heard most, airlines:\n"
                                           "       2  Lufthansa\n"
                                           "\n"
                                           "Receivers:\n"
                                           "       2  roof\n"
                                           "       1  garden\n");
}

TEST_F(mail_report, of_an_empty_day_says_so)
{
    keep(full, -1);
    keep(full, 86400);
    for (const auto style : {mail_style::tovrik, mail_style::zobe})
        EXPECT_EQ(made(style).text,
                  "Messages of 05/01/2026 from Home\n0 messages. Times are UTC.\n\n");
    EXPECT_EQ(made(mail_style::news).text,
              "Messages of 05/01/2026 from Home\n"
              "0 messages of 0 aircraft and 0 flights. Times are UTC.\n\n");
}

TEST_F(mail_report, that_is_too_long_counts_what_it_leaves_out)
{
    for (int i = 0; i < 5; ++i)
        keep({.registration = "N" + std::to_string(i)}, i);
    for (const auto style : {mail_style::tovrik, mail_style::zobe}) {
        const std::string whole = made(style).text;
        const std::size_t length = whole.size() - whole.find("\n\n") - 2;
        EXPECT_EQ(made(style, length).text, whole);
        const std::string cut = made(style, length - 1).text;
        EXPECT_NE(cut.find("5 messages, the first 4 of them in this mail. Times are UTC.\n\n"),
                  std::string::npos)
            << cut;
        EXPECT_NE(cut.find("N3"), std::string::npos);
        EXPECT_EQ(cut.find("N4"), std::string::npos);
        EXPECT_NE(made(style, 0).text.find("the first 0 of them"), std::string::npos);
    }
}

TEST(day_news, shows_ten_of_a_kind_and_counts_all)
{
    tovrik::day_news news;
    for (int i = 0; i < 25; ++i)
        day_news_add(news, {.registration = "N" + std::to_string(100 + i)}, i);
    day_news_add(news, {.registration = "N124", .aircraft = "B744"}, 0);
    EXPECT_EQ(day_news_count(news), "26 messages of 25 aircraft and 0 flights");
    const std::string text = day_news_text(news);
    EXPECT_NE(text.find("aircraft:\n       2  N124  B744\n       1  N100\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find("N108"), std::string::npos) << text;
    EXPECT_EQ(text.find("N109"), std::string::npos) << text;
}

} // namespace
