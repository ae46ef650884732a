// pager_list_test.cpp - the window of a pager list: its rows, its limits, how it closes, and what
// may happen meanwhile.
#include "e2e/service_session.hpp"

namespace
{

constexpr const char* close_hint = "Press ESC to close";
const list_look two_rows{.rows = {"D-AIQA  |FRA |LH400 ", "        |    |BA117 "}};
constexpr const char* two_records = "D-AIQA\tFRA\tLH400~^\t^\tBA117";

class pager_list : public service_test
{
protected:
    /// Makes the server send a list, and keeps the window open for as long as a test may take.
    testing::AssertionResult show(const std::string& text, const list_look& look)
    {
        if (!connection->send(89, text))
            return testing::AssertionFailure() << "nobody takes the list";
        testing::AssertionResult shown = list_is(look);
        client.clock().stop();
        return shown;
    }

    testing::AssertionResult close()
    {
        terminal().send_key(named_key::escape);
        return dialog_ends(close_hint);
    }

    /// Records "R0 TAB A0 TAB F0" and so on.
    static std::string records(int count)
    {
        std::string text;
        for (int number = 0; number < count; ++number) {
            const std::string digits = std::to_string(number);
            text.append(number == 0 ? "R" : "~R").append(digits);
            text.append("\tA").append(digits).append("\tF").append(digits);
        }
        return text;
    }

    static std::string row(int number)
    {
        const std::string digits = std::to_string(number);
        const auto field = [&digits](char letter, std::size_t width) {
            return letter + digits + std::string(width - 1 - digits.size(), ' ');
        };
        return field('R', 8) + "|" + field('A', 4) + "|" + field('F', 6);
    }

    static std::vector<std::string> rows(int count)
    {
        std::vector<std::string> all(static_cast<std::size_t>(count));
        for (int number = 0; number < count; ++number)
            all[static_cast<std::size_t>(number)] = row(number);
        return all;
    }
};

TEST_F(pager_list, shows_its_records_and_closes_on_escape)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(traffic());
    const std::string before = terminal().screen().whole_text();
    ASSERT_TRUE(show(two_records, two_rows));
    terminal().send_key(named_key::escape);
    EXPECT_TRUE(terminal().wait_until([&] { return terminal().screen().whole_text() == before; },
                                      "the panes as before"));
    EXPECT_EQ(terminal().bells(), 0);
    expect_nothing_sent();
}

TEST_F(pager_list, comes_in_answer_to_a_request)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose('p', pager_menu, '3'));
    ASSERT_TRUE(answer({"Enter your email address", 50}, "me@example.com"));
    ASSERT_TRUE(answer({"Your subscription code", 15}, "12"));
    expect_sent({.kind = 89, .payload = "me@example.com", .param1 = 12});
    ASSERT_TRUE(show(two_records, two_rows));
    ASSERT_TRUE(close());
}

struct record_case {
    const char* what;
    std::string text;
    std::vector<std::string> rows;
};

const record_case record_cases[] = {
    {"missing fields are empty", "D-AIQA", {"D-AIQA  |    |      "}},
    {"a missing flight is empty", "D-AIQA\tFRA", {"D-AIQA  |FRA |      "}},
    {"empty fields", "\t\tLH400", {"        |    |LH400 "}},
    {"whatever follows the mark of an empty field is not shown",
     "^D-AIQA\t^FRA\t^LH400",
     {"        |    |      "}},
    {"a mark that is not the first character is text",
     "D^AIQA\tF^A\tL^400",
     {"D^AIQA  |F^A |L^400 "}},
    {"a fourth field is left out", "D-AIQA\tFRA\tLH400\tX", {"D-AIQA  |FRA |LH400 "}},
    {"empty records have rows",
     "A~~B",
     {"A       |    |      ", "        |    |      ", "B       |    |      "}},
    {"an end mark makes one more row", "A~", {"A       |    |      ", "        |    |      "}},
    {"nothing at all", std::string(1, '\0'), {}},
    {"values of exactly their widths", "12345678\t1234\t123456", {"12345678|1234|123456"}},
    {"longer values push the others on", "123456789\t12345\t1234567", {"123456789|12345|1234567"}},
    {"a long value goes up to the last column",
     "A\tB\t12345678901234567890",
     {"A       |B   |12345678901"}},
    {"a long first value leaves no room",
     std::string(40, 'x') + "\tFRA\tLH400",
     {std::string(25, 'x')}},
    {"the bar takes the last column", std::string(24, 'x') + "\tFRA", {std::string(24, 'x') + "|"}},
    {"a value ends at the last column",
     std::string(20, 'x') + "\tFRAN\tLH400",
     {std::string(20, 'x') + "|FRAN"}},
    {"percent signs are text", "%s%n\t%d\t100%", {"%s%n    |%d  |100%  "}},
    {"control characters have stand-ins", "A\x01\x1b[2J\tB\x7f\t\x80", {"A??[2J  |B?  |?     "}},
};

TEST_F(pager_list, shows_records_of_every_form)
{
    ASSERT_TRUE(begin());
    for (const record_case& record : record_cases) {
        SCOPED_TRACE(record.what);
        ASSERT_TRUE(show(record.text, {.rows = record.rows}));
        ASSERT_TRUE(close());
    }
}

TEST_F(pager_list, letters_beyond_ascii_take_one_column)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(connection->send(89, "D\xdc\tF\tL"));
    EXPECT_TRUE(shows_at(6, 27, {"│DÜ      │F   │L         │"}));
}

TEST_F(pager_list, shows_as_many_records_as_fit_on_the_terminal)
{
    ASSERT_TRUE(begin({}, {.rows = 30}));
    std::vector<std::string> seen = rows(25);
    seen.push_back("R25     |A25 |F25~R26"); // the rest of the text, up to its tab
    // A terminal of 30 lines has 24 of the 26 rows: the window continues below it.
    ASSERT_TRUE(show(records(40), {.rows = rows(24), .height = 29}));
    terminal().resize(40, 80);
    ASSERT_TRUE(list_is({.rows = seen}));
    ASSERT_TRUE(close());
}

TEST_F(pager_list, shows_every_record_of_a_list_that_just_fits)
{
    ASSERT_TRUE(begin({}, {.rows = 30}));
    ASSERT_TRUE(show(records(26), {.rows = rows(24), .height = 29}));
    terminal().resize(40, 80);
    ASSERT_TRUE(list_is({.rows = rows(26)}));
    ASSERT_TRUE(close());
    terminal().resize(30, 80);
    ASSERT_TRUE(show(records(23), {.rows = rows(23)}));
    ASSERT_TRUE(close());
}

TEST_F(pager_list, survives_thousands_of_records)
{
    ASSERT_TRUE(begin());
    std::string many;
    for (int number = 0; number < 2000; ++number)
        many += "~R";
    ASSERT_TRUE(show("R0\tA0\tF0" + many,
                     {.rows = {"R0      |A0  |F0    ", "R       |    |      "}, .height = 23}));
    ASSERT_TRUE(close());
    ASSERT_TRUE(show(std::string(4096, '~'), {.rows = {"        |    |      "}, .height = 23}));
    ASSERT_TRUE(close());
    ASSERT_TRUE(show(std::string(4096, '\t'), {.rows = {"        |    |      "}}));
    ASSERT_TRUE(close());
}

TEST_F(pager_list, closes_by_itself_after_ten_seconds)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(traffic());
    const std::string before = terminal().screen().whole_text();
    ASSERT_TRUE(connection->send(89, two_records));
    ASSERT_TRUE(list_is(two_rows));
    terminal().send("x"); // only Escape has an effect
    client.clock().jump(11);
    EXPECT_TRUE(terminal().wait_until([&] { return terminal().screen().whole_text() == before; },
                                      "the panes as before"));
}

TEST_F(pager_list, ignores_every_other_key)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(show(two_records, two_rows));
    terminal().send("q \r\t");
    for (const char letter : {'a', 'd', 'e', 'h', 'o', 'p', 'x'})
        terminal().send_control(letter);
    terminal().send_key(named_key::down);
    ASSERT_TRUE(list_is(two_rows));
    ASSERT_TRUE(close());
    EXPECT_EQ(client.marker(1).text, "*");
    expect_nothing_sent();
}

TEST_F(pager_list, delays_the_servers_until_it_closes)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(show(two_records, two_rows));
    const std::int64_t polls = client.clock().alarms_set();
    ASSERT_TRUE(connection->send(103, "after the list"));
    terminal().resize(30, 100);
    ASSERT_TRUE(list_is(two_rows));
    terminal().resize(24, 80);
    ASSERT_TRUE(list_is(two_rows));
    EXPECT_EQ(client.clock().alarms_set(), polls);
    EXPECT_FALSE(terminal().shows("after the list"));
    terminal().send_key(named_key::escape);
    EXPECT_TRUE(client.wait_for_status("after the list", pairs::plain, false));
}

TEST_F(pager_list, stands_in_its_place_on_any_terminal)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(show(two_records, two_rows));
    for (const auto& [rows, columns] :
         {std::pair{43, 132}, {25, 81}, {10, 40}, {5, 10}, {1, 1}, {60, 200}, {24, 80}}) {
        terminal().resize(rows, columns);
        if (rows >= 10) {
            EXPECT_TRUE(list_is(two_rows)) << rows << " x " << columns;
        }
    }
    ASSERT_TRUE(close());
}

TEST_F(pager_list, closes_the_information_window)
{
    ASSERT_TRUE(begin());
    const std::string before = terminal().screen().whole_text();
    terminal().send_control('i');
    ASSERT_TRUE(terminal().wait_until([&] { return terminal().screen().whole_text() != before; },
                                      "the information window"));
    ASSERT_TRUE(show(two_records, two_rows));
    terminal().send_key(named_key::escape);
    EXPECT_TRUE(terminal().wait_until([&] { return terminal().screen().whole_text() == before; },
                                      "neither window"));
}

TEST_F(pager_list, one_list_follows_the_other)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(show(two_records, two_rows));
    ASSERT_TRUE(connection->send(89, "B\tB\tB"));
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(list_is({.rows = {"B       |B   |B     "}}));
    ASSERT_TRUE(close());
}

TEST_F(pager_list, outlives_its_server)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(show(two_records, two_rows));
    connection->reset();
    terminal().resize(30, 100);
    ASSERT_TRUE(list_is(two_rows));
    ASSERT_TRUE(close());
    ASSERT_TRUE(client.wait_for_polls());
}

} // namespace
