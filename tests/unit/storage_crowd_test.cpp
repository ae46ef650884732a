// storage_crowd_test.cpp - what becomes of messages when clients ask for more than a disk can take.
#include "unit/storage_fixture.hpp"

#include "server/base/limits.hpp"
#include "server/protocol/packet.hpp"
#include "server/storage/kept_store.hpp"

#include <future>

namespace
{

TEST(crowded_store, refuses_requests_and_has_room_for_messages)
{
    const temp_home home;
    const std::string name = "Home";
    std::vector<std::string> complaints;
    tovrik::service_state state;
    tovrik::kept_store store{
        state, name, [&complaints](const std::string& line) { complaints.push_back(line); }};
    ASSERT_EQ(store.open(home.path_of("state")), "");
    std::promise<void> disk;
    const auto is_ready = disk.get_future().share();
    ASSERT_TRUE(store.kept.write({.work =
                                      [is_ready](tovrik::database&) {
                                          is_ready.wait();
                                          return std::string{};
                                      },
                                  .done = [](const std::string&) {}}));
    constexpr std::size_t asked = tovrik::max_storage_writes;
    std::size_t granted = 0;
    std::size_t refused = 0;
    for (std::size_t i = 0; i < asked; ++i) {
        store.add_update(tovrik::kind::add_airline, "LH\tLufthansa",
                         [&](bool is_granted) { ++(is_granted ? granted : refused); });
    }
    EXPECT_EQ(granted, 0U) << "nothing is kept yet";
    EXPECT_EQ(refused, asked / 2 + 1);
    for (std::size_t i = 0; i < asked / 2; ++i)
        store.keep_message({});
    EXPECT_EQ(store.lost_messages, 0U);
    EXPECT_EQ(complaints,
              std::vector<std::string>{"requests of clients are refused: too many wait"});
    disk.set_value();
    EXPECT_TRUE(await_finished(store.kept));
    EXPECT_EQ(granted, asked / 2 - 1);
    EXPECT_EQ(store.messages, asked / 2);
    store.close();
}

} // namespace
