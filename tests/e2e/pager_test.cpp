// pager_test.cpp - changing and requesting a pager list: prompts, packets, replies.
#include "e2e/service_session.hpp"

namespace
{

const prompt_look email_prompt{"Enter your email address", 50};
const prompt_look code_prompt{"Your subscription code", 15};
const prompt_look registration_prompt{"Enter Aircraft Registration", 30};
const prompt_look flight_prompt{"Enter FlightNumber", 30};
const prompt_look airport_prompt{"Enter Destination Airport (IATA)", 30};

constexpr const char* wildcards = "You can use '_', '?' or '*' as wildcard";
constexpr const char* nothing_given = "Please enter data in one of the fields";

struct change_case {
    const char* name;
    char choice;
    std::uint32_t kind;
};

class pager : public service_test
{
protected:
    testing::AssertionResult choose_pager(char choice)
    {
        return choose('p', pager_menu, choice);
    }

    /// Answers the first two prompts.
    testing::AssertionResult identify(std::string_view email, std::string_view code)
    {
        testing::AssertionResult asked = answer(email_prompt, email);
        return asked ? answer(code_prompt, code) : asked;
    }

    /// Answers the three fields; null means Escape.
    testing::AssertionResult give(const char* registration, const char* flight, const char* airport)
    {
        testing::AssertionResult asked = testing::AssertionSuccess();
        const std::pair<const prompt_look&, const char*> fields[] = {
            {registration_prompt, registration},
            {flight_prompt, flight},
            {airport_prompt, airport}};
        for (const auto& [look, typed] : fields) {
            if (asked)
                asked = typed != nullptr ? answer(look, typed) : escape(look);
        }
        return asked;
    }
};

class pager_change : public pager, public testing::WithParamInterface<change_case>
{
};

INSTANTIATE_TEST_SUITE_P(all, pager_change,
                         testing::Values(change_case{"adding", '1', 77},
                                         change_case{"removing", '2', 88}),
                         [](const auto& about) { return about.param.name; });

struct fields_case {
    const char* registration;
    const char* flight;
    const char* airport;
    const char* sent;
};

TEST_P(pager_change, sends_four_fields_whichever_were_given)
{
    ASSERT_TRUE(begin());
    for (const auto& [registration, flight, airport, sent] :
         {fields_case{"D-AIQA", "LH400", "FRA", "me@example.com\tD-AIQA\tLH400\tFRA"},
          {nullptr, "LH400", nullptr, "me@example.com\t\tLH400\t"},
          {"D-AIQA", nullptr, nullptr, "me@example.com\tD-AIQA\t\t"},
          {nullptr, nullptr, "FRA", "me@example.com\t\t\tFRA"},
          {"", "LH400", "", "me@example.com\t\tLH400\t"},
          {"D-A*", "LH_?", "*", "me@example.com\tD-A*\tLH_?\t*"},
          {"%s%n", "100%", "%%", "me@example.com\t%s%n\t100%\t%%"},
          {"D\tA", nullptr, nullptr, "me@example.com\tD\tA\t\t"}}) {
        ASSERT_TRUE(choose_pager(GetParam().choice));
        ASSERT_TRUE(identify("me@example.com", "4711"));
        ASSERT_TRUE(give(registration, flight, airport));
        expect_sent({.kind = GetParam().kind, .payload = sent, .param1 = 4711});
    }
    ASSERT_TRUE(dialog_ends(airport_prompt.question));
    EXPECT_TRUE(client.wait_for_status(wildcards, pairs::server_text, false));
    EXPECT_EQ(terminal().bells(), 0);
}

TEST_P(pager_change, asks_for_at_least_one_field)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_pager(GetParam().choice));
    ASSERT_TRUE(identify("me@example.com", "4711"));
    ASSERT_TRUE(give(nullptr, "", nullptr));
    ASSERT_TRUE(client.wait_for_status(nothing_given, pairs::error));
    EXPECT_EQ(terminal().bells(), 1);
    expect_nothing_sent();
}

TEST_P(pager_change, fields_that_time_out_are_empty)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_pager(GetParam().choice));
    ASSERT_TRUE(identify("me@example.com", "1"));
    ASSERT_TRUE(prompt_is(registration_prompt));
    client.clock().jump(11);
    ASSERT_TRUE(answer(flight_prompt, "LH400"));
    ASSERT_TRUE(prompt_is(airport_prompt));
    client.clock().jump(11);
    expect_sent({.kind = GetParam().kind, .payload = "me@example.com\t\tLH400\t", .param1 = 1});
}

TEST_P(pager_change, stops_without_an_address_or_a_code)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_pager(GetParam().choice));
    ASSERT_TRUE(escape(email_prompt));
    EXPECT_TRUE(client.wait_for_status(wildcards, pairs::server_text, false));
    ASSERT_TRUE(choose_pager(GetParam().choice));
    ASSERT_TRUE(answer(email_prompt, "me@example.com"));
    ASSERT_TRUE(escape(code_prompt));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(terminal().shows(registration_prompt.question));
    EXPECT_FALSE(terminal().shows(nothing_given));
    EXPECT_EQ(terminal().bells(), 0);
    expect_nothing_sent();
}

TEST_P(pager_change, every_prompt_stays_whole_through_traffic_and_resizes)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_pager(GetParam().choice));
    for (prompt_look prompt :
         {email_prompt, code_prompt, registration_prompt, flight_prompt, airport_prompt}) {
        ASSERT_TRUE(prompt_is(prompt));
        terminal().send("7");
        prompt.text = "7";
        ASSERT_TRUE(prompt_is(prompt));
        client.clock().stop();
        ASSERT_TRUE(traffic());
        EXPECT_TRUE(prompt_is(prompt));
        for (const auto& [rows, columns] : {std::pair{43, 133}, {24, 80}}) {
            terminal().resize(rows, columns);
            EXPECT_TRUE(prompt_is(prompt)) << rows << " x " << columns;
        }
        terminal().send_key(named_key::enter);
    }
    expect_sent({.kind = GetParam().kind, .payload = "7\t7\t7\t7", .param1 = 7});
}

TEST_P(pager_change, sends_nothing_once_the_server_has_closed)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_pager(GetParam().choice));
    ASSERT_TRUE(identify("me@example.com", "4711"));
    ASSERT_TRUE(prompt_is(registration_prompt));
    ASSERT_TRUE(connection->send(3, "bye"));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    ASSERT_TRUE(give("D-AIQA", nullptr, "FRA"));
    ASSERT_TRUE(dialog_ends(airport_prompt.question));
    ASSERT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST_F(pager, asking_for_the_list_sends_the_address_alone)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_pager('3'));
    ASSERT_TRUE(identify("me@example.com", "4711"));
    expect_sent({.kind = 89, .payload = "me@example.com", .param1 = 4711});
    ASSERT_TRUE(dialog_ends(code_prompt.question));
    EXPECT_FALSE(terminal().shows(wildcards));
    EXPECT_FALSE(terminal().shows(registration_prompt.question));
}

TEST_F(pager, asking_for_the_list_stops_without_an_address_or_a_code)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_pager('3'));
    ASSERT_TRUE(escape(email_prompt));
    ASSERT_TRUE(choose_pager('3'));
    ASSERT_TRUE(identify("me@example.com", ""));
    ASSERT_TRUE(dialog_ends(code_prompt.question));
    expect_nothing_sent();
}

struct code_case {
    const char* typed;
    std::uint16_t sent;
};

TEST_F(pager, a_code_is_sent_as_its_leading_number)
{
    ASSERT_TRUE(begin());
    for (const auto& [typed, sent] : {code_case{"12ab", 12},
                                      {"letters", 0},
                                      {" 12", 12},
                                      {"65535", 65535},
                                      {"65536", 0},
                                      {"70000", 4464},
                                      {"-1", 65535},
                                      {"0x10", 0},
                                      {"99999999999999", 0x3FFF},
                                      {"000000000000012", 1}}) {
        ASSERT_TRUE(choose_pager('3'));
        ASSERT_TRUE(identify("me@example.com", typed));
        expect_sent({.kind = 89, .payload = "me@example.com", .param1 = sent});
    }
}

TEST_F(pager, the_configured_address_and_code_are_offered_and_not_changed)
{
    client_settings settings{.save_on_exit = true};
    settings.servers.push_back({.alias = "alpha", .subcode = "12", .email = "me@example.com"});
    ASSERT_TRUE(begin(settings));
    ASSERT_TRUE(choose_pager('3'));
    ASSERT_TRUE(answer({"Enter your email address", 50, or_cancel, "me@example.com"}, ".au"));
    ASSERT_TRUE(answer({"Your subscription code", 15, or_cancel, "12"}, "3"));
    expect_sent({.kind = 89, .payload = "me@example.com.au", .param1 = 123});
    ASSERT_TRUE(dialog_ends(code_prompt.question));
    client.quit();
    settings.servers.front().port = std::to_string(server.port());
    EXPECT_EQ(client.home().read_config(), config_text(settings));
}

TEST_F(pager, a_configured_code_that_is_too_long_is_cut_to_fit)
{
    client_settings settings;
    settings.servers.push_back(
        {.alias = "alpha", .subcode = "000000000000001234", .email = "me@example.com"});
    ASSERT_TRUE(begin(settings));
    ASSERT_TRUE(choose_pager('3'));
    ASSERT_TRUE(answer({"Enter your email address", 50, or_cancel, "me@example.com"}, ""));
    ASSERT_TRUE(answer({"Your subscription code", 15, or_cancel, "00000000000000"}, ""));
    expect_sent({.kind = 89, .payload = "me@example.com", .param1 = 0});
}

TEST_F(pager, fields_hold_29_characters)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_pager('1'));
    ASSERT_TRUE(identify(std::string(60, 'e'), "1"));
    ASSERT_TRUE(give(std::string(32, 'r').c_str(), std::string(32, 'f').c_str(),
                     std::string(32, 'a').c_str()));
    expect_sent({.kind = 77,
                 .payload = std::string(49, 'e') + '\t' + std::string(29, 'r') + '\t' +
                            std::string(29, 'f') + '\t' + std::string(29, 'a'),
                 .param1 = 1});
}

struct reply_case {
    std::uint32_t kind;
    const char* text;
    int pair;
    int bells;
};

TEST_F(pager, replies_are_reported_whether_requested_or_not)
{
    ASSERT_TRUE(begin());
    for (const auto& [kind, text, pair, bells] :
         {reply_case{76, "Pager process is blocked. Please try later", pairs::error, 1},
          {78, "Your Pager Request was successfully added/removed", pairs::success, 1},
          {79, "Your Pager Request could not be added/removed", pairs::error, 2}}) {
        ASSERT_TRUE(connection->send(kind, "ignored"));
        EXPECT_TRUE(client.wait_for_status(text, pair));
        EXPECT_EQ(terminal().bells(), bells) << text;
    }
    EXPECT_FALSE(terminal().shows("ignored"));
}

} // namespace
