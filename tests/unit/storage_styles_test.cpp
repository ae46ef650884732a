// storage_styles_test.cpp - how a server with a database answers those who choose the style of
// their mailings.
#include "server_driven_core.hpp"
#include "unit/storage_fixture.hpp"

#include "server/storage/kept_store.hpp"

#include <string>

namespace
{

class mailing_styles : public testing::Test
{
protected:
    mailing_styles()
    {
        EXPECT_EQ(store.open(home.path_of("state")), "");
        server.core.store = &store;
        EXPECT_EQ(server.next_packet(client)->kind, 41U);
    }
    ~mailing_styles() override
    {
        store.close();
    }
    mailing_styles(const mailing_styles&) = delete;
    mailing_styles& operator=(const mailing_styles&) = delete;

    server_packet answer_to(const server_packet& asked)
    {
        client.send_bytes(packet_bytes(asked));
        EXPECT_TRUE(server.run_until([&] { return store.kept.waiting_writes() > 0; }));
        EXPECT_TRUE(await_finished(store.kept));
        return server.next_packet(client).value_or(server_packet{});
    }

    const server_packet request{.kind = 66, .payload = "me@here", .param1 = 1};
    temp_home home;
    driven_core server{{.pace_ms = 0, .capabilities = {.mailing = "1", .db_modify = "1"}}};
    std::string name = "Home";
    std::vector<std::string> complaints;
    tovrik::kept_store store{server.core.services, name,
                             [this](const std::string& line) { complaints.push_back(line); }};
    sim_raw_client client = server.connect(server.open({}));
};

TEST_F(mailing_styles, are_for_those_who_have_subscribed)
{
    const server_packet refusal{.kind = 108, .payload = "There is no such subscription"};
    EXPECT_EQ(answer_to(request), refusal);
    EXPECT_EQ(answer_to({.kind = 60, .payload = "me@here"}).kind, 103U);
    const server_packet grant{.kind = 103,
                              .payload = "Daily reports for me@here now have the ZOBE style"};
    EXPECT_EQ(answer_to(request), grant);
    EXPECT_TRUE(complaints.empty());
}

TEST_F(mailing_styles, are_not_denied_because_the_disk_is_in_trouble)
{
    EXPECT_EQ(answer_to({.kind = 60, .payload = "me@here"}).kind, 103U);
    EXPECT_EQ(write_one(store.kept,
                        [](tovrik::database& in) {
                            return database_run_script(in,
                                                       "ALTER TABLE subscriptions RENAME TO gone");
                        }),
              "");
    const server_packet refusal{.kind = 108, .payload = "The style cannot be kept now"};
    EXPECT_EQ(answer_to(request), refusal);
    ASSERT_EQ(complaints.size(), 1U);
    EXPECT_TRUE(complaints[0].starts_with("a request of a client was not kept: "));
}

} // namespace
