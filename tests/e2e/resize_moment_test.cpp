// resize_moment_test.cpp - what arrives while the client is in the middle of a resize.
#include "e2e/client_session.hpp"
#include "e2e/network_session.hpp"
#include "e2e/whole_screen.hpp"

#include <csignal>
#include <unistd.h>

namespace
{

/// A client that knows of a resize and is about to ask for the new size, for as long as the test
/// wants. It has given up the terminal and not yet taken it again.
class resize_moment : public testing::Test
{
protected:
    /// answered: how many queries for the size are answered first.
    void begin(std::vector<std::string> command, std::size_t answered = 0)
    {
        client.home().write_config(config_text(with_aliases({"alpha"})));
        client_start how;
        how.command = std::move(command);
        how.environment["CLIENT"] = CLIENT_BINARY;
        how.environment["LD_PRELOAD"] = CLOCK_PRELOAD ":" HELD_SIZE_PRELOAD;
        how.environment["HELD_SIZE_FOLDER"] = hand.path();
        ASSERT_TRUE(client.start_as_it_is(how));
        hand.write_file("prepared", std::string(answered, '.'));
        ASSERT_EQ(rename(hand.path_of("prepared").c_str(), hand.path_of("hold").c_str()), 0);
        client.terminal().resize(30, 100);
        ASSERT_TRUE(client.terminal().wait_until([&] { return hand.read_file("held").has_value(); },
                                                 "the size is asked for"));
    }

    void let_go()
    {
        unlink(hand.path_of("hold").c_str());
    }

    temp_home hand;
    client_session client;
};

TEST_F(resize_moment, neither_shows_nor_loses_keys)
{
    ASSERT_NO_FATAL_FAILURE(begin({CLIENT_BINARY}));
    EXPECT_EQ(client.terminal().line_settings().c_lflag & (ICANON | ECHO), 0U);
    client.terminal().forget_raw_output();
    client.terminal().send("\010\004\010\010"); // help, disconnect, and help twice
    client.terminal().take_in_everything();
    EXPECT_EQ(client.terminal().raw_output(), "");
    let_go();
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
}

TEST_F(resize_moment, does_not_lose_the_stop_key)
{
    ASSERT_NO_FATAL_FAILURE(begin({"sh", "-mc", "\"$CLIENT\"; echo $? >status; fg"}));
    client.terminal().send_control('z');
    let_go();
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return client.home().read_file("status") == std::to_string(128 + SIGTSTP) + "\n" &&
                   client.terminal().screen().alternate_screen();
        },
        "it stops, and comes back"));
}

/// How many of the client's queries have been answered when yet another size comes.
class another_size : public resize_moment, public testing::WithParamInterface<std::size_t>
{
};

INSTANTIATE_TEST_SUITE_P(after, another_size, testing::Values(0U, 1U));

TEST_P(another_size, does_no_harm)
{
    ASSERT_NO_FATAL_FAILURE(begin({CLIENT_BINARY}, GetParam()));
    // Most windows of the reported size begin outside this one.
    client.terminal().resize_unseen(10, 20);
    let_go();
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return has_heard(client.terminal().process_id(), SIGWINCH); }, "both are taken"));
    client.terminal().resize(30, 80);
    ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
}

} // namespace
