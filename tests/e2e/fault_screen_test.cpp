// fault_screen_test.cpp - a terminal that takes what the client draws only in pieces, or now and
// then not at all: every screen is whole in the end.
#include "e2e/fault_session.hpp"
#include "e2e/whole_screen.hpp"

#include <cerrno>

namespace
{

/// The terminal is like this from the start to the end.
class fault_screen : public fault_session
{
protected:
    void SetUp() override
    {
        break_calls();
        ASSERT_NO_FATAL_FAILURE(start());
    }
};

TEST_P(fault_screen, is_whole_at_every_size_and_given_back)
{
    ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
    client.terminal().resize(40, 160);
    ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
    client.terminal().resize(24, 132);
    ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
    ASSERT_TRUE(client.wait_for_keys());
    first = client.connect_selected(servers[0]);
    ASSERT_TRUE(first);
    ASSERT_TRUE(client.wait_for_status(log_opened, pairs::notice));
    ASSERT_NO_FATAL_FAILURE(transmit_from_first("DURING"));
    EXPECT_GT(faults.hits(), 0);
    client.quit();
    EXPECT_EQ(client.home().read_config(), config_text(settings));
}

INSTANTIATE_TEST_SUITE_P(
    all, fault_screen,
    testing::Values(fault_row{"write_short",
                              {faulty_call::write, short_count, "/dev/tty", 0, every_call}},
                    fault_row{"write_EINTR", {faulty_call::write, EINTR, "/dev/tty", 0, 100}},
                    fault_row{"write_EAGAIN", {faulty_call::write, EAGAIN, "/dev/tty", 0, 20}},
                    fault_row{.behaviour = "write_short_and_EINTR",
                              .wanted = {faulty_call::write, EINTR, "/dev/tty", 500, 100},
                              .besides = {{faulty_call::write, EAGAIN, "/dev/tty", 1000, 20},
                                          {faulty_call::write, short_count, "/dev/tty", 0, 3000}}},
                    fault_row{.behaviour = "read_EINTR_and_write_short",
                              .wanted = {faulty_call::read, EINTR, "/pts/", 0, 40},
                              .besides = {{faulty_call::write, short_count, "/dev/tty", 0, 1000},
                                          {faulty_call::pause, EINTR, "", 0, 200}}}),
    fault_name);

} // namespace
