// server_list_fetch_test.cpp - what the thread that fetches the list of servers shares with the
// rest of the program: only under the state lock, and nothing once it was given up.
#include "unit/own_directory.hpp"

#include "app/app_state.hpp"
#include "net/server_list_fetch.hpp"
#include "unit/connection_fixture.hpp"
#include "unit/held_memory.hpp"

namespace
{

constexpr std::string_view answer = "HTTP/1.0 200 OK\r\n\r\n"
                                    "a.example\t1\t\t\t\t\t\t\t\n"
                                    "b.example\t2\t\t\t\t\t\t\t\n";
const status_line begun = {"Fetch Serverlist from localhost...", 6};

status_line make_end_line(int count)
{
    return {"Serverlist fetched with " + std::to_string(count) + " entries", 15};
}

class list_fetch : public net_test
{
protected:
    ~list_fetch() override
    {
        EXPECT_TRUE(wait_until([] { return app_state.fetch.running == 0; }));
    }

    /// Starts a fetch. Like everything here but wait_until, it keeps the state lock.
    std::optional<server_end> begin_fetch()
    {
        mark();
        start_server_list_fetch();
        return own_directory::accept();
    }

    static std::int32_t count_servers()
    {
        return app_state.servers->count;
    }
};

TEST_F(list_fetch, makes_its_connection_known_under_the_state_lock_only)
{
    const own_directory directory;
    const int asked = state_lock_requests();
    std::optional<server_end> list = begin_fetch();
    ASSERT_TRUE(list);
    EXPECT_TRUE(wait_for_lock_requests(asked + 1));
    EXPECT_EQ(app_state.fetch.socket, -1);
    EXPECT_EQ(list->take_bytes(), "") << "the request follows";
    ASSERT_TRUE(own_directory::takes_request(*list));
    EXPECT_GT(app_state.fetch.socket, 0);
    list->close();
}

TEST_F(list_fetch, adds_servers_under_the_state_lock_only)
{
    const own_directory directory;
    std::optional<server_end> list = begin_fetch();
    ASSERT_TRUE(list && own_directory::takes_request(*list));
    const int asked = state_lock_requests();
    list->send_bytes(answer);
    list->close();
    EXPECT_TRUE(wait_for_lock_requests(asked + 1));
    EXPECT_EQ(count_servers(), 0);
    EXPECT_TRUE(wait_until([] { return app_state.fetch.running == 0; }));
    EXPECT_EQ(count_servers(), 2);
    EXPECT_EQ(said(), (status_lines{begun, make_end_line(2)}));
}

TEST_F(list_fetch, shows_its_result_under_the_state_lock_only)
{
    const own_directory nowhere(false);
    mark();
    const int asked = state_lock_requests();
    start_server_list_fetch();
    EXPECT_TRUE(wait_for_lock_requests(asked + 1));
    EXPECT_EQ(said(), status_lines{begun});
    EXPECT_TRUE(wait_until([] { return app_state.fetch.running == 0; }));
    EXPECT_EQ(said(), (status_lines{begun, make_end_line(0)}));
}

TEST_F(list_fetch, changes_nothing_once_it_was_given_up)
{
    const own_directory directory;
    std::optional<server_end> list = begin_fetch();
    ASSERT_TRUE(list && own_directory::takes_request(*list));
    list->send_bytes(answer);
    server_list_fetch_finish();
    ASSERT_EQ(app_state.fetch.running, 1);
    EXPECT_TRUE(wait_until([] { return app_state.fetch.running == 0; }));
    EXPECT_TRUE(list->await_end());
    EXPECT_EQ(count_servers(), 0);
    EXPECT_EQ(said(), status_lines{begun});
}

TEST_F(list_fetch, keeps_no_descriptor_and_no_memory)
{
    const own_directory directory;
    const auto fetch = [&] {
        std::optional<server_end> list = begin_fetch();
        ASSERT_TRUE(list && own_directory::takes_request(*list));
        list->send_bytes(answer);
        list->close();
        ASSERT_TRUE(wait_until([] { return app_state.fetch.running == 0; }));
    };
    constexpr int fetches = 200;
    for (int count = 0; count < 10; ++count)
        ASSERT_NO_FATAL_FAILURE(fetch());
    const auto descriptors = count_open_descriptors();
    const std::size_t memory = held_memory();
    for (int count = 0; count < fetches; ++count)
        ASSERT_NO_FATAL_FAILURE(fetch());
    EXPECT_EQ(count_open_descriptors(), descriptors);
    EXPECT_LT(held_memory(), memory + std::size_t{fetches} * 64);
}

} // namespace
