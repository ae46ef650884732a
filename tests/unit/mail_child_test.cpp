// mail_child_test.cpp - a run of the mail program: what it is given, and every way in which it
// ends.
#include "server/base/limits.hpp"
#include "server/mail/mail_child.hpp"
#include "support/patience.hpp"
#include "unit/mail_program_script.hpp"

#include <csignal>
#include <fcntl.h>
#include <sstream>
#include <sys/epoll.h>

namespace
{

using std::chrono::steady_clock;

class mail_child : public testing::Test
{
protected:
    ~mail_child() override
    {
        if (child.pid > 0)
            mail_child_finish(child, {});
    }
    mail_child() = default;
    mail_child(const mail_child&) = delete;
    mail_child& operator=(const mail_child&) = delete;

    std::string start(const std::vector<std::string>& words,
                      steady_clock::time_point end_by = tovrik::never)
    {
        const unique_fd mail = tovrik::mail_file_make("To: me@here\n\n", "Text\n");
        EXPECT_TRUE(mail);
        return mail_child_start(child, words, mail.get(), epoll.get(), end_by);
    }
    void turn()
    {
        epoll_event event{};
        const bool is_ready = epoll_wait(epoll.get(), &event, 1, 50) == 1;
        EXPECT_TRUE(!is_ready || mail_child_on_event(child, event.data.fd));
    }
    /// What becomes of the mail.
    std::string result(steady_clock::time_point now = {})
    {
        const auto deadline = steady_clock::now() + default_patience;
        while (steady_clock::now() < deadline) {
            if (const auto ended = mail_child_result(child, now))
                return *ended;
            turn();
        }
        return "no end";
    }
    std::string run(const std::string& script)
    {
        EXPECT_EQ(start({write_mail_program(home, script), "-t", "$HOME;*"}), "");
        return result();
    }
    std::string file(const std::string& name)
    {
        return home.read_file(name).value_or("no file");
    }
    /// Waits until the program has written a line into a file.
    std::string await_line(const std::string& name)
    {
        const auto deadline = steady_clock::now() + default_patience;
        while (!home.read_file(name).value_or("").ends_with('\n') && steady_clock::now() < deadline)
            turn();
        return file(name);
    }

    temp_home home;
    unique_fd epoll{epoll_create1(EPOLL_CLOEXEC)};
    tovrik::mail_child child;
};

TEST_F(mail_child, gets_the_mail_as_its_input_and_the_words_as_they_are)
{
    EXPECT_EQ(run("printf '%s\\n' \"$@\" >\"$HOME_OF_TEST/words\"\n" + std::string{keep_mail}), "");
    EXPECT_EQ(kept_mails(home), std::vector<std::string>{"To: me@here\n\nText\n"});
    EXPECT_EQ(file("words"), "-t\n$HOME;*\n");
    EXPECT_LT(child.pid, 0);
}

TEST_F(mail_child, has_no_other_descriptors_and_no_signal_ignored_or_blocked)
{
    const unique_fd open_in_programs{fcntl(epoll.get(), F_DUPFD, 100)}; // as some libraries do
    ASSERT_TRUE(open_in_programs);
    const auto before = signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(run("ls /proc/$$/fd >\"$HOME_OF_TEST/fds\"\n"
                  "exec grep -E '^Sig(Blk|Ign)' /proc/self/status >\"$HOME_OF_TEST/signals\""),
              "");
    signal(SIGPIPE, before);
    const std::string descriptors = file("fds");
    EXPECT_TRUE(descriptors.starts_with("0\n1\n")) << descriptors;
    EXPECT_EQ(descriptors.find("\n" + std::to_string(open_in_programs.get()) + "\n"),
              std::string::npos)
        << descriptors;
    // The C library keeps two signals for itself, after the 31 ordinary ones.
    constexpr unsigned long long ordinary = 0x7FFFFFFF;
    std::istringstream lines{file("signals")};
    int count = 0;
    for (std::string name, mask; lines >> name >> mask; ++count)
        EXPECT_EQ(std::stoull(mask, nullptr, 16) & ordinary, 0U) << name << mask;
    EXPECT_EQ(count, 2);
}

TEST_F(mail_child, that_fails_is_told_with_what_it_printed_in_one_line)
{
    EXPECT_EQ(run("exit 75"), "the mail program ended with status 75");
    EXPECT_EQ(run("echo 'no  route\tto' >&2; printf 'here\\n\\n\\033[1m\\303\\244'; exit 1"),
              "the mail program ended with status 1: no route to here [1m??");
    EXPECT_EQ(run("kill -TERM $$"), "the mail program was ended by signal 15");
    EXPECT_EQ(run("echo ignored >&2"), "") << "what it prints is no failure";
}

TEST_F(mail_child, that_prints_much_is_told_in_part)
{
    const std::string said = run("head -c 300000 /dev/zero | tr '\\0' x >&2; exit 2");
    EXPECT_EQ(said, "the mail program ended with status 2: " +
                        std::string(tovrik::max_mail_complaint_bytes, 'x'));
}

TEST_F(mail_child, that_prints_without_end_is_killed)
{
    const std::string said = run("exec yes x >&2");
    EXPECT_TRUE(said.starts_with("the mail program prints without end: x x")) << said;
    EXPECT_LE(said.size(), 400U);
}

TEST_F(mail_child, that_hangs_is_killed_with_all_that_it_has_started)
{
    const auto end_by = steady_clock::now() + std::chrono::hours{1};
    ASSERT_EQ(start({write_mail_program(home, "trap '' TERM INT HUP\n"
                                              "sleep 1000 &\n"
                                              "echo $! >\"$HOME_OF_TEST/pid\"\n"
                                              "wait")},
                    end_by),
              "");
    const pid_t started = std::stoi(await_line("pid"));
    EXPECT_EQ(mail_child_result(child, end_by - std::chrono::seconds{1}), std::nullopt);
    EXPECT_EQ(result(end_by), "the mail program takes too long");
    const auto deadline = steady_clock::now() + default_patience;
    const auto is_gone = [started, this, name = "/proc/" + std::to_string(started) + "/stat"] {
        if (kill(started, 0) != 0)
            return true;
        std::FILE* const stat = std::fopen(name.c_str(), "r");
        char state = 0;
        const bool is_read = stat != nullptr && std::fscanf(stat, "%*d %*s %c", &state) == 1;
        if (stat != nullptr)
            std::fclose(stat);
        return is_read && state == 'Z'; // nobody may be there to ask for its status
    };
    while (!is_gone() && steady_clock::now() < deadline)
        usleep(10000);
    EXPECT_TRUE(is_gone());
}

TEST_F(mail_child, may_leave_others_behind_that_hold_its_output_open)
{
    EXPECT_EQ(run("sleep 1000 & echo $! >\"$HOME_OF_TEST/pid\"; echo x; exit 0"), "");
    kill(std::stoi(file("pid")), SIGKILL);
}

TEST_F(mail_child, that_cannot_be_started_is_told)
{
    EXPECT_EQ(start({home.path_of("missing")}),
              "the mail program \"" + home.path_of("missing") + "\" cannot be found");
    home.write_file("broken", "#!" + home.path_of("no-interpreter") + "\n");
    ASSERT_EQ(chmod(home.path_of("broken").c_str(), 0755), 0);
    EXPECT_EQ(start({home.path_of("broken")}),
              home.path_of("broken") + ": cannot be started: No such file or directory");
    EXPECT_LT(child.pid, 0);
}

TEST_F(mail_child, gets_some_time_at_the_end_of_the_server)
{
    ASSERT_EQ(start({write_mail_program(home, keep_mail)}), "");
    EXPECT_EQ(mail_child_finish(child, default_patience), "");
    EXPECT_EQ(kept_mails(home).size(), 1U);
    ASSERT_EQ(start({write_mail_program(home, "sleep 1000")}), "");
    EXPECT_EQ(mail_child_finish(child, {}), "the server ends");
}

} // namespace
