// server_waiting_requests_test.cpp - what a server's clients ask of a database that takes its time.
#include "server_driven_core.hpp"

#include "server/base/limits.hpp"

#include <deque>
#include <string>
#include <utility>

namespace
{

/// Keeps pager entries when the test says so.
class slow_store : public tovrik::memory_store
{
public:
    using tovrik::memory_store::memory_store;
    void add_pager(const tovrik::pager_owner&, const tovrik::pager_entry&,
                   yes_or_no answer) override
    {
        asked.push_back(std::move(answer));
    }
    void answer_first()
    {
        asked.front()(true);
        asked.pop_front();
    }
    std::deque<yes_or_no> asked;
};

TEST(waiting_requests, of_a_client_have_a_bound)
{
    driven_core server{{.pace_ms = 0, .capabilities = {.pager = "1"}}};
    slow_store store{server.core.services, server.options.name};
    server.core.store = &store;
    auto& home = server.open({});
    auto client = server.connect(home);
    auto other = server.connect(home);
    for (auto* const each : {&client, &other})
        EXPECT_EQ(server.next_packet(*each)->kind, 41U);
    const auto ask = [](sim_raw_client& asking) { asking.send_text(77, "me@here\tD-AIQA\t\t"); };
    for (std::size_t i = 0; i <= tovrik::max_unanswered_requests; ++i)
        ask(client);
    const auto refused = server.next_packet(client);
    ASSERT_TRUE(refused);
    EXPECT_EQ(*refused, (server_packet{.kind = 79, .payload = "Too many requests at once"}));
    EXPECT_EQ(store.asked.size(), tovrik::max_unanswered_requests);
    ask(other);
    EXPECT_TRUE(server.run_until([&] {
        return store.asked.size() > tovrik::max_unanswered_requests;
    })) << "another client may still ask";
    store.answer_first();
    EXPECT_EQ(server.next_packet(client)->kind, 78U);
    ask(client);
    EXPECT_TRUE(server.run_until([&] {
        return store.asked.size() > tovrik::max_unanswered_requests;
    })) << "an answer makes room";
}

} // namespace
