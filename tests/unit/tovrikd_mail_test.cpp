// tovrikd_mail_test.cpp - daily mails of the real program, through real mail programs.
#include "sim_program.hpp"
#include "sim_raw_client.hpp"

#include "server/mail/mail_day.hpp"
#include "server/storage/kept_subscriptions.hpp"
#include "support/sanitizer_options.hpp"
#include "support/test_clock.hpp"
#include "unit/mail_program_script.hpp"
#include "unit/storage_fixture.hpp"

#include <functional>
#include <map>
#include <sys/stat.h>

namespace
{

using texts = std::vector<std::string>;

constexpr std::int64_t day = 20458; // 5 January 2026
constexpr std::int64_t second_of_noon = 43200;

constexpr const char* heard_line =
    R"({"timestamp":1767609000.0,"station_id":"roof","label":"H1","tail":".D-AIQA",)"
    R"("flight":"LH0400","text":"HELLO"})";

/// A server under a clock of its own, with a pipe to hear from.
class tovrikd_mail : public testing::Test
{
protected:
    tovrikd_mail()
    {
        EXPECT_EQ(mkfifo(home.path_of("pipe").c_str(), 0600), 0);
        write_mail_program(home, keep_mail);
        write_configuration(home.path_of("mailer") + " -t");
        clock.set(tovrik::mail_day_begin(day + 1) + second_of_noon);
    }
    void write_configuration(const std::string& command, const std::string& more = "")
    {
        home.write_file("tovrikd.toml",
                        "name = \"Home\"\nport = 0\nstate_directory = \"" + home.path_of("state") +
                            "\"\n[mail]\nfrom = \"tovrikd@acars.example\"\n"
                            "command = \"" +
                            command + "\"\n" + more + "[[input]]\ntype = \"pipe\"\npath = \"" +
                            home.path_of("pipe") + "\"\n");
    }
    /// Starts the program; its port is known then.
    void start()
    {
        auto environment = sanitizer_environment();
        environment.merge(clock.environment());
        program = std::make_unique<sim_program>(texts{"--config", home.path_of("tovrikd.toml")},
                                                nullptr, -1, -1, TOVRIKD_BINARY, environment);
        const std::string line = await_line("Home listens on port ");
        port = static_cast<std::uint16_t>(std::stoi(line.substr(line.rfind(' ') + 1)));
    }
    /// Reads what the program complains of up to a line that holds a text.
    std::string await_line(const std::string& text)
    {
        std::string all;
        for (std::string line = program->complaint_line(); !line.empty();
             line = program->complaint_line()) {
            if (line.find(text) != std::string::npos)
                return line;
            all += line + "\n";
        }
        ADD_FAILURE() << text << "\nis not in\n" << all;
        return "0";
    }
    void end()
    {
        program->send_signal(SIGTERM);
        EXPECT_EQ(program->status(), 0);
        program.reset();
    }
    void kill_it()
    {
        program->send_signal(SIGKILL);
        program->status();
        program.reset();
    }
    void hear(const std::string& line) const
    {
        const unique_fd pipe{open(home.path_of("pipe").c_str(), O_WRONLY | O_CLOEXEC)};
        const std::string bytes = line + "\n";
        EXPECT_EQ(write(pipe.get(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    /// Keeps subscriptions while no server runs; the latest mail was about the day before.
    void subscribe(int count)
    {
        tovrik::storage kept;
        ASSERT_EQ(kept.open(home.path_of("state"), nothing_to_prepare), "");
        EXPECT_EQ(write_one(kept,
                            [count](tovrik::database& in) {
                                std::string error;
                                for (int i = 0; i < count && error.empty(); ++i) {
                                    tovrik::mail_subscription made;
                                    tovrik::subscription_result result{};
                                    error = subscription_keep(in, std::to_string(i) + "@here", day,
                                                              made, result);
                                }
                                return error;
                            }),
                  "");
        kept.close(default_patience);
    }
    void wait_until(const std::function<bool()>& holds, const char* what)
    {
        const auto deadline = std::chrono::steady_clock::now() + default_patience;
        while (!holds() && std::chrono::steady_clock::now() < deadline)
            usleep(2000);
        EXPECT_TRUE(holds()) << what;
    }
    void wait_for_mails(std::size_t count)
    {
        wait_until([&] { return kept_mails(home).size() >= count; }, "mails come");
    }

    temp_home home;
    test_clock clock;
    std::unique_ptr<sim_program> program;
    std::uint16_t port = 0;
};

TEST_F(tovrikd_mail, is_sent_at_ten_past_midnight_to_those_who_subscribed_in_their_styles)
{
    start();
    sim_raw_client client{port};
    ASSERT_TRUE(client.receive_kind(41));
    for (const char* address : {"a@here", "b@here", "c@here"}) {
        client.send_text(60, address);
        const auto subscribed = client.receive_kind(103);
        ASSERT_TRUE(subscribed);
        EXPECT_TRUE(subscribed->payload.starts_with("Daily reports subscribed."));
    }
    client.send_bytes(packet_bytes({.kind = 66, .payload = "b@here", .param1 = 1}));
    EXPECT_TRUE(client.receive_kind(103));
    client.send_bytes(packet_bytes({.kind = 66, .payload = "c@here", .param1 = 2}));
    EXPECT_TRUE(client.receive_kind(103));
    client.send_text(60, "a@here\nBcc: d@here");
    EXPECT_TRUE(client.receive_kind(108));
    hear(heard_line);
    ASSERT_TRUE(client.receive_kind(40));
    clock.set(tovrik::mail_day_begin(day + 2) + 600);
    wait_for_mails(3);
    await_line("3 mails about 2026-01-06 sent");
    std::map<std::string, std::string> mails;
    for (const std::string& mail : kept_mails(home))
        mails[header_of(mail, "To")] = mail;
    EXPECT_NE(mails["a@here"].find("\nMessage content: -\nHELLO\n"), std::string::npos)
        << mails["a@here"];
    EXPECT_NE(mails["b@here"].find("\n10:30  D-AIQA\n       Flight LH0400\n"), std::string::npos)
        << mails["b@here"];
    EXPECT_NE(mails["c@here"].find("1 message of 1 aircraft and 1 flight"), std::string::npos)
        << mails["c@here"];
    end();
    EXPECT_EQ(kept_mails(home).size(), 3U);
}

TEST_F(tovrikd_mail, is_neither_lost_nor_doubled_by_kills_but_for_what_was_under_way)
{
    constexpr int subscribers = 30;
    constexpr std::size_t kills = 5;
    subscribe(subscribers);
    for (std::size_t i = 1; i <= kills; ++i) {
        const std::size_t before = kept_mails(home).size();
        start();
        wait_for_mails(before + 3 * i % 4 + 1);
        kill_it();
    }
    start();
    await_line(" about 2026-01-05 sent");
    end();
    std::map<std::string, std::set<std::string>> ids;
    const auto mails = kept_mails(home);
    for (const std::string& mail : mails)
        ids[header_of(mail, "To")].insert(header_of(mail, "Message-ID"));
    EXPECT_EQ(ids.size(), std::size_t{subscribers}) << "none is lost";
    EXPECT_LE(mails.size(), subscribers + kills) << "one may come twice for each kill";
    for (const auto& [address, of_address] : ids)
        EXPECT_EQ(of_address.size(), 1U) << "a double can be told";
    const std::size_t count = mails.size();
    start();
    sim_raw_client client{port};
    ASSERT_TRUE(client.receive_kind(41));
    hear(heard_line);
    ASSERT_TRUE(client.receive_kind(40)) << "it has done much since the start";
    client.hang_up();
    end();
    EXPECT_EQ(kept_mails(home).size(), count);
}

TEST_F(tovrikd_mail, that_hangs_keeps_neither_clients_nor_the_end_waiting)
{
    subscribe(2);
    write_mail_program(home, "trap '' TERM INT HUP\necho $$ >\"$HOME_OF_TEST/pid\"\n"
                             "while :; do sleep 1000; done");
    start();
    wait_until([&] { return home.read_file("pid").value_or("").ends_with('\n'); }, "it hangs");
    sim_raw_client client{port};
    ASSERT_TRUE(client.receive_kind(41));
    hear(heard_line);
    EXPECT_TRUE(client.receive_kind(40));
    client.hang_up();
    const pid_t hanging = std::stoi(*home.read_file("pid"));
    EXPECT_EQ(kill(hanging, 0), 0);
    end();
    EXPECT_NE(kill(hanging, 0), 0);
    write_mail_program(home, keep_mail);
    start();
    await_line("2 mails about 2026-01-05 sent");
    EXPECT_EQ(mailed_addresses(home), (texts{"0@here", "1@here"}));
}

TEST_F(tovrikd_mail, that_is_not_taken_is_told_in_a_line_and_sent_after_a_reload)
{
    subscribe(1);
    write_mail_program(home, "while [ \"$i\" != xxxxxxxxxx ]; do i=x$i; head -c 9000 /dev/zero |\n"
                             "tr '\\0' '\\033' >&2; echo 'no\tway' >&2; done; exit 75");
    start();
    const std::string line = await_line("the mail to 0@here about 2026-01-05 is not sent: the mail "
                                        "program ended with status 75");
    EXPECT_LE(line.size(), 500U);
    EXPECT_EQ(line.find('\033'), std::string::npos);
    await_line("the rest is tried again in a minute");
    const std::string other = home.path_of("other");
    write_mail_program(home, keep_mail);
    ASSERT_EQ(rename(home.path_of("mailer").c_str(), other.c_str()), 0);
    write_configuration(other);
    program->send_signal(SIGHUP);
    await_line("the new configuration is in use");
    await_line("1 mail about 2026-01-05 sent");
    EXPECT_EQ(mailed_addresses(home), texts{"0@here"});
}

TEST_F(tovrikd_mail, without_its_program_is_told_by_the_check_and_at_the_start)
{
    const std::string missing = home.path_of("missing");
    write_configuration(missing);
    const std::string complaint = "the mail program \"" + missing + "\" cannot be found";
    {
        sim_program check{
            {"--config", home.path_of("tovrikd.toml"), "--check"}, nullptr, -1, -1, TOVRIKD_BINARY};
        EXPECT_EQ(check.complaint(),
                  "tovrikd: " + home.path_of("tovrikd.toml") + ": " + complaint + "\n");
        EXPECT_EQ(check.status(), 2);
    }
    program = std::make_unique<sim_program>(texts{"--config", home.path_of("tovrikd.toml")},
                                            nullptr, -1, -1, TOVRIKD_BINARY);
    EXPECT_EQ(program->complaint_line(), "tovrikd: " + complaint);
    await_line("Home listens on port ");
    end();
}

} // namespace
