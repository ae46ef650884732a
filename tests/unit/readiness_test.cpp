// readiness_test.cpp - which servers are worth reading from, asked in one call.
#include "unit/net_fixture.hpp"

#include "net/readiness.hpp"

#include <unistd.h>

namespace
{

bool has_socket(const server_entry& entry)
{
    return entry.socket_fd != 0;
}

class readiness_answer : public net_test
{
protected:
    // In the order of the list.
    server_entry& first = add_server("c.example");
    server_entry& second = add_server("b.example");
    server_entry& third = add_server("a.example");
};

TEST_F(readiness_answer, distinguishes_servers_with_data_from_silent_ones)
{
    const server_end first_end = connect(first);
    const server_end second_end = connect(second);
    const server_end third_end = connect(third);
    second_end.send({103, "data"});
    readiness answer = readiness_ask(app_state.servers, 0, has_socket);
    EXPECT_FALSE(readiness_of(answer, first));
    EXPECT_TRUE(readiness_of(answer, second));
    EXPECT_FALSE(readiness_of(answer, third));
}

TEST_F(readiness_answer, covers_the_servers_from_a_given_one_on)
{
    const server_end first_end = connect(first);
    const server_end second_end = connect(second);
    const server_end third_end = connect(third);
    third_end.send({103, "data"});
    readiness answer = readiness_ask(app_state.servers, 1, has_socket);
    EXPECT_EQ(answer.sockets.size(), 2U);
    EXPECT_FALSE(readiness_of(answer, second));
    EXPECT_TRUE(readiness_of(answer, third));
}

TEST_F(readiness_answer, counts_the_end_of_a_connection_as_something_to_read)
{
    server_end first_end = connect(first);
    const server_end second_end = connect(second);
    first_end.close();
    readiness answer = readiness_ask(app_state.servers, 0, has_socket);
    EXPECT_TRUE(readiness_of(answer, first));
    EXPECT_FALSE(readiness_of(answer, second));
}

TEST_F(readiness_answer, is_yes_for_a_server_that_was_not_asked_about)
{
    const server_end first_end = connect(first);
    const server_end third_end = connect(third);
    readiness answer = readiness_ask(app_state.servers, 0, has_socket);
    EXPECT_EQ(answer.sockets.size(), 2U);
    EXPECT_FALSE(readiness_of(answer, first));
    EXPECT_TRUE(readiness_of(answer, second));
    EXPECT_FALSE(readiness_of(answer, third));
}

TEST_F(readiness_answer, is_yes_for_a_server_that_has_changed_its_socket)
{
    const server_end before = connect(first);
    readiness answer = readiness_ask(app_state.servers, 0, has_socket);
    const int former = first.socket_fd;
    const server_end after = connect(first);
    EXPECT_TRUE(readiness_of(answer, first));
    close(former);
}

TEST_F(readiness_answer, is_yes_for_a_server_added_since)
{
    const server_end first_end = connect(first);
    const server_end third_end = connect(third);
    readiness answer = readiness_ask(app_state.servers, 0, has_socket);
    const server_entry& added = add_server("bb.example");
    EXPECT_FALSE(readiness_of(answer, first));
    EXPECT_TRUE(readiness_of(answer, added));
    EXPECT_TRUE(readiness_of(answer, second));
    EXPECT_FALSE(readiness_of(answer, third));
}

TEST_F(readiness_answer, is_yes_for_an_invalid_descriptor)
{
    first.socket_fd = 1'000'000;
    readiness answer = readiness_ask(app_state.servers, 0, has_socket);
    EXPECT_TRUE(readiness_of(answer, first));
    first.socket_fd = 0;
}

TEST_F(readiness_answer, is_empty_without_servers)
{
    readiness answer = readiness_ask(app_state.servers, 0, has_socket);
    EXPECT_TRUE(answer.entries.empty());
    EXPECT_TRUE(readiness_of(answer, first));
}

} // namespace
