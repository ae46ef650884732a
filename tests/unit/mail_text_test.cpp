// mail_text_test.cpp - the pure parts of mailings: addresses, days, commands, and mails as texts.
#include "server/base/mail_address.hpp"
#include "server/mail/mail_command.hpp"
#include "server/mail/mail_day.hpp"
#include "server/mail/mail_text.hpp"
#include "support/temp_home.hpp"

#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <vector>

namespace
{

using texts = std::vector<std::string>;

TEST(mail_address, is_plain_and_holds_nothing_else)
{
    for (const char* right : {"me@example.org", "a@b", "first.last+tag@sub.example.org",
                              "100%s%n@here", "o'hara_{x}~@a-b.c", "1@2"})
        EXPECT_TRUE(tovrik::is_mail_address(right)) << right;
    const std::string wrong[] = {"",
                                 "@",
                                 "me",
                                 "me@",
                                 "@here",
                                 "me@here\nBcc: you@there",
                                 "me@here\r",
                                 "me@here,you@there",
                                 "me@here you@there",
                                 "me@here;",
                                 "<me@here>",
                                 "\"me\"@here",
                                 "me(x)@here",
                                 "me@@here",
                                 "me@you@here",
                                 ".me@here",
                                 "me.@here",
                                 "me..you@here",
                                 "me@here.",
                                 "me@.here",
                                 "me@he..re",
                                 "me@here\\",
                                 "-t@here",
                                 "m\xE4@here",
                                 "me@h\xE4re",
                                 "me@[127.0.0.1]",
                                 "me:@here",
                                 std::string{"me@here\0x", 9},
                                 std::string(65, 'm') + "@here",
                                 "me@" + std::string(252, 'h')};
    for (const std::string& each : wrong)
        EXPECT_FALSE(tovrik::is_mail_address(each)) << each;
}

constexpr std::time_t midnight = 1767571200; // of 5 January 2026
constexpr std::int64_t fifth = midnight / 86400;

TEST(mail_day, is_the_day_before_from_the_chosen_minute_on)
{
    const struct {
        std::time_t after_midnight;
        unsigned at_minute;
        std::int64_t due;
    } rows[] = {{0, 0, fifth - 1},
                {-1, 0, fifth - 2},
                {0, 10, fifth - 2},
                {599, 10, fifth - 2},
                {600, 10, fifth - 1},
                {86399, 10, fifth - 1},
                {86400 + 599, 10, fifth - 1},
                {86400 + 600, 10, fifth},
                {86399, 1439, fifth - 1},
                {86339, 1439, fifth - 2},
                {86340, 1439, fifth - 1}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::mail_day_due(midnight + row.after_midnight, row.at_minute), row.due)
            << row.after_midnight << " " << row.at_minute;
    EXPECT_EQ(tovrik::mail_day_begin(fifth), midnight);
}

TEST(mail_day, has_the_same_length_all_the_year)
{
    for (std::time_t moment = midnight; moment < midnight + std::time_t{400} * 86400;
         moment += 86400) {
        const auto day = tovrik::mail_day_due(moment + 600, 10);
        EXPECT_EQ(tovrik::mail_day_due(moment + 599, 10), day - 1);
        EXPECT_EQ(tovrik::mail_day_begin(day + 1), moment);
    }
}

TEST(mail_day, is_written_as_people_do)
{
    EXPECT_EQ(tovrik::mail_day_text(fifth), "2026-01-05");
    EXPECT_EQ(tovrik::mail_day_text(0), "1970-01-01");
    EXPECT_EQ(tovrik::mail_day_text(-1), "1969-12-31");
}

TEST(mail_command, is_words_that_no_shell_looks_at)
{
    const struct {
        const char* command;
        texts words;
    } rows[] = {{"/usr/sbin/sendmail -t -i", {"/usr/sbin/sendmail", "-t", "-i"}},
                {"  a   b ", {"a", "b"}},
                {"", {}},
                {"  ", {}},
                {"a '$(b c)' ; >d", {"a", "'$(b", "c)'", ";", ">d"}}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::mail_command_words(row.command), row.words) << row.command;
}

TEST(mail_command, is_found_by_its_path_or_in_the_folders_of_programs)
{
    const temp_home home;
    home.write_file("program", "#!/bin/sh\n");
    home.write_file("text", "#!/bin/sh\n");
    ASSERT_EQ(chmod(home.path_of("program").c_str(), 0755), 0);
    ASSERT_EQ(chmod(home.path_of("text").c_str(), 0644), 0);
    home.make_folder("folder");
    std::string path;
    EXPECT_EQ(tovrik::mail_command_find({home.path_of("program"), "-t"}, path), "");
    EXPECT_EQ(path, home.path_of("program"));
    EXPECT_EQ(tovrik::mail_command_find({"sh"}, path), "");
    EXPECT_TRUE(path.starts_with("/") && path.ends_with("/sh")) << path;
    EXPECT_EQ(tovrik::mail_command_find({}, path), "the command for mail names no program");
    for (const std::string& wrong :
         {home.path_of("text"), home.path_of("folder"), home.path_of("missing"),
          std::string{"no-such-program-of-mail"}})
        EXPECT_EQ(tovrik::mail_command_find({wrong}, path),
                  "the mail program \"" + wrong + "\" cannot be found");
}

TEST(mail_head, says_what_mail_systems_want_to_know)
{
    EXPECT_EQ(tovrik::mail_head_text({.from = "tovrikd@acars.example",
                                      .to = "me@example.org",
                                      .subject = "Messages of 05/01/2026 from Home",
                                      .id = "<x@acars.example>",
                                      .date = midnight + 3723},
                                     true),
              "From: tovrikd@acars.example\n"
              "To: me@example.org\n"
              "Subject: Messages of 05/01/2026 from Home\n"
              "Date: Mon, 05 Jan 2026 01:02:03 +0000\n"
              "Message-ID: <x@acars.example>\n"
              "MIME-Version: 1.0\n"
              "Content-Type: text/plain; charset=utf-8\n"
              "Content-Transfer-Encoding: 7bit\n"
              "Auto-Submitted: auto-generated\n"
              "List-Unsubscribe: <mailto:tovrikd@acars.example?subject=unsubscribe>\n"
              "\n");
}

TEST(mail_head, carries_every_name_of_a_server_and_cannot_be_ended_by_it)
{
    const auto subject_of = [](const std::string& subject) {
        const std::string text = tovrik::mail_head_text({.from = "a@b", .subject = subject}, false);
        const auto begin = text.find("Subject: ") + 9;
        return text.substr(begin, text.find("\nDate") - begin);
    };
    EXPECT_EQ(subject_of("a\nBcc: you@there\r\n\nx"), "a?Bcc: you@there???x");
    EXPECT_EQ(subject_of("Z\xFCrich"), "=?utf-8?Q?Z=C3=BCrich?=");
    EXPECT_EQ(subject_of("=?utf-8?Q?x?="),
              "=?utf-8?Q?=3D=3Futf=2D8=3FQ=3F?=\n =?utf-8?Q?x=3F=3D?=");
    EXPECT_EQ(subject_of("\xFC\n"), "=?utf-8?Q?=C3=BC=3F?=");
    std::string longest = subject_of(std::string(60, '\xFF'));
    while (longest.size() > 75) {
        EXPECT_LE(longest.find('\n'), 75U);
        longest.erase(0, longest.find('\n') + 2);
    }
}

TEST(mail_head, has_links_that_can_be_followed)
{
    const std::string text = tovrik::mail_head_text({.from = "a?b&c%d+e@f"}, true);
    EXPECT_NE(text.find("<mailto:a%3Fb%26c%25d+e@f?subject=unsubscribe>"), std::string::npos)
        << text;
}

TEST(mail_id, tells_servers_addresses_and_days_apart_and_stays_the_same)
{
    const std::string one = tovrik::mail_id("uuid", "a@b.c", "me@here", fifth);
    EXPECT_EQ(one, tovrik::mail_id("uuid", "a@b.c", "me@here", fifth));
    EXPECT_NE(one, tovrik::mail_id("other", "a@b.c", "me@here", fifth));
    EXPECT_NE(one, tovrik::mail_id("uuid", "a@b.c", "you@here", fifth));
    EXPECT_NE(one, tovrik::mail_id("uuid", "a@b.c", "me@here", fifth + 1));
    EXPECT_TRUE(one.starts_with("<tovrikd.20458.") && one.ends_with("@b.c>")) << one;
    EXPECT_EQ(one.find("me@here"), std::string::npos) << "it tells nobody whom it is for";
}

TEST(mail_body, has_lines_that_mail_systems_carry)
{
    const struct {
        std::string text;
        std::string body;
        bool is_ascii;
    } rows[] = {{"", "\n", true},
                {"one\ntwo\n", "one\ntwo\n", true},
                {"one\n\n\ntwo", "one\n\n\ntwo\n", true},
                {"a\n.\nb\n", "a\n .\nb\n", true},
                {"a\rb\tc\x7F\x80", "a?b?c??\n", true},
                {"Z\xFCrich \xA0", "Z\xC3\xBCrich \xC2\xA0\n", false},
                {std::string(480, 'x'), std::string(480, 'x') + "\n", true},
                {std::string(481, 'x'), std::string(480, 'x') + "\nx\n", true}};
    for (const auto& row : rows) {
        const tovrik::mail_body made = tovrik::mail_body_make(row.text);
        EXPECT_EQ(made.text, row.body);
        EXPECT_EQ(made.is_ascii, row.is_ascii) << row.text;
    }
}

} // namespace
