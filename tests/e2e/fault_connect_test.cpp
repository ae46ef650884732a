// fault_connect_test.cpp - connecting while system calls fail: the documented message comes, and
// nothing else is harmed.
#include "e2e/fault_session.hpp"

#include <cerrno>
#include <netdb.h>

namespace
{

const std::string no_socket = "Unable to create new socket";
const std::string no_connection = "Unable to connect to %s";
const std::string connected = "Successfully connected %s. Handle #";

class fault_connecting : public fault_session
{
};

TEST_P(fault_connecting, is_refused_with_its_message)
{
    break_calls();
    ASSERT_NO_FATAL_FAILURE(connect_second());
    ASSERT_TRUE(wait_for_hit());
    ASSERT_TRUE(client.wait_for_status(fill_in_server(GetParam().line), GetParam().pair));
    EXPECT_FALSE(servers[1].has_waiting_client());
    EXPECT_EQ(client.marker(2).text, " ");
    if (!GetParam().is_by_name) {
        faults.set({});
        EXPECT_TRUE(client.connect_selected(servers[1])) << "at the next attempt";
    }
    expect_nothing_else_harmed();
}

INSTANTIATE_TEST_SUITE_P(
    all, fault_connecting,
    testing::Values(
        fault_row{"socket_EMFILE", {faulty_call::socket, EMFILE}, no_socket},
        fault_row{"socket_ENOBUFS", {faulty_call::socket, ENOBUFS}, no_socket},
        fault_row{"look_up_EAI_AGAIN", {faulty_call::look_up, EAI_AGAIN}, no_socket, 5, true},
        fault_row{"look_up_EAI_MEMORY", {faulty_call::look_up, EAI_MEMORY}, no_socket, 5, true},
        fault_row{"look_up_EAI_SYSTEM", {faulty_call::look_up, EAI_SYSTEM}, no_socket, 5, true},
        fault_row{"thread_EAGAIN", {faulty_call::thread, EAGAIN}, no_socket, 5, true},
        fault_row{"connect_ECONNREFUSED", {faulty_call::connect, ECONNREFUSED}, no_connection},
        fault_row{"connect_ENETUNREACH", {faulty_call::connect, ENETUNREACH}, no_connection},
        fault_row{"connect_EIO", {faulty_call::connect, EIO}, no_connection},
        fault_row{"fork_EAGAIN", {faulty_call::fork, EAGAIN}, no_connection},
        fault_row{"fork_ENOMEM", {faulty_call::fork, ENOMEM}, no_connection},
        fault_row{.behaviour = "socket_EMFILE_on_a_slow_screen",
                  .wanted = {faulty_call::socket, EMFILE},
                  .line = no_socket,
                  .besides = {{faulty_call::write, short_count, "/dev/tty", 0, 500},
                              {faulty_call::poll, EINTR, "", 0, 20},
                              {faulty_call::pause, EINTR, "", 0, 20}}},
        fault_row{.behaviour = "fork_EAGAIN_and_everything_EINTR",
                  .wanted = {faulty_call::fork, EAGAIN},
                  .line = no_connection,
                  .besides = {{faulty_call::wait, EINTR, "", 0, 3},
                              {faulty_call::poll, EINTR, "", 0, 20},
                              {faulty_call::read, EINTR, "", 0, 10},
                              {faulty_call::write, EINTR, "", 0, 10}}}),
    fault_name);

class fault_survived : public fault_session
{
};

TEST_P(fault_survived, does_not_prevent_a_connection)
{
    break_calls();
    ASSERT_NO_FATAL_FAILURE(connect_second());
    std::optional<server_connection> second = servers[1].accept();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->read_packet(), (server_packet{.kind = 101, .payload = "0 02 001"}));
    EXPECT_EQ(second->read_packet(), (server_packet{.kind = 151, .payload = "CXML"}));
    ASSERT_TRUE(client.terminal().wait_for_text(fill_in_server(connected)));
    ASSERT_TRUE(wait_for_notice(client, *second, "hello"));
    EXPECT_GT(faults.hits(), 0);
    expect_nothing_else_harmed();
}

INSTANTIATE_TEST_SUITE_P(
    all, fault_survived,
    testing::Values(fault_row{"connect_EINTR", {faulty_call::connect, EINTR, "", 0, 3}},
                    fault_row{"wait_EINTR", {faulty_call::wait, EINTR, "", 0, 3}},
                    fault_row{"send_EINTR", {faulty_call::send, EINTR, "", 0, 2}},
                    fault_row{"poll_EINTR", {faulty_call::poll, EINTR, "", 0, 20}},
                    fault_row{"poll_ENOMEM", {faulty_call::poll, ENOMEM, "", 0, 1}},
                    fault_row{"pause_EINTR", {faulty_call::pause, EINTR, "", 0, 500}},
                    fault_row{"read_EINTR", {faulty_call::read, EINTR, "socket:", 0, 10}},
                    fault_row{"read_short", {faulty_call::read, short_count, "socket:", 0, 200}},
                    fault_row{"tty_read_EINTR", {faulty_call::read, EINTR, "/pts/", 0, 10}},
                    fault_row{.behaviour = "everything_EINTR",
                              .wanted = {faulty_call::connect, EINTR, "", 0, 3},
                              .besides = {{faulty_call::wait, EINTR, "", 0, 3},
                                          {faulty_call::send, EINTR, "", 0, 2},
                                          {faulty_call::poll, EINTR, "", 0, 20},
                                          {faulty_call::pause, EINTR, "", 0, 100},
                                          {faulty_call::read, EINTR, "socket:", 0, 10},
                                          {faulty_call::read, EINTR, "/pts/", 0, 10},
                                          {faulty_call::write, EINTR, "/dev/tty", 0, 10}}},
                    fault_row{.behaviour = "no_log_no_memory_to_poll_and_a_slow_screen",
                              .wanted = {faulty_call::poll, ENOMEM, "", 0, 2},
                              .besides = {{faulty_call::read, short_count, "socket:", 0, 200},
                                          {faulty_call::write, short_count, "/dev/tty", 0, 500},
                                          {faulty_call::open, EMFILE, ".log", 0, 3}}}),
    fault_name);

} // namespace
