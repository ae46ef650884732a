// hang_up_test.cpp - a terminal that vanishes ends the client, whether it gets a signal or not.
#include "e2e/client_places.hpp"
#include "e2e/network_session.hpp"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr const char* died_of_hang_up = "129\n";

/// Nothing tells the client that the terminal is gone: it has no controlling terminal, and the
/// shell above it, which has one, ignores the signal. The client was started to ignore it too.
constexpr const char* untold_script = R"sh(
trap '' HUP
setsid "$CLIENT"
echo $? >status
times >times
)sh";

client_start make_start(const char* script)
{
    client_start how;
    how.command = {"sh", "-c", script};
    how.environment["CLIENT"] = CLIENT_BINARY;
    return how;
}

/// The CPU time of a shell's children, in seconds, from the output of "times".
double read_cpu_seconds(const std::string& times)
{
    int minutes[2] = {};
    double seconds[2] = {};
    const std::size_t second_line = times.find('\n') + 1;
    if (std::sscanf(times.c_str() + second_line, "%dm%lfs %dm%lfs", &minutes[0], &seconds[0],
                    &minutes[1], &seconds[1]) != 4)
        return -1;
    return 60.0 * (minutes[0] + minutes[1]) + seconds[0] + seconds[1];
}

class hang_up : public testing::TestWithParam<client_place>
{
protected:
    ~hang_up() override
    {
        // In a session of its own, a client that fails to end would outlive its terminal.
        if (at.program > 0 && facts_of(at.program).parent == shell)
            kill(at.program, SIGKILL);
    }

    void begin(const client_start& how)
    {
        ASSERT_TRUE(at.start({.save_on_exit = true}, how));
        shell = at.terminal().process_id();
        unlink(at.client.home().path_of("ncursesclient.conf").c_str());
        ASSERT_TRUE(GetParam().go(at));
        attempts = children_of(at.program);
    }

    void expect_nothing_left()
    {
        EXPECT_FALSE(at.client.home().read_config());
        EXPECT_TRUE(at.connection->wait_for_close());
        EXPECT_EQ(at.connection->received().find("Good Bye"), std::string::npos);
        for (const pid_t attempt : attempts)
            EXPECT_TRUE(wait_until_gone(at.terminal(), attempt));
    }

    placed_client at{GetParam().needs_silent_server};
    pid_t shell = 0;
    std::vector<pid_t> attempts;
};

INSTANTIATE_TEST_SUITE_P(in, hang_up, testing::ValuesIn(client_places), place_name);

TEST_P(hang_up, is_noticed_at_once_without_a_signal)
{
    ASSERT_NO_FATAL_FAILURE(begin(make_start(untold_script)));
    ASSERT_NE(at.program, shell);
    at.terminal().hang_up();
    const auto moments = patience(5);
    ASSERT_TRUE(at.terminal().wait_until(
        [&] { return at.client.home().read_file("times").has_value(); }, "the end", moments));
    EXPECT_EQ(at.client.home().read_file("status"), died_of_hang_up);
    EXPECT_EQ(at.terminal().error_text(), "Hangup\n") << "the shell's word";
    expect_nothing_left();
    ASSERT_TRUE(at.client.wait_for_exit());
    const double used = read_cpu_seconds(at.client.home().read_file("times").value_or(""));
    EXPECT_GE(used, 0.0);
    EXPECT_LT(used, 1.0 * patience_factor());
}

TEST_P(hang_up, ends_a_client_by_its_signal)
{
    ASSERT_NO_FATAL_FAILURE(begin({}));
    at.terminal().hang_up();
    const std::optional<int> status = at.client.wait_for_exit();
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFSIGNALED(*status) && WTERMSIG(*status) == SIGHUP) << *status;
    expect_nothing_left();
}

/// Starts the client from a script in a home with one server, and waits for its end.
class odd_input : public testing::Test
{
protected:
    std::optional<int> run(const std::string& script)
    {
        client_settings settings = with_aliases({"alpha"});
        settings.save_on_exit = true;
        client.home().write_config(config_text(settings));
        client.launch(make_start(script.c_str()));
        return client.wait_for_exit();
    }

    void expect_ended_by_hang_up(const std::optional<int>& status)
    {
        ASSERT_TRUE(status);
        EXPECT_EQ(client.home().read_file("status"), died_of_hang_up);
        EXPECT_TRUE(client.terminal().screen().cursor_visible());
        EXPECT_FALSE(client.terminal().screen().alternate_screen());
    }

    client_session client;
};

TEST_F(odd_input, signals_ignored_or_blocked_at_the_start_still_end_the_client)
{
    for (const char* way : {"--ignore-signal=HUP", "--block-signal=HUP"}) {
        client_session own;
        own.home().write_config(config_text(with_aliases({"alpha"})));
        client_start how;
        how.command = {"env", way, CLIENT_BINARY};
        ASSERT_TRUE(own.start_as_it_is(how));
        own.terminal().hang_up();
        const std::optional<int> status = own.wait_for_exit();
        ASSERT_TRUE(status) << way;
        EXPECT_TRUE(WIFSIGNALED(*status) && WTERMSIG(*status) == SIGHUP) << way;
    }
}

TEST_F(odd_input, ends_the_client_at_its_end)
{
    for (const char* script :
         {R"("$CLIENT" </dev/null; echo $? >status)", R"("$CLIENT" <&-; echo $? >status)",
          R"(: | { "$CLIENT"; echo $? >status; })"}) {
        SCOPED_TRACE(script);
        unlink(client.home().path_of("status").c_str());
        expect_ended_by_hang_up(run(script));
    }
}

TEST_F(odd_input, is_read_to_its_end)
{
    const std::optional<int> status =
        run(R"(printf '\010\010\030' | { "$CLIENT"; echo $? >status; })");
    ASSERT_TRUE(status);
    EXPECT_EQ(client.home().read_file("status"), "0\n");
    EXPECT_EQ(client.terminal().error_text(), "");
}

TEST_F(odd_input, does_not_keep_a_client_alive_without_a_screen)
{
    const std::string keys = client.home().path_of("keys");
    ASSERT_EQ(mkfifo(keys.c_str(), 0600), 0);
    const int hand = open(keys.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(hand, 0);
    client.home().write_config(config_text(with_aliases({"alpha"})));
    ASSERT_TRUE(client.start_as_it_is(
        make_start(R"(trap '' HUP; setsid "$CLIENT" <keys; echo $? >status)")));
    client.terminal().hang_up();
    EXPECT_TRUE(client.terminal().wait_until(
        [&] { return client.home().read_file("status") == died_of_hang_up; }, "the end"));
    close(hand);
    EXPECT_TRUE(client.wait_for_exit());
}

} // namespace
