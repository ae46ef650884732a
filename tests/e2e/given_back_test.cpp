// given_back_test.cpp - wherever the client is left, stopped or crashes, it restores the terminal:
// every cell, the cursor, every field of the line. No process is left behind.
#include "e2e/network_session.hpp"
#include "e2e/shell_session.hpp"
#include "e2e/whole_screen.hpp"
#include "support/line_settings.hpp"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <iterator>
#include <tuple>

namespace
{

constexpr int status_of_signal = 128; // plus its number: how shells report a death by signal

std::string signal_name(int number)
{
    return std::string{"SIG"} + sigabbrev_np(number);
}

class left_by_signal : public shell_session,
                       public testing::WithParamInterface<std::tuple<client_place, int>>
{
};

TEST_P(left_by_signal, gives_everything_back_and_saves_nothing)
{
    const auto& [place, number] = GetParam();
    ASSERT_NO_FATAL_FAILURE(begin(place.needs_silent_server));
    ASSERT_NO_FATAL_FAILURE(go_to(place));
    kill(at->program, number);
    ASSERT_TRUE(wait_for_status(status_of_signal + number));
    expect_terminal_given_back();
    expect_nobody_left();
    expect_nothing_saved();
    EXPECT_TRUE(at->connection->wait_for_close());
    EXPECT_EQ(at->connection->received().find("Good Bye"), std::string::npos);
    expect_shell_ends();
}

INSTANTIATE_TEST_SUITE_P(from, left_by_signal,
                         testing::Combine(testing::ValuesIn(client_places),
                                          testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT)),
                         [](const auto& about) {
                             return std::get<0>(about.param).name +
                                    ("_by_" + signal_name(std::get<1>(about.param)));
                         });

class place_left : public shell_session, public testing::WithParamInterface<client_place>
{
};

INSTANTIATE_TEST_SUITE_P(from, place_left, testing::ValuesIn(client_places), place_name);

/// The places where ^X is not taken as a character.
std::vector<client_place> find_places_with_exit()
{
    std::vector<client_place> places;
    std::copy_if(client_places.begin(), client_places.end(), std::back_inserter(places),
                 [](const client_place& place) { return place.leaves_on_exit_key; });
    return places;
}

class place_with_exit : public place_left
{
};

INSTANTIATE_TEST_SUITE_P(from, place_with_exit, testing::ValuesIn(find_places_with_exit()),
                         place_name);

TEST_P(place_with_exit, is_left_in_order_by_the_exit_key)
{
    ASSERT_NO_FATAL_FAILURE(begin(GetParam().needs_silent_server));
    ASSERT_NO_FATAL_FAILURE(go_to(GetParam()));
    terminal().send_control('x');
    ASSERT_TRUE(wait_for_status(0));
    expect_terminal_given_back();
    expect_nobody_left();
    EXPECT_TRUE(at->client.home().read_config());
    EXPECT_EQ(at->connection->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    EXPECT_TRUE(at->connection->wait_for_close());
    expect_shell_ends();
}

TEST_P(place_left, is_lent_to_the_shell_by_the_stop_key)
{
    ASSERT_NO_FATAL_FAILURE(begin(GetParam().needs_silent_server));
    ASSERT_NO_FATAL_FAILURE(go_to(GetParam()));
    const termios modes = terminal().line_settings();
    const std::vector<screen_cell> cells = all_cells(terminal().screen());
    for (int round = 1; round <= 2; ++round) {
        terminal().send_control('z');
        ASSERT_TRUE(wait_for_status(status_of_signal + SIGTSTP, round));
        expect_terminal_given_back();
        bring_back(round);
        ASSERT_TRUE(terminal().wait_until(
            [&] {
                return terminal().screen().alternate_screen() &&
                       !terminal().screen().cursor_visible() &&
                       line_difference(terminal().line_settings(), modes).empty() &&
                       (GetParam().is_popup || all_cells(terminal().screen()) == cells);
            },
            "the client has the terminal again, as it was"));
    }
    kill(at->program, SIGTERM);
    ASSERT_TRUE(wait_for_status(status_of_signal + SIGTERM, 3));
    expect_terminal_given_back();
    expect_nobody_left();
    expect_nothing_saved();
    expect_shell_ends();
}

TEST_P(place_left, leaves_no_process_behind_when_the_client_is_killed)
{
    ASSERT_NO_FATAL_FAILURE(begin(GetParam().needs_silent_server));
    ASSERT_NO_FATAL_FAILURE(go_to(GetParam()));
    kill(at->program, SIGKILL);
    ASSERT_TRUE(wait_for_status(status_of_signal + SIGKILL));
    expect_nobody_left();
    expect_nothing_saved();
    expect_shell_ends();
}

class crash : public shell_session, public testing::WithParamInterface<int>
{
};

TEST_P(crash, gives_everything_back_and_saves_nothing)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "crashes are the sanitizer's";
#endif
    ASSERT_NO_FATAL_FAILURE(begin(an_attempt_to_connect.needs_silent_server));
    ASSERT_NO_FATAL_FAILURE(go_to(an_attempt_to_connect));
    ASSERT_EQ(children_of(at->program).size(), 1U);
    kill(at->program, GetParam());
    ASSERT_TRUE(wait_for_status(status_of_signal + GetParam()));
    expect_terminal_given_back();
    expect_nobody_left();
    expect_nothing_saved();
    expect_shell_ends();
}

INSTANTIATE_TEST_SUITE_P(by, crash,
                         testing::Values(SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS, SIGTRAP,
                                         SIGXCPU, SIGUSR1, SIGUSR2),
                         [](const auto& about) { return signal_name(about.param); });

} // namespace
