// fault_fetch_test.cpp - fetching lists of servers while system calls fail.
#include "e2e/directory_session.hpp"
#include "support/faults.hpp"

#include <cerrno>
#include <netdb.h>

namespace
{

const std::string refused = "Unable to fetch serverlist from localhost";

struct fetch_row {
    std::string behaviour;
    fault wanted;
    std::string line;
    bool reaches = true; // the directory is reached
};

void PrintTo(const fetch_row& row, std::ostream* out)
{
    *out << row.behaviour;
}

std::string fetch_name(const testing::TestParamInfo<fetch_row>& row)
{
    return row.param.behaviour;
}

/// A client, and a directory that knows one more server.
class faulty_client : public directory_test
{
protected:
    void SetUp() override
    {
        client_start how = with_directory(directory.port());
        for (const auto& [name, value] : faults.environment(how.environment["LD_PRELOAD"]))
            how.environment[name] = value;
        ASSERT_TRUE(client.start(settings, how));
    }

    const std::string answer = answer_header + directory_line({.name = "b.example"});
    program_faults faults;
};

class fault_fetch : public faulty_client, public testing::WithParamInterface<fetch_row>
{
};

TEST_P(fault_fetch, ends_with_its_message_and_the_next_fetch_succeeds)
{
    const std::string& line = GetParam().line;
    faults.set(GetParam().wanted);
    client.terminal().send_control('r');
    if (GetParam().reaches) {
        std::optional<server_connection> met = directory.accept();
        ASSERT_TRUE(met);
        met->send_bytes(answer);
        met->half_close();
        // A client that could not send its request leaves bytes unread.
        met->wait_for_close();
    }
    const bool is_refused = line == refused;
    ASSERT_TRUE(
        client.wait_for_status(line, is_refused ? pairs::error : pairs::server_text, is_refused));
    EXPECT_GT(faults.hits(), 0);
    EXPECT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().bells() == (is_refused ? 1 : 0); },
        "a beep after the line, if it is an error"));
    faults.set({});
    ASSERT_TRUE(fetch_answered(answer, 2));
    expect_saved({{.name = "b.example"}, settings.servers.front()});
}

INSTANTIATE_TEST_SUITE_P(
    all, fault_fetch,
    testing::Values(
        // A sanitizer may start a thread of its own first.
        fetch_row{"thread_EAGAIN",
                  {.call = faulty_call::thread, .error = EAGAIN, .failing = every_call},
                  refused,
                  false},
        fetch_row{"look_up_EAI_AGAIN", {faulty_call::look_up, EAI_AGAIN}, fetched(1), false},
        fetch_row{"socket_EMFILE", {faulty_call::socket, EMFILE}, fetched(1), false},
        fetch_row{"connect_ENETUNREACH", {faulty_call::connect, ENETUNREACH}, fetched(1), false},
        fetch_row{"send_EPIPE", {faulty_call::send, EPIPE}, fetched(1)},
        fetch_row{"read_ECONNRESET", {faulty_call::read, ECONNRESET, "socket:"}, fetched(1)},
        fetch_row{"connect_EINTR", {faulty_call::connect, EINTR}, fetched(2)},
        fetch_row{"send_EINTR", {faulty_call::send, EINTR, "", 0, 3}, fetched(2)},
        fetch_row{"poll_EINTR", {faulty_call::poll, EINTR, "", 0, 5}, fetched(2)},
        fetch_row{"read_EINTR", {faulty_call::read, EINTR, "socket:", 0, 3}, fetched(2)},
        fetch_row{"read_short", {faulty_call::read, short_count, "socket:", 0, 50}, fetched(2)}),
    fetch_name);

/// Which of a fetch's waits for its socket fails: the wait for writing or one for reading.
class fault_fetch_wait : public faulty_client, public testing::WithParamInterface<int>
{
protected:
    /// ^R, repeated until the previous fetch has ended.
    [[nodiscard]] testing::AssertionResult fetch_begins()
    {
        return client.terminal().wait_until(
            [&] {
                client.terminal().send_control('r');
                return client.wait_for_keys() && directory.has_waiting_client();
            },
            "a new fetch");
    }
};

TEST_P(fault_fetch_wait, ends_the_fetch_silently)
{
    faults.set({faulty_call::poll, ENOMEM, "socket:", GetParam()});
    client.terminal().send_control('r');
    std::optional<server_connection> met = directory.accept();
    ASSERT_TRUE(met);
    EXPECT_TRUE(met->wait_for_close());
    EXPECT_EQ(faults.hits(), 1);
    ASSERT_TRUE(fetch_begins());
    EXPECT_FALSE(client.terminal().shows("Serverlist fetched"));
    std::optional<server_connection> second = take_request();
    ASSERT_TRUE(second);
    ASSERT_TRUE(second->send_bytes(answer));
    second->close();
    EXPECT_TRUE(wait_for_fetched(2));
}

INSTANTIATE_TEST_SUITE_P(all, fault_fetch_wait, testing::Values(0, 1));

TEST_F(faulty_client, waits_thirty_seconds_for_its_directory)
{
    constexpr long half_a_minute_us = 30'000'200;
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return faults.wait_limit_us() == half_a_minute_us; }, "a wait for the answer"));
    list->close();
    ASSERT_TRUE(wait_for_fetched(1));
    // The wait for writing is the last wait of a request that cannot be sent.
    faults.set({faulty_call::send, EPIPE});
    client.terminal().send_control('r');
    EXPECT_TRUE(client.terminal().wait_until([&] { return faults.hits() == 1; }, "no request"));
    EXPECT_EQ(faults.wait_limit_us(), half_a_minute_us);
}

} // namespace
