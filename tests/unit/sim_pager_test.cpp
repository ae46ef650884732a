// sim_pager_test.cpp - the practice server's pager lists.
#include "server/storage/pager_lists.hpp"

#include "server/base/limits.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

const tovrik::pager_owner me{"me@here", 12};

TEST(sim_pager, keeps_a_list_for_every_address_and_code)
{
    tovrik::pager_lists lists;
    EXPECT_EQ(lists.size(), 0U);
    EXPECT_TRUE(lists.add(me, {"D-AIQA", "", ""}));
    EXPECT_TRUE(lists.add(me, {"", "LH400", "FRA"}));
    EXPECT_TRUE(lists.add(me, {"D-AIQA", "", ""})) << "already there";
    EXPECT_TRUE(lists.add({"me@here", 13}, {"", "BA117", ""}));
    EXPECT_TRUE(lists.add({"you@here", 12}, {"", "BA118", ""}));
    EXPECT_EQ(lists.list(me),
              (std::vector<tovrik::pager_entry>{{"D-AIQA", "", ""}, {"", "LH400", "FRA"}}));
    EXPECT_EQ(lists.list({"nobody", 12}), std::vector<tovrik::pager_entry>{});
}

TEST(sim_pager, refuses_what_it_could_not_list)
{
    tovrik::pager_lists lists;
    const std::string longest(tovrik::max_pager_field_bytes, 'x');
    const tovrik::pager_entry wrong[] = {{"", "", ""},     {"a~b", "", ""},
                                         {"", "^", ""},    {"", "", "^FRA"},
                                         {"a\tb", "", ""}, {longest + "x", "", ""}};
    for (const auto& entry : wrong)
        EXPECT_FALSE(lists.add(me, entry)) << entry.registration;
    EXPECT_EQ(lists.size(), 0U);
    EXPECT_TRUE(lists.add(me, {longest, longest, longest}));
}

TEST(sim_pager, bounds_lists_and_their_entries_so_that_the_longest_list_fits_a_packet)
{
    tovrik::pager_lists lists;
    for (std::size_t i = 0; i < tovrik::max_pager_entries; ++i) {
        std::string longest = std::to_string(i);
        longest.resize(tovrik::max_pager_field_bytes, 'x');
        ASSERT_TRUE(lists.add(me, {longest, longest, longest}));
    }
    EXPECT_FALSE(lists.add(me, {"one", "too", "many"}));
    EXPECT_LE(pager_list_text(lists.list(me)).size(), tovrik::max_text_bytes);

    for (std::size_t i = 1; i < tovrik::max_pager_lists; ++i)
        ASSERT_TRUE(lists.add({"you", static_cast<std::uint16_t>(i)}, {"D-AIQA", "", ""}));
    EXPECT_FALSE(lists.add({"they", 1}, {"D-AIQA", "", ""}));
    EXPECT_EQ(lists.remove({"you", 1}, {"*", "*", "*"}), 1U);
    EXPECT_TRUE(lists.add({"they", 1}, {"D-AIQA", "", ""})) << "an empty list makes room";
}

TEST(sim_pager, removes_what_matches)
{
    const struct {
        tovrik::pager_entry pattern;
        std::size_t count;
    } rows[] = {{{"D-AIQA", "", ""}, 1},  {{"d-aiqa", "", ""}, 1}, {{"D-AI??", "", ""}, 2},
                {{"D-AI*", "*", "*"}, 3}, {{"", "LH0400", ""}, 1}, {{"*", "*", "*"}, 5},
                {{"", "", ""}, 0},        {{"OE-*", "", ""}, 0},   {{"", "LH4__", "_RA"}, 1}};
    for (const auto& row : rows) {
        tovrik::pager_lists lists;
        for (const tovrik::pager_entry& entry :
             std::vector<tovrik::pager_entry>{{"D-AIQA", "", ""},
                                              {"D-AIQB", "", ""},
                                              {"D-AIQA", "LH400", ""},
                                              {"", "LH400", ""},
                                              {"", "LH400", "FRA"}})
            ASSERT_TRUE(lists.add(me, entry));
        EXPECT_EQ(lists.remove(me, row.pattern), row.count)
            << row.pattern.registration << "|" << row.pattern.flight_number;
        EXPECT_EQ(lists.list(me).size(), 5 - row.count);
        EXPECT_EQ(lists.remove({"you", 12}, row.pattern), 0U);
    }
}

TEST(sim_pager, hits_messages_that_all_given_fields_match)
{
    const tovrik::transmission message{
        .registration = "D-AIQA", .flight_number = "LH0400", .from = "FRA", .to = "JFK"};
    const struct {
        tovrik::pager_entry entry;
        bool hit;
    } rows[] = {{{"D-AIQA", "", ""}, true},        {{"D-A*", "LH400", "JFK"}, true},
                {{"D-A*", "LH400", "FRA"}, false}, {{"", "lh0400", ""}, true},
                {{"", "LH4*", ""}, true},          {{"", "", "jf?"}, true},
                {{"D-AIQB", "LH400", ""}, false},  {{"", "LH40", ""}, false}};
    for (const auto& row : rows) {
        tovrik::pager_lists lists;
        ASSERT_TRUE(lists.add(me, row.entry));
        EXPECT_EQ(lists.hits(message), row.hit ? std::vector<tovrik::pager_owner>{me}
                                               : std::vector<tovrik::pager_owner>{})
            << row.entry.registration << "|" << row.entry.flight_number;
        EXPECT_TRUE(lists.hits({}).empty()) << "nothing is known of this message";
    }
}

TEST(sim_pager, names_the_owners_of_all_lists_that_ask_for_a_message)
{
    tovrik::pager_lists lists;
    const tovrik::pager_owner other{"me@here", 13};
    for (const tovrik::pager_owner& owner : {other, me, tovrik::pager_owner{"you@here", 1}})
        ASSERT_TRUE(lists.add(owner, {owner.address == "me@here" ? "D-AIQA" : "D-AIQB", "", ""}));
    EXPECT_EQ(lists.hits({.registration = "D-AIQA"}),
              (std::vector<tovrik::pager_owner>{me, other}));
    EXPECT_TRUE(lists.has(other));
    EXPECT_EQ(lists.remove(other, {"*", "*", "*"}), 1U);
    EXPECT_FALSE(lists.has(other));
    EXPECT_EQ(lists.hits({.registration = "D-AIQA"}), std::vector<tovrik::pager_owner>{me});
}

TEST(sim_pager, writes_lists_as_clients_take_them)
{
    EXPECT_EQ(tovrik::pager_list_text({{"D-AIQA", "LH400", "FRA"}, {"", "BA117", ""}}),
              "D-AIQA\tFRA\tLH400~^\t^\tBA117");
    EXPECT_EQ(tovrik::pager_list_text({}), "^\t^\t^");
}

} // namespace
