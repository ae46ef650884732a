// mailing_test.cpp - subscriptions to daily reports: prompts, packets, and what is remembered.
#include "e2e/service_session.hpp"

namespace
{

const prompt_look email_prompt{"Enter your email address", 50};
const prompt_look code_prompt{"Your subscription code", 40};
const prompt_look style_prompt{"Style: 0=tovrik 1=ZOBE 2=News", 2};

/// The choices that only record the answer.
constexpr char recording_choices[] = {'2', '3', '4'};

prompt_look fill_in(prompt_look look, const std::string& text)
{
    look.text = text;
    return look;
}

class mailing : public service_test
{
protected:
    /// Starts a client that saves its configuration on exit and remembers these of its server.
    testing::AssertionResult begin_with(const std::string& email, const std::string& code)
    {
        return begin(make_settings(email, code));
    }

    static client_settings make_settings(const std::string& email, const std::string& code)
    {
        client_settings settings{.save_on_exit = true};
        settings.servers.push_back({.alias = "alpha", .subcode = code, .email = email});
        return settings;
    }

    testing::AssertionResult choose_mailing(char choice)
    {
        return choose('j', mailing_menu, choice);
    }

    /// Ends the client; the configuration must hold these for the server.
    void expect_saved(const std::string& email, const std::string& code)
    {
        client_settings settings = make_settings(email, code);
        settings.servers.front().port = std::to_string(server.port());
        client.quit();
        EXPECT_EQ(client.home().read_config(), config_text(settings));
    }
};

TEST_F(mailing, subscribing_sends_and_remembers_the_address)
{
    ASSERT_TRUE(begin_with("", "4711"));
    ASSERT_TRUE(choose_mailing('1'));
    ASSERT_TRUE(answer(email_prompt, "me@example.com"));
    expect_sent({.kind = 60, .payload = "me@example.com"});
    ASSERT_TRUE(dialog_ends(email_prompt.question));
    EXPECT_FALSE(terminal().shows(code_prompt.question));
    expect_saved("me@example.com", "4711");
}

TEST_F(mailing, the_known_address_is_offered_and_can_be_changed)
{
    ASSERT_TRUE(begin_with("me@example.com", ""));
    ASSERT_TRUE(choose_mailing('1'));
    ASSERT_TRUE(prompt_is(fill_in(email_prompt, "me@example.com")));
    for (int count = 0; count < 3; ++count)
        terminal().send_key(named_key::backspace);
    ASSERT_TRUE(answer(fill_in(email_prompt, "me@example."), "org"));
    expect_sent({.kind = 60, .payload = "me@example.org"});
    ASSERT_TRUE(choose_mailing('1'));
    ASSERT_TRUE(answer(fill_in(email_prompt, "me@example.org"), ""));
    expect_sent({.kind = 60, .payload = "me@example.org"});
    ASSERT_TRUE(dialog_ends(email_prompt.question));
    expect_saved("me@example.org", "");
}

TEST_F(mailing, a_known_address_that_is_too_long_is_cut_to_fit)
{
    ASSERT_TRUE(begin_with(std::string(60, 'm'), ""));
    ASSERT_TRUE(choose_mailing('1'));
    ASSERT_TRUE(terminal().wait_for_text(std::string(49, 'm') + "_"));
    terminal().send_key(named_key::enter);
    expect_sent({.kind = 60, .payload = std::string(49, 'm')});
}

TEST_F(mailing, activating_pausing_and_leaving_record_and_send_nothing)
{
    ASSERT_TRUE(begin_with("", ""));
    std::string email;
    std::string code;
    for (const char choice : recording_choices) {
        ASSERT_TRUE(choose_mailing(choice));
        ASSERT_TRUE(answer(fill_in(email_prompt, email), std::string{choice}));
        ASSERT_TRUE(answer(fill_in(code_prompt, code), std::string{choice} + "x"));
        email += choice;
        code += std::string{choice} + "x";
        ASSERT_TRUE(dialog_ends(code_prompt.question));
        EXPECT_FALSE(terminal().shows(style_prompt.question));
        expect_nothing_sent();
    }
    expect_saved("234", "2x3x4x");
}

struct style_case {
    const char* typed;
    std::uint16_t number;
};

TEST_F(mailing, a_style_is_sent_as_its_leading_number)
{
    ASSERT_TRUE(begin_with("me@example.com", "4711"));
    for (const auto& [typed, number] :
         {style_case{"0", 0}, {"1", 1}, {"2", 2}, {"9", 9}, {"x", 0}, {"12", 1}, {"-", 0}}) {
        ASSERT_TRUE(choose_mailing('5'));
        ASSERT_TRUE(answer(fill_in(email_prompt, "me@example.com"), ""));
        ASSERT_TRUE(answer(fill_in(code_prompt, "4711"), ""));
        ASSERT_TRUE(answer(style_prompt, typed));
        expect_sent({.kind = 66, .payload = "me@example.com", .param1 = number});
        ASSERT_TRUE(dialog_ends(style_prompt.question));
    }
    expect_saved("me@example.com", "4711");
}

TEST_F(mailing, changing_the_style_remembers_address_and_code)
{
    ASSERT_TRUE(begin_with("", ""));
    ASSERT_TRUE(choose_mailing('5'));
    ASSERT_TRUE(answer(email_prompt, "me@example.com"));
    ASSERT_TRUE(answer(code_prompt, "4711"));
    ASSERT_TRUE(answer(style_prompt, "2"));
    expect_sent({.kind = 66, .payload = "me@example.com", .param1 = 2});
    ASSERT_TRUE(dialog_ends(style_prompt.question));
    expect_saved("me@example.com", "4711");
}

TEST_F(mailing, escape_at_any_prompt_changes_nothing)
{
    ASSERT_TRUE(begin_with("old", "1"));
    const prompt_look old_email = fill_in(email_prompt, "old");
    const prompt_look old_code = fill_in(code_prompt, "1");
    for (const char choice : {'1', '2', '3', '4', '5'}) {
        ASSERT_TRUE(choose_mailing(choice));
        ASSERT_TRUE(prompt_is(old_email));
        terminal().send("new");
        ASSERT_TRUE(escape(fill_in(email_prompt, "oldnew")));
        ASSERT_TRUE(client.wait_for_keys());
        if (choice == '1')
            continue;
        ASSERT_TRUE(choose_mailing(choice));
        ASSERT_TRUE(answer(old_email, "new"));
        ASSERT_TRUE(escape(old_code));
        ASSERT_TRUE(client.wait_for_keys());
    }
    ASSERT_TRUE(choose_mailing('5'));
    ASSERT_TRUE(answer(old_email, "new"));
    ASSERT_TRUE(answer(old_code, "new"));
    ASSERT_TRUE(escape(style_prompt));
    ASSERT_TRUE(client.wait_for_keys());
    expect_nothing_sent();
    expect_saved("old", "1");
}

TEST_F(mailing, empty_lines_and_idle_prompts_change_nothing_either)
{
    ASSERT_TRUE(begin_with("", "1"));
    ASSERT_TRUE(choose_mailing('1'));
    ASSERT_TRUE(answer(email_prompt, ""));
    ASSERT_TRUE(dialog_ends(email_prompt.question));
    ASSERT_TRUE(choose_mailing('5'));
    ASSERT_TRUE(answer(email_prompt, "new"));
    ASSERT_TRUE(answer(fill_in(code_prompt, "1"), "new"));
    ASSERT_TRUE(answer(style_prompt, ""));
    ASSERT_TRUE(dialog_ends(style_prompt.question));
    ASSERT_TRUE(choose_mailing('3'));
    ASSERT_TRUE(answer(email_prompt, "new"));
    ASSERT_TRUE(prompt_is(fill_in(code_prompt, "1")));
    client.clock().jump(11);
    ASSERT_TRUE(dialog_ends(code_prompt.question));
    expect_nothing_sent();
    expect_saved("", "1");
}

TEST_F(mailing, the_address_goes_out_literally)
{
    ASSERT_TRUE(begin_with("", ""));
    ASSERT_TRUE(choose_mailing('1'));
    ASSERT_TRUE(answer(email_prompt, "%s%n%d%%@example"));
    expect_sent({.kind = 60, .payload = "%s%n%d%%@example"});
    ASSERT_TRUE(choose_mailing('5'));
    ASSERT_TRUE(answer(fill_in(email_prompt, "%s%n%d%%@example"), "\t%x"));
    ASSERT_TRUE(answer(code_prompt, "%s"));
    ASSERT_TRUE(answer(style_prompt, "1"));
    expect_sent({.kind = 66, .payload = "%s%n%d%%@example\t%x", .param1 = 1});
}

TEST_F(mailing, address_and_code_hold_one_character_less_than_their_sizes)
{
    ASSERT_TRUE(begin_with("", ""));
    ASSERT_TRUE(choose_mailing('3'));
    ASSERT_TRUE(answer(email_prompt, std::string(51, 'e')));
    ASSERT_TRUE(answer(code_prompt, std::string(41, 'c')));
    ASSERT_TRUE(dialog_ends(code_prompt.question));
    expect_saved(std::string(49, 'e'), std::string(39, 'c'));
}

TEST_F(mailing, what_is_typed_here_is_offered_for_pager_lists)
{
    ASSERT_TRUE(begin_with("", ""));
    ASSERT_TRUE(choose_mailing('2'));
    ASSERT_TRUE(answer(email_prompt, "me@example.com"));
    ASSERT_TRUE(answer(code_prompt, "4711"));
    ASSERT_TRUE(dialog_ends(code_prompt.question));
    ASSERT_TRUE(choose('p', pager_menu, '3'));
    ASSERT_TRUE(answer(fill_in(email_prompt, "me@example.com"), ""));
    ASSERT_TRUE(answer({"Your subscription code", 15, or_cancel, "4711"}, ""));
    expect_sent({.kind = 89, .payload = "me@example.com", .param1 = 4711});
}

TEST_F(mailing, every_prompt_stays_whole_through_traffic_and_resizes)
{
    ASSERT_TRUE(begin_with("me@example.com", "4711"));
    ASSERT_TRUE(choose_mailing('5'));
    const std::vector<prompt_look> prompts = {fill_in(email_prompt, "me@example.com"),
                                              fill_in(code_prompt, "4711"), style_prompt};
    for (const prompt_look& prompt : prompts) {
        ASSERT_TRUE(prompt_is(prompt));
        client.clock().stop();
        ASSERT_TRUE(traffic());
        EXPECT_TRUE(prompt_is(prompt));
        for (const auto& [rows, columns] : {std::pair{43, 133}, {2, 3}, {24, 80}}) {
            terminal().resize(rows, columns);
            ASSERT_TRUE(client.wait_for_polls());
        }
        EXPECT_TRUE(prompt_is(prompt));
        terminal().send(prompt.text.empty() ? "1\r" : "\r");
    }
    expect_sent({.kind = 66, .payload = "me@example.com", .param1 = 1});
}

TEST_F(mailing, a_server_that_closes_meanwhile_gets_nothing)
{
    ASSERT_TRUE(begin_with("", ""));
    ASSERT_TRUE(choose_mailing('5'));
    ASSERT_TRUE(answer(email_prompt, "me@example.com"));
    ASSERT_TRUE(answer(code_prompt, "4711"));
    ASSERT_TRUE(prompt_is(style_prompt));
    ASSERT_TRUE(connection->send(102, "bye"));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    ASSERT_TRUE(answer(style_prompt, "1"));
    ASSERT_TRUE(dialog_ends(style_prompt.question));
    ASSERT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes());
    expect_saved("me@example.com", "4711");
}

} // namespace
