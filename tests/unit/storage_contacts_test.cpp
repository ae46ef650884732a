// storage_contacts_test.cpp - how often an aircraft was heard, over the archive and nothing else.
#include "unit/storage_fixture.hpp"

#include "server/storage/kept_store.hpp"

#include <ctime>

namespace
{

TEST(kept_contacts, are_those_of_the_messages_that_are_kept)
{
    const temp_home home;
    const std::string name = "Home";
    tovrik::service_state state;
    tovrik::kept_store store{state, name, [](const std::string& line) { ADD_FAILURE() << line; }};
    ASSERT_EQ(store.open(home.path_of("state")), "");
    const auto hear = [&store](const std::string& registration) {
        tovrik::transmission message;
        message.registration = registration;
        store.complete_message(message);
        store.keep_message(message);
        EXPECT_TRUE(await_finished(store.kept));
        return message.contacts;
    };
    EXPECT_EQ(hear("D-AIQA"), 1U);
    EXPECT_EQ(hear("D-AIQA"), 2U);
    EXPECT_EQ(hear("OH-LXV"), 1U);
    EXPECT_EQ(hear(""), 0U);
    store.forget_before(std::time(nullptr) + 1);
    EXPECT_TRUE(await_finished(store.kept));
    EXPECT_EQ(store.messages, 0U);
    EXPECT_TRUE(store.heard.contacts.empty());
    EXPECT_EQ(hear("D-AIQA"), 1U);
    store.close();
}

} // namespace
