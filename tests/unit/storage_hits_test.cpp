// storage_hits_test.cpp - waiting hits of pager lists on disk, from one run of a server to the
// next.
#include "unit/storage_fixture.hpp"

#include "server/base/limits.hpp"
#include "server/storage/kept_store.hpp"

#include <ctime>
#include <memory>

namespace
{

using tovrik::owned_hit;
using tovrik::pager_owner;

class kept_hits : public testing::Test
{
protected:
    kept_hits()
    {
        open();
    }

    void open()
    {
        store = nullptr;
        state = {};
        store = std::make_unique<tovrik::kept_store>(
            state, name, [this](const std::string& line) { complaints.push_back(line); });
        EXPECT_EQ(store->open(home.path_of("state")), "");
    }
    void restart()
    {
        store->close();
        open();
    }
    void add_list(const pager_owner& owner)
    {
        bool is_kept = false;
        store->add_pager(owner, {"D-*", "", ""},
                         [&is_kept](bool is_granted) { is_kept = is_granted; });
        EXPECT_TRUE(await_finished(store->kept));
        EXPECT_TRUE(is_kept);
    }
    std::vector<std::string> texts() const
    {
        std::vector<std::string> found;
        for (const owned_hit& each : state.hits.after(0))
            found.push_back(each.hit.text);
        return found;
    }

    temp_home home;
    std::string name = "Home";
    std::vector<std::string> complaints;
    tovrik::service_state state;
    std::unique_ptr<tovrik::kept_store> store;
    pager_owner me{"me@example.org", 17};
    pager_owner you{"you@example.org", 17};
    std::time_t now = std::time(nullptr);
};

std::string break_table(tovrik::database& in)
{
    return database_run_script(in, "ALTER TABLE pager_hits RENAME TO hidden");
}

std::string mend_table(tovrik::database& in)
{
    return database_run_script(in, "ALTER TABLE hidden RENAME TO pager_hits");
}

TEST_F(kept_hits, are_there_after_a_restart_until_they_are_told)
{
    add_list(me);
    add_list(you);
    for (const std::string& text : hostile_texts)
        store->keep_hit(me, now, text);
    store->keep_hit(you, now - 10, "of the other one");
    restart();
    auto hits = state.hits.after(0);
    ASSERT_EQ(hits.size(), hostile_texts.size() + 1);
    for (std::size_t i = 0; i < hostile_texts.size(); ++i) {
        EXPECT_EQ(hits[i].owner, me);
        EXPECT_EQ(hits[i].hit.text, hostile_texts[i]);
        EXPECT_EQ(hits[i].hit.moment, now);
    }
    EXPECT_EQ(hits.back(), (owned_hit{you, {hits.back().hit.id, now - 10, "of the other one"}}));
    store->finish_hit(me, hits[0].hit.id);
    store->finish_hit(you, hits.back().hit.id);
    restart();
    EXPECT_EQ(texts(), (std::vector<std::string>{hostile_texts.begin() + 1, hostile_texts.end()}));
    EXPECT_EQ(state.hits.latest(), hits.back().hit.id) << "no number is given twice";
    EXPECT_TRUE(complaints.empty());
}

TEST_F(kept_hits, that_come_while_others_are_written_are_written_too)
{
    add_list(me);
    for (int i = 0; i < 50; ++i) {
        store->keep_hit(me, now, std::to_string(i));
        if (i == 20) {
            EXPECT_TRUE(await_finished(store->kept));
        }
    }
    EXPECT_TRUE(await_finished(store->kept));
    restart();
    EXPECT_EQ(texts().size(), 50U);
    EXPECT_EQ(texts().back(), "49");
}

TEST_F(kept_hits, that_are_told_before_they_are_written_are_not_there_later)
{
    add_list(me);
    for (int i = 0; i < 3; ++i) {
        store->keep_hit(me, now, std::to_string(i));
        store->finish_hit(me, state.hits.latest());
    }
    restart();
    EXPECT_TRUE(texts().empty());
}

TEST_F(kept_hits, older_than_a_day_are_forgotten)
{
    add_list(me);
    store->keep_hit(me, now - 86400 - 60, "old");
    store->keep_hit(me, now - 86400 + 600, "new");
    restart();
    EXPECT_EQ(texts(), std::vector<std::string>{"new"});
    store->keep_hit(me, now, "newer");
    store->forget_hits_before(now);
    EXPECT_EQ(texts(), std::vector<std::string>{"newer"});
    restart();
    EXPECT_EQ(texts(), std::vector<std::string>{"newer"});
}

TEST_F(kept_hits, are_bounded_and_go_with_their_list)
{
    add_list(me);
    for (std::size_t i = 0; i < tovrik::max_pager_hits + 7; ++i)
        store->keep_hit(me, now, std::to_string(i));
    restart();
    EXPECT_EQ(texts().size(), tovrik::max_pager_hits);
    EXPECT_EQ(texts().front(), "7");
    store->remove_pager(me, {"*", "*", "*"}, [](bool is_granted) { EXPECT_TRUE(is_granted); });
    EXPECT_TRUE(await_finished(store->kept));
    EXPECT_TRUE(state.hits.empty());
    restart();
    EXPECT_TRUE(state.hits.empty());
}

TEST_F(kept_hits, that_cannot_be_written_are_told_of_and_tried_again)
{
    add_list(me);
    EXPECT_EQ(write_one(store->kept, break_table), "");
    for (const char* text : {"first", "second"}) {
        store->keep_hit(me, now, text);
        EXPECT_TRUE(await_finished(store->kept));
    }
    ASSERT_EQ(complaints.size(), 1U);
    EXPECT_TRUE(complaints[0].starts_with("hits of pager lists are not kept: ")) << complaints[0];
    EXPECT_EQ(write_one(store->kept, mend_table), "");
    store->keep_hit(me, now, "third");
    EXPECT_TRUE(await_finished(store->kept));
    EXPECT_EQ(complaints.back(), "hits of pager lists are kept again");
    restart();
    EXPECT_EQ(texts(), (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(kept_hits, that_were_told_of_on_a_full_disk_are_not_there_later)
{
    add_list(me);
    store->keep_hit(me, now, "told");
    EXPECT_TRUE(await_finished(store->kept));
    EXPECT_EQ(write_one(store->kept, break_table), "");
    store->finish_hit(me, state.hits.latest());
    EXPECT_TRUE(await_finished(store->kept));
    ASSERT_EQ(complaints.size(), 1U);
    EXPECT_TRUE(complaints[0].starts_with("hits of pager lists are not kept: ")) << complaints[0];
    EXPECT_EQ(write_one(store->kept, mend_table), "");
    store->forget_hits_before(now - 10);
    EXPECT_TRUE(await_finished(store->kept));
    EXPECT_EQ(complaints.back(), "hits of pager lists are kept again");
    restart();
    EXPECT_TRUE(state.hits.empty());
}

} // namespace
