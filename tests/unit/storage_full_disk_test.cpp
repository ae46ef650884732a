// storage_full_disk_test.cpp - a disk that takes no more, and then does again.
#include "unit/storage_fixture.hpp"

#include "server/protocol/packet.hpp"
#include "server/storage/kept_updates.hpp"
#include "support/small_disk.hpp"

#include <set>

namespace
{

using tovrik::database;

class storage_on_a_full_disk : public testing::Test
{
protected:
    /// Keeps an airport with a long name. Returns the error.
    std::string keep(int number)
    {
        std::string error = write_one(kept, [number](database& in) {
            bool is_kept = false;
            return update_keep(in, tovrik::kind::add_airport,
                               std::to_string(number) + "\t" + std::string(60, 'x'), is_kept);
        });
        if (error.empty())
            acknowledged.insert(std::to_string(number));
        return error;
    }
    /// Keeps airports until that fails. Returns the error, empty if it never does.
    std::string keep_until_full()
    {
        for (const int last = next + 1500; next < last; ++next) {
            std::string error = keep(next);
            if (!error.empty())
                return error;
        }
        return {};
    }
    /// What was acknowledged is there, and nothing else.
    void expect_acknowledged()
    {
        std::set<std::string> found;
        EXPECT_TRUE(kept.read({.work =
                                   [&found](database& in) {
                                       tovrik::reference_data reference;
                                       std::string error = updates_read(in, reference);
                                       for (const auto& entry : reference.entries())
                                           found.insert(entry.fields.at(0));
                                       return error;
                                   },
                               .done = [](const std::string& error) { EXPECT_EQ(error, ""); }}));
        EXPECT_TRUE(await_finished(kept));
        EXPECT_EQ(found, acknowledged);
    }
    void expect_whole_after_the_end()
    {
        EXPECT_TRUE(kept.close(default_patience));
        database in;
        EXPECT_EQ(database_open(in, home.path_of("tovrikd.sqlite"), tovrik::storage_schema()), "");
        EXPECT_EQ(integrity_of(in), "ok");
        EXPECT_EQ(number_in(in, "SELECT count(*) FROM updates"),
                  static_cast<std::int64_t>(acknowledged.size()));
    }

    temp_home home;
    tovrik::storage kept;
    int next = 0;
    std::set<std::string> acknowledged;
};

TEST_F(storage_on_a_full_disk, says_so_and_recovers_when_there_is_room_again)
{
    const small_disk disk{home.path(), 2000000};
    if (!disk.is_there())
        GTEST_SKIP() << "nothing may be mounted here";
    ASSERT_EQ(kept.open(home.path(), nothing_to_prepare), "");
    ASSERT_EQ(keep(next++), "");
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(disk.fill());
        EXPECT_EQ(keep_until_full(), "database or disk is full");
        EXPECT_EQ(keep(next++), "database or disk is full") << "it stays full";
        expect_acknowledged();
        disk.empty();
        EXPECT_EQ(keep(next++), "");
    }
    expect_acknowledged();
    expect_whole_after_the_end();
    kept.close({});
}

TEST_F(storage_on_a_full_disk, closes_and_opens_without_room)
{
    const small_disk disk{home.path(), 2000000};
    if (!disk.is_there())
        GTEST_SKIP() << "nothing may be mounted here";
    ASSERT_EQ(kept.open(home.path(), nothing_to_prepare), "");
    ASSERT_EQ(keep(next++), "");
    ASSERT_TRUE(disk.fill());
    EXPECT_NE(keep_until_full(), "");
    EXPECT_TRUE(kept.close(default_patience));
    kept.open(home.path(), nothing_to_prepare); // may need some room for its log
    disk.empty();
    kept.close({});
    ASSERT_EQ(kept.open(home.path(), nothing_to_prepare), "");
    expect_acknowledged();
    EXPECT_EQ(keep(next++), "");
    expect_whole_after_the_end();
}

TEST_F(storage_on_a_full_disk, makes_no_half_database)
{
    const small_disk disk{home.path(), 40000};
    if (!disk.is_there())
        GTEST_SKIP() << "nothing may be mounted here";
    const std::string error = kept.open(home.path(), nothing_to_prepare);
    EXPECT_TRUE(error.starts_with(home.path_of("tovrikd.sqlite") + ": cannot be brought to"))
        << error;
    EXPECT_TRUE(error.ends_with("database or disk is full")) << error;
    EXPECT_TRUE(home.files().empty());
}

TEST_F(storage_on_a_full_disk, is_like_one_on_which_files_may_not_grow)
{
    ASSERT_EQ(kept.open(home.path(), nothing_to_prepare), "");
    ASSERT_EQ(keep(next++), "");
    {
        const file_size_limit limit{200000};
        EXPECT_NE(keep_until_full(), "");
        expect_acknowledged();
    }
    EXPECT_EQ(keep(next++), "");
    expect_acknowledged();
    expect_whole_after_the_end();
}

} // namespace
