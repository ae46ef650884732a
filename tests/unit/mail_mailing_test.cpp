// mail_mailing_test.cpp - who gets which mails, whatever the mail program and the server's own ends
// do.
#include "unit/mail_fixture.hpp"

#include "server/base/limits.hpp"

#include <set>

namespace
{

using texts = mail_texts;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr std::int64_t day = mailed_day;

TEST_F(mailing, sends_the_report_of_the_day_before_to_all_in_their_styles)
{
    subscribe("a@b", 0);
    subscribe("c@d", 2);
    subscribe("e@f", 1);
    hear("D-AIQA", day);
    run_until_told("3 mails about 2026-01-05 sent");
    std::set<std::string> second_lines;
    for (const std::string& mail : kept_mails(home)) {
        EXPECT_EQ(header_of(mail, "From"), "tovrikd@acars.example");
        EXPECT_EQ(header_of(mail, "Subject"), "Messages of 05/01/2026 from Home");
        EXPECT_EQ(header_of(mail, "Date"), "Tue, 06 Jan 2026 00:10:00 +0000");
        EXPECT_EQ(header_of(mail, "Message-ID"),
                  tovrik::mail_id("the-uuid", "tovrikd@acars.example", header_of(mail, "To"), day));
        EXPECT_NE(mail.find("D-AIQA"), std::string::npos) << mail;
        EXPECT_NE(mail.find("\n-- \nYou get this because"), std::string::npos) << mail;
        EXPECT_NE(mail.find("write to tovrikd@acars.example.\n"), std::string::npos) << mail;
    }
    EXPECT_EQ(mailed_addresses(home), (texts{"a@b", "c@d", "e@f"}));
    EXPECT_NE(kept_mails(home)[0].substr(0, 40), kept_mails(home)[1].substr(0, 40));
    EXPECT_EQ(mails->sent, 3U);
    EXPECT_EQ(mails->failed, 0U);
}

TEST_F(mailing, is_at_the_chosen_minute_of_each_day)
{
    subscribe("a@b");
    moment -= 1;
    settle();
    EXPECT_EQ(new_mails(), texts{}) << "a second too early";
    pass(seconds{1});
    run_until_told("1 mail about 2026-01-05 sent");
    settle();
    EXPECT_EQ(new_mails(), texts{"a@b 05/01"});
    pass(hours{24} - seconds{1});
    settle();
    EXPECT_EQ(new_mails(), texts{});
    pass(seconds{1});
    run_until_told("1 mail about 2026-01-06 sent");
    EXPECT_EQ(new_mails(), texts{"a@b 06/01"});
}

TEST_F(mailing, of_the_last_day_follows_after_a_time_without_a_server)
{
    subscribe("a@b", 0, day - 5);
    subscribe("new@b", 0, day);
    run_until_told("1 mail about 2026-01-05 sent");
    EXPECT_EQ(new_mails(), texts{"a@b 05/01"}) << "only that of the last day";
    close();
    open();
    settle();
    EXPECT_EQ(new_mails(), texts{}) << "a restart sends none again";
}

TEST_F(mailing, goes_on_after_failures_with_pauses_that_grow)
{
    subscribe("bad@b");
    subscribe("good@b");
    write_mail_program(home, "mail=$(cat)\ncase \"$mail\" in *'To: bad@b'*) echo no >&2; exit 67;; "
                             "esac\nprintf '%s\\n\\n' \"$mail\" |\n(" +
                                 std::string{keep_mail} + ")");
    run_until_told("1 mail about 2026-01-05 sent; the rest is tried again in a minute");
    EXPECT_EQ(new_mails(), texts{"good@b 05/01"});
    for (const int pause : {1, 2, 4, 8, 16, 32, 60, 60}) {
        pass(minutes{pause} - seconds{1});
        settle();
        EXPECT_EQ(told, "") << pause;
        pass(seconds{1});
        run_until_told("the mail to bad@b about 2026-01-05 is not sent: the mail program ended "
                       "with status 67: no");
        run_until([&] { return mails->failed > 0; }, "counts");
    }
    EXPECT_EQ(mails->failed, 9U);
    write_mail_program(home, keep_mail);
    pass(hours{1});
    run_until_told("1 mail about 2026-01-05 sent");
    EXPECT_EQ(new_mails(), texts{"bad@b 05/01"});
}

TEST_F(mailing, gives_a_day_up_when_the_next_is_due)
{
    subscribe("a@b");
    subscribe("c@d");
    options.command = {home.path_of("missing")};
    change();
    run_until_told("0 mails about 2026-01-05 sent; the rest is tried again in a minute");
    options.command = {home.path_of("mailer")};
    pass(hours{24});
    change();
    run_until_told("2 mails about 2026-01-05 given up");
    run_until_told("2 mails about 2026-01-06 sent");
    EXPECT_EQ(new_mails(), (texts{"a@b 06/01", "c@d 06/01"}));
}

TEST_F(mailing, does_not_wear_out_a_mail_program_that_takes_nothing)
{
    for (int i = 0; i < 12; ++i)
        subscribe(std::to_string(i) + "@b");
    write_mail_program(home, "echo x >>\"$HOME_OF_TEST/tries\"; exit 1");
    run_until_told("tried again in a minute");
    EXPECT_EQ(mails->failed, tovrik::max_mail_failures_in_row);
    pass(minutes{1});
    run_until_told("tried again in 2 minutes");
    pass(minutes{2});
    run_until_told("tried again in 4 minutes");
    EXPECT_EQ(home.read_file("tries")->size(), 2U * 3 * tovrik::max_mail_failures_in_row);
    write_mail_program(home, keep_mail);
    pass(minutes{4});
    run_until_told("12 mails about 2026-01-05 sent");
    EXPECT_EQ(new_mails().size(), 12U) << "nobody waits behind those that failed";
}

TEST_F(mailing, is_tried_at_once_with_a_command_that_the_owner_has_mended)
{
    subscribe("a@b");
    const texts good = options.command;
    options.command = {"no-such-mailer-here"};
    change();
    run_until_told("the mail program \"no-such-mailer-here\" cannot be found");
    settle();
    options.command = good;
    change();
    run_until_told("1 mail about 2026-01-05 sent");
    EXPECT_EQ(new_mails(), texts{"a@b 05/01"});
}

TEST_F(mailing, takes_what_is_chosen_anew)
{
    subscribe("a@b");
    options.is_offered = false;
    change();
    settle();
    EXPECT_EQ(new_mails(), texts{});
    options = {.is_offered = true,
               .command = options.command,
               .from = "other@acars.example",
               .at_minute = 11,
               .never_to = {"NEVER@b"}};
    subscribe("never@b");
    change();
    settle();
    EXPECT_EQ(new_mails(), texts{}) << "a minute later";
    pass(minutes{1});
    run_until_told("1 mail about 2026-01-05 sent");
    EXPECT_EQ(header_of(kept_mails(home).at(0), "From"), "other@acars.example");
    EXPECT_EQ(new_mails(), texts{"a@b 05/01"});
    options.at_minute = 600;
    change();
    settle();
    options.at_minute = 10;
    change();
    settle();
    EXPECT_EQ(new_mails(), texts{}) << "nobody gets a day twice";
}

TEST_F(mailing, spares_who_wants_no_more_while_mails_go_out)
{
    for (const char* address : {"a@b", "c@d", "never@b"})
        subscribe(address);
    write_mail_program(home, "echo x >\"$HOME_OF_TEST/started\"\n"
                             "until [ -e \"$HOME_OF_TEST/go\" ]; do sleep 0.01; done\n" +
                                 std::string{keep_mail});
    run_until([&] { return home.read_file("started").has_value(); }, "the first is under way");
    options.never_to = {"never@b"};
    change();
    home.write_file("go", "");
    run_until_told("2 mails about 2026-01-05 sent");
    EXPECT_EQ(new_mails(), (texts{"a@b 05/01", "c@d 05/01"}));
}

TEST_F(mailing, leaves_addresses_alone_that_are_none)
{
    for (const std::string& text : hostile_texts)
        subscribe(text);
    subscribe("a@b\nBcc: c@d");
    subscribe("a@b");
    run_until_told("1 mail about 2026-01-05 sent");
    EXPECT_EQ(new_mails(), texts{"a@b 05/01"});
}

TEST_F(mailing, stops_a_program_that_hangs_and_serves_meanwhile)
{
    subscribe("a@b");
    write_mail_program(home, "echo $$ >\"$HOME_OF_TEST/pid\"; exec sleep 1000");
    run_until([&] { return home.read_file("pid").value_or("").ends_with('\n'); }, "it runs");
    settle();
    pass(minutes{5} - seconds{1});
    settle();
    EXPECT_EQ(told, "");
    pass(seconds{1});
    run_until_told("is not sent: the mail program takes too long");
}

TEST_F(mailing, waits_until_the_database_has_kept_what_was_sent)
{
    subscribe("a@b");
    subscribe("c@d");
    tovrik::database other;
    ASSERT_EQ(database_open_for_reading(other, home.path_of("state/tovrikd.sqlite")), "");
    ASSERT_EQ(database_run_script(other, "PRAGMA query_only = OFF"), "");
    {
        const tovrik::transaction lock{other, tovrik::transaction_use::writing};
        ASSERT_EQ(lock.error(), "");
        run_until_told("it is not kept that a mail was sent: database is locked");
        settle_without_writing();
        EXPECT_EQ(new_mails().size(), 1U) << "no other is sent meanwhile";
        for (int i = 0; i < 2; ++i) {
            const std::size_t before = kept.waiting_writes();
            pass(seconds{5});
            run_until([&] { return kept.waiting_writes() > before; }, "it is tried again");
            run_until([&] { return kept.waiting_writes() == before; }, "it fails again");
        }
        EXPECT_EQ(told, "") << "that it fails was told once";
    }
    pass(seconds{5});
    run_until_told("2 mails about 2026-01-05 sent");
    EXPECT_EQ(new_mails().size(), 1U) << "the first was not sent again";
}

TEST_F(mailing, keeps_the_mail_that_was_under_way_at_the_end)
{
    subscribe("a@b");
    subscribe("c@d");
    write_mail_program(home, "echo x >\"$HOME_OF_TEST/started\"\n"
                             "until [ -e \"$HOME_OF_TEST/go\" ]; do sleep 0.01; done\n" +
                                 std::string{keep_mail});
    run_until([&] { return home.read_file("started").has_value(); }, "a mail is under way");
    home.write_file("go", "");
    close();
    EXPECT_EQ(kept_mails(home).size(), 1U) << "no other is begun";
    told.clear();
    open();
    run_until_told("1 mail about 2026-01-05 sent");
    EXPECT_EQ(new_mails(), (texts{"a@b 05/01", "c@d 05/01"})) << "each once";
}

} // namespace
