// database_update_test.cpp - requests for new entries in a server's databases: every prompt, what
// is sent for every answer, and the replies.
#include "e2e/service_session.hpp"

namespace
{

constexpr const char* or_none = "RET=OK - ESC=NONE";
constexpr const char* or_unknown = "RET=OK - ESC=UNKNOWN";
constexpr const char* or_every_day = "RET=OK - ESC=EVERY DAY";

struct field_case {
    prompt_look look;
    const char* typed;
    const char* fallback = nullptr; // what Escape leaves; null: it cancels the request
};

struct request_case {
    const char* name;
    char choice;
    std::uint32_t kind;
    std::vector<field_case> fields;
};

const std::vector<request_case> request_cases = {
    {"airline",
     '1',
     31,
     {{{"Enter IATA or ICAO Code", 30}, "LH"}, {{"Enter Airline", 30}, "Lufthansa"}}},
    {"flight",
     '2',
     30,
     {{{"Enter Flightnumber", 25}, "LH400"},
      {{"Routing (FROM-VIA-VIA-TO)", 40}, "FRA-JFK"},
      {{"Enter Remarks", 40, or_none}, "daily", ""},
      {{"Days of flight -X----X", 30, or_every_day}, "-X----X", "XXXXXXX"}}},
    {"aircraft",
     '3',
     38,
     {{{"Enter Registration", 25}, "D-AIQA"},
      {{"Manufacturer (Airbus, Boeing)", 40}, "Airbus"},
      {{"Aircraft (A320, B737)", 40}, "A320"},
      {{"Aircraft (A320-214, B737-5K5)", 40}, "A320-211"},
      {{"Construction Number", 30, or_unknown}, "0172", ""},
      {{"Operator IATA Code", 30, or_unknown}, "LH", ""},
      {{"Operator ICAO Code", 30, or_unknown}, "DLH", ""},
      {{"Translated Reg. (current)", 30, or_none}, "D-AIQB", ""},
      {{"Remarks", 30, or_none}, "retro livery", ""}}},
    {"airport",
     '4',
     33,
     {{{"Enter IATA or ICAO Code", 30}, "FRA"},
      {{"Airport (City, Country)", 50}, "Frankfurt, Germany"}}},
    {"mode",
     '5',
     34,
     {{{"Label or LabelIATA Code", 5}, "H1LH"}, {{"Label Description", 50}, "Position report"}}},
};

std::string join_fields(const std::vector<std::string>& fields)
{
    std::string text;
    for (const std::string& field : fields)
        text += (&field == fields.data() ? "" : "\t") + field;
    return text;
}

class database_update : public service_test
{
protected:
    testing::AssertionResult choose_request(char choice)
    {
        return choose('a', update_menu, choice);
    }
};

class database_request : public database_update, public testing::WithParamInterface<request_case>
{
protected:
    testing::AssertionResult type(std::size_t field)
    {
        const field_case& asked = GetParam().fields[field];
        return answer(asked.look, asked.typed);
    }

    const std::string& last_question() const
    {
        return GetParam().fields.back().look.question;
    }
};

INSTANTIATE_TEST_SUITE_P(all, database_request, testing::ValuesIn(request_cases),
                         [](const auto& about) { return about.param.name; });

TEST_P(database_request, sends_every_field_as_it_was_typed)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request(GetParam().choice));
    std::vector<std::string> fields;
    for (std::size_t field = 0; field < GetParam().fields.size(); ++field) {
        ASSERT_TRUE(type(field));
        fields.emplace_back(GetParam().fields[field].typed);
    }
    expect_sent({.kind = GetParam().kind, .payload = join_fields(fields)});
    ASSERT_TRUE(dialog_ends(last_question()));
}

TEST_P(database_request, sends_defaults_for_optional_fields_left_out)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request(GetParam().choice));
    std::vector<std::string> fields;
    for (std::size_t field = 0; field < GetParam().fields.size(); ++field) {
        const field_case& asked = GetParam().fields[field];
        const bool is_optional = asked.fallback != nullptr;
        ASSERT_TRUE(is_optional ? escape(asked.look) : type(field));
        fields.emplace_back(is_optional ? asked.fallback : asked.typed);
    }
    expect_sent({.kind = GetParam().kind, .payload = join_fields(fields)});
    ASSERT_TRUE(dialog_ends(last_question()));
}

TEST_P(database_request, is_cancelled_at_any_required_field)
{
    ASSERT_TRUE(begin());
    for (std::size_t left_out = 0; left_out < GetParam().fields.size(); ++left_out) {
        if (GetParam().fields[left_out].fallback != nullptr)
            break;
        ASSERT_TRUE(choose_request(GetParam().choice));
        for (std::size_t field = 0; field < left_out; ++field)
            ASSERT_TRUE(type(field));
        const prompt_look& look = GetParam().fields[left_out].look;
        ASSERT_TRUE(escape(look));
        ASSERT_TRUE(dialog_ends(look.question));
        expect_nothing_sent();
    }
    EXPECT_EQ(terminal().bells(), 0);
}

TEST_P(database_request, keeps_its_prompts_whole_through_traffic_and_resizes)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request(GetParam().choice));
    std::vector<std::string> fields;
    for (const field_case& asked : GetParam().fields) {
        ASSERT_TRUE(prompt_is(asked.look));
        client.clock().stop();
        prompt_look typed = asked.look;
        typed.text = asked.typed;
        terminal().send(asked.typed);
        ASSERT_TRUE(traffic());
        EXPECT_TRUE(prompt_is(typed));
        for (const auto& [rows, columns] : {std::pair{31, 101}, {24, 80}}) {
            terminal().resize(rows, columns);
            EXPECT_TRUE(prompt_is(typed)) << rows << " x " << columns;
        }
        terminal().send_key(named_key::enter);
        fields.emplace_back(asked.typed);
    }
    expect_sent({.kind = GetParam().kind, .payload = join_fields(fields)});
    ASSERT_TRUE(dialog_ends(last_question()));
}

TEST_P(database_request, holds_one_character_less_than_each_size)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request(GetParam().choice));
    std::vector<std::string> fields;
    for (const field_case& asked : GetParam().fields) {
        const auto room = static_cast<std::size_t>(asked.look.size) - 1;
        ASSERT_TRUE(answer(asked.look, std::string(room, 'x') + "yz"));
        fields.emplace_back(room, 'x');
    }
    expect_sent({.kind = GetParam().kind, .payload = join_fields(fields)});
}

const prompt_look airline_code{"Enter IATA or ICAO Code", 30};
const prompt_look airline_name{"Enter Airline", 30};

TEST_F(database_update, sends_defaults_for_remarks_and_the_days_as_typed)
{
    ASSERT_TRUE(begin());
    const std::vector<field_case>& fields = request_cases[1].fields;
    ASSERT_TRUE(choose_request('2'));
    ASSERT_TRUE(answer(fields[0].look, "LH400"));
    ASSERT_TRUE(answer(fields[1].look, "FRA-JFK"));
    ASSERT_TRUE(escape(fields[2].look));
    ASSERT_TRUE(answer(fields[3].look, "-X----X"));
    expect_sent({.kind = 30, .payload = "LH400\tFRA-JFK\t\t-X----X"});
}

TEST_F(database_update, texts_go_out_literally)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(answer(airline_code, "%s%n%d%%"));
    ASSERT_TRUE(answer(airline_name, "100% & <\"'> ~^\\"));
    expect_sent({.kind = 31, .payload = "%s%n%d%%\t100% & <\"'> ~^\\"});
}

TEST_F(database_update, a_typed_tab_is_another_field_for_the_server)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(answer(airline_code, "L\tH"));
    ASSERT_TRUE(answer(airline_name, "Lufthansa"));
    expect_sent({.kind = 31, .payload = "L\tH\tLufthansa"});
}

TEST_F(database_update, letters_beyond_ascii_go_out_as_single_bytes)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(answer(airline_code, "W\xc3\x9c"));
    ASSERT_TRUE(prompt_is(airline_name));
    terminal().send("\xc3\xb6\xc3\x9f");
    ASSERT_TRUE(prompt_is({"Enter Airline", 30, or_cancel, "öß"}));
    terminal().send_key(named_key::enter);
    expect_sent({.kind = 31, .payload = "W\xdc\t\xf6\xdf"});
}

TEST_F(database_update, an_empty_line_counts_as_escape)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(answer(airline_code, ""));
    ASSERT_TRUE(dialog_ends(airline_code.question));
    EXPECT_FALSE(terminal().shows(airline_name.question));
    expect_nothing_sent();
    const std::vector<field_case>& flight = request_cases[1].fields;
    ASSERT_TRUE(choose_request('2'));
    ASSERT_TRUE(answer(flight[0].look, "LH400"));
    ASSERT_TRUE(answer(flight[1].look, "FRA-JFK"));
    ASSERT_TRUE(answer(flight[2].look, ""));
    ASSERT_TRUE(answer(flight[3].look, ""));
    expect_sent({.kind = 30, .payload = "LH400\tFRA-JFK\t\tXXXXXXX"});
}

TEST_F(database_update, ten_idle_seconds_count_as_escape)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(prompt_is(airline_code));
    client.clock().jump(11);
    ASSERT_TRUE(dialog_ends(airline_code.question));
    expect_nothing_sent();
    const std::vector<field_case>& flight = request_cases[1].fields;
    ASSERT_TRUE(choose_request('2'));
    ASSERT_TRUE(answer(flight[0].look, "LH400"));
    ASSERT_TRUE(answer(flight[1].look, "FRA-JFK"));
    ASSERT_TRUE(prompt_is(flight[2].look));
    terminal().send("half a rem"); // lost when the time runs out
    ASSERT_TRUE(prompt_is({"Enter Remarks", 40, or_none, "half a rem"}));
    client.clock().jump(11);
    ASSERT_TRUE(answer(flight[3].look, "X------"));
    expect_sent({.kind = 30, .payload = "LH400\tFRA-JFK\t\tX------"});
}

TEST_F(database_update, nothing_is_sent_once_the_server_has_closed)
{
    scripted_server other_server{"127.0.0.2"}; // listed first
    client_settings settings = knowing(server);
    settings.servers.push_back(
        {.name = "127.0.0.2", .port = std::to_string(other_server.port()), .alias = "bravo"});
    ASSERT_TRUE(client.start(settings));
    std::optional<server_connection> other = client.connect_selected(other_server);
    terminal().send_key(named_key::down);
    connection = client.connect_selected(server);
    ASSERT_TRUE(other && connection);
    ASSERT_TRUE(connection->send(capabilities_of(every_service)));
    ASSERT_TRUE(traffic());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(answer(airline_code, "LH"));
    ASSERT_TRUE(prompt_is(airline_name));
    ASSERT_TRUE(connection->send(100, "bye"));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    ASSERT_TRUE(answer(airline_name, "Lufthansa"));
    ASSERT_TRUE(dialog_ends(airline_name.question));
    ASSERT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes());
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_FALSE(other->has_unread_bytes());
    EXPECT_EQ(client.marker(1).text, "*");
    EXPECT_EQ(client.marker(2).text, " ");
}

TEST_F(database_update, a_server_that_hangs_up_without_a_word_does_no_harm)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(answer(airline_code, "LH"));
    ASSERT_TRUE(prompt_is(airline_name));
    connection->reset();
    ASSERT_TRUE(client.wait_for_polls());
    ASSERT_TRUE(answer(airline_name, "Lufthansa"));
    ASSERT_TRUE(dialog_ends(airline_name.question));
    ASSERT_TRUE(client.wait_for_polls());
}

TEST_F(database_update, a_list_in_the_middle_of_a_prompt_waits_for_its_answer)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(answer(airline_code, "LH"));
    ASSERT_TRUE(prompt_is(airline_name));
    client.clock().stop();
    const prompt_look typed{"Enter Airline", 30, or_cancel, "Luft"};
    terminal().send("Luft");
    ASSERT_TRUE(prompt_is(typed));
    ASSERT_TRUE(connection->send(89, "D-AIQA\tFRA\tLH400"));
    ASSERT_TRUE(client.wait_for_polls());
    ASSERT_TRUE(answer(typed, "hansa"));
    expect_sent({.kind = 31, .payload = "LH\tLufthansa"});
    ASSERT_TRUE(list_is({.rows = {"D-AIQA  |FRA |LH400 "}}));
    terminal().send("abc\r"); // taken by the list
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(terminal().wait_for_no_text("Press ESC to close"));
}

struct reply_case {
    std::uint32_t kind;
    const char* text;
    int pair;
    int bells;
};

TEST_F(database_update, replies_are_reported_whether_requested_or_not)
{
    ASSERT_TRUE(begin());
    for (const auto& [kind, text, pair, bells] :
         {reply_case{35, "Your update request was successfully added", pairs::success, 0},
          {36, "Your update request could not be added", pairs::error, 1},
          {106, "Updates on this database are not allowed", pairs::error, 2}}) {
        ASSERT_TRUE(connection->send(kind, "ignored"));
        EXPECT_TRUE(client.wait_for_status(text, pair));
        EXPECT_EQ(terminal().bells(), bells) << text;
    }
    EXPECT_FALSE(terminal().shows("ignored"));
}

TEST_F(database_update, a_reply_may_come_while_the_next_request_is_typed)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(choose_request('1'));
    ASSERT_TRUE(answer(airline_code, "LH"));
    ASSERT_TRUE(prompt_is(airline_name));
    ASSERT_TRUE(connection->send(36, "no"));
    ASSERT_TRUE(client.wait_for_status("Your update request could not be added", pairs::error));
    ASSERT_TRUE(answer(airline_name, "Lufthansa"));
    expect_sent({.kind = 31, .payload = "LH\tLufthansa"});
}

} // namespace
