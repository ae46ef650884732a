// storage_services_test.cpp - what is kept for the services: updates, pagers, subscriptions.
#include "unit/storage_fixture.hpp"

#include "server/base/limits.hpp"
#include "server/protocol/packet.hpp"
#include "server/storage/kept_pagers.hpp"
#include "server/storage/kept_subscriptions.hpp"
#include "server/storage/kept_updates.hpp"
#include "server/storage/pager_hits.hpp"

#include <set>

namespace
{

using tovrik::pager_entry;
using tovrik::pager_owner;

class kept_updates : public storage_database
{
protected:
    bool keep(std::uint32_t kind, std::string_view text)
    {
        bool is_kept = false;
        EXPECT_EQ(update_keep(in, kind, text, is_kept), "");
        return is_kept;
    }
    /// All entries, the fields of each joined by "|".
    std::vector<std::string> entries()
    {
        tovrik::reference_data reference;
        EXPECT_EQ(updates_read(in, reference), "");
        std::vector<std::string> texts;
        for (const auto& entry : reference.entries()) {
            std::string text = std::to_string(entry.kind);
            for (const auto& field : entry.fields)
                text += "|" + field;
            texts.push_back(text);
        }
        return texts;
    }
};

TEST_F(kept_updates, of_all_kinds_are_there_at_the_next_start)
{
    EXPECT_TRUE(keep(tovrik::kind::add_airline, "LH\tLufthansa"));
    EXPECT_TRUE(keep(tovrik::kind::add_flight, "LH0400\tFRA-JFK\t\tXXXXX--"));
    EXPECT_TRUE(keep(tovrik::kind::add_aircraft, "D-AIQA\tAirbus\tA320\t211\t\tLH\tDLH\t\t"));
    EXPECT_TRUE(keep(tovrik::kind::add_airport, "FRA\tFrankfurt"));
    EXPECT_TRUE(keep(tovrik::kind::add_label, "H1\tPrinter"));
    open_again();
    EXPECT_EQ(entries(), (std::vector<std::string>{"30|LH0400|FRA-JFK||XXXXX--", "31|LH|Lufthansa",
                                                   "33|FRA|Frankfurt", "34|H1|Printer",
                                                   "38|D-AIQA|Airbus|A320|211||LH|DLH||"}));
}

TEST_F(kept_updates, replace_those_of_the_same_name)
{
    EXPECT_TRUE(keep(tovrik::kind::add_airline, "LH\tFirst"));
    EXPECT_TRUE(keep(tovrik::kind::add_airline, "lh\tSecond"));
    EXPECT_TRUE(keep(tovrik::kind::add_airport, "LH\tOf another kind"));
    EXPECT_TRUE(keep(tovrik::kind::add_flight, "LH0400\tFRA-JFK\t\tXXXXX--"));
    EXPECT_TRUE(keep(tovrik::kind::add_flight, "LH400\tJFK-FRA\t\tXXXXX--"));
    EXPECT_EQ(entries(), (std::vector<std::string>{"30|LH400|JFK-FRA||XXXXX--", "31|lh|Second",
                                                   "33|LH|Of another kind"}));
}

TEST_F(kept_updates, make_sense)
{
    EXPECT_FALSE(keep(tovrik::kind::add_airline, "LH"));
    EXPECT_FALSE(keep(tovrik::kind::add_airline, ""));
    EXPECT_FALSE(keep(1, "LH\tLufthansa"));
    EXPECT_FALSE(keep(tovrik::kind::add_airline, "LH\tA\nB"));
    EXPECT_TRUE(entries().empty());
}

TEST_F(kept_updates, hold_texts_that_would_do_harm_as_sql)
{
    EXPECT_TRUE(keep(tovrik::kind::add_airline, "'; DROP TABLE\t\"); DELETE FROM updates; --"));
    EXPECT_TRUE(keep(tovrik::kind::add_airline, "\xC4\xFF\t\xA0?1"));
    EXPECT_EQ(entries(), (std::vector<std::string>{"31|'; DROP TABLE|\"); DELETE FROM updates; --",
                                                   "31|\xC4\xFF|\xA0?1"}));
}

TEST_F(kept_updates, have_a_limit_that_does_not_stop_replacing)
{
    tovrik::transaction together{in, tovrik::transaction_use::writing};
    for (std::size_t i = 0; i < tovrik::max_reference_entries; ++i)
        ASSERT_TRUE(keep(tovrik::kind::add_airport, std::to_string(i) + "\tPlace"));
    EXPECT_FALSE(keep(tovrik::kind::add_airport, "X\tPlace"));
    EXPECT_TRUE(keep(tovrik::kind::add_airport, "7\tOther"));
    EXPECT_EQ(together.commit(), "");
    EXPECT_EQ(entries().size(), tovrik::max_reference_entries);
}

class kept_pagers : public storage_database
{
protected:
    bool keep(const pager_owner& owner, const pager_entry& entry)
    {
        bool is_kept = false;
        EXPECT_EQ(pager_keep(in, owner, entry, is_kept), "");
        return is_kept;
    }
    std::size_t remove(const pager_owner& owner, const pager_entry& pattern)
    {
        std::size_t removed = 99;
        EXPECT_EQ(pager_remove(in, owner, pattern, removed), "");
        return removed;
    }
    std::vector<pager_entry> list(const pager_owner& owner)
    {
        tovrik::pager_lists lists;
        EXPECT_EQ(pagers_read(in, lists), "");
        return lists.list(owner);
    }
    void keep_hit(const pager_owner& owner, std::int64_t id, std::time_t moment,
                  const std::string& text)
    {
        EXPECT_EQ(pager_hits_keep(in, {{owner, {id, moment, text}}}), "");
    }
    std::vector<tovrik::owned_hit> hits(std::time_t since)
    {
        std::vector<tovrik::owned_hit> found;
        EXPECT_EQ(pager_hits_read(in, since, found, last_hit), "");
        return found;
    }

    std::int64_t last_hit = -1;
    pager_owner me{"me@example.org", 17};
    pager_owner same_address{"me@example.org", 18};
};

TEST_F(kept_pagers, are_there_at_the_next_start_in_their_order)
{
    const std::vector<pager_entry> entries = {
        {"D-AIQA", "", ""}, {"", "LH400", ""}, {"", "", "JFK"}, {"A*", "?", "_"}};
    for (const pager_entry& entry : entries)
        EXPECT_TRUE(keep(me, entry));
    EXPECT_TRUE(keep(same_address, {"X", "", ""}));
    EXPECT_TRUE(keep(me, entries[1])) << "it stays where it is";
    open_again();
    EXPECT_EQ(list(me), entries);
    EXPECT_EQ(list(same_address), (std::vector<pager_entry>{{"X", "", ""}}));
    EXPECT_EQ(remove(me, entries[0]), 1U);
    EXPECT_TRUE(keep(me, entries[0]));
    EXPECT_EQ(list(me).back(), entries[0]) << "a new entry is the last one";
}

TEST_F(kept_pagers, have_the_rules_of_pager_lists)
{
    tovrik::pager_lists lists;
    std::vector<pager_entry> entries = {{"", "", ""},
                                        {"a~b", "", ""},
                                        {"^a", "", ""},
                                        {"a\tb", "", ""},
                                        {"'; DROP TABLE pager_owners; --", "", ""},
                                        {"\xFF\xA0", "\xC4", "x"}};
    entries.push_back({std::string(tovrik::max_pager_field_bytes, 'x'), "", ""});
    entries.push_back({std::string(tovrik::max_pager_field_bytes + 1, 'x'), "", ""});
    for (const pager_entry& entry : entries)
        EXPECT_EQ(keep(me, entry), lists.add(me, entry)) << entry.registration;
    EXPECT_EQ(list(me), lists.list(me));
    EXPECT_EQ(list(me).size(), 3U);
    for (const pager_entry& pattern :
         {pager_entry{"", "", ""}, {"?*", "", ""}, {"*", "*", "*"}, {"*", "*", "*"}})
        EXPECT_EQ(remove(me, pattern), lists.remove(me, pattern)) << pattern.registration;
    EXPECT_TRUE(list(me).empty());
}

TEST_F(kept_pagers, have_limits)
{
    tovrik::transaction together{in, tovrik::transaction_use::writing};
    for (std::size_t i = 0; i < tovrik::max_pager_entries; ++i)
        ASSERT_TRUE(keep(me, {std::to_string(i), "", ""}));
    EXPECT_FALSE(keep(me, {"one more", "", ""}));
    EXPECT_TRUE(keep(me, {"7", "", ""})) << "it is there already";
    for (std::size_t i = 1; i < tovrik::max_pager_lists; ++i)
        ASSERT_TRUE(keep({std::to_string(i), 0}, {"X", "", ""}));
    EXPECT_FALSE(keep(same_address, {"X", "", ""}));
    EXPECT_TRUE(keep({"7", 0}, {"Y", "", ""}));
    EXPECT_EQ(remove(me, {"*", "*", "*"}), tovrik::max_pager_entries);
    EXPECT_TRUE(keep(same_address, {"X", "", ""})) << "an empty list makes room";
    EXPECT_EQ(together.commit(), "");
}

TEST_F(kept_pagers, have_hits_that_are_told_once)
{
    ASSERT_TRUE(keep(me, {"D-AIQA", "", ""}));
    ASSERT_TRUE(keep(same_address, {"X", "", ""}));
    EXPECT_TRUE(hits(0).empty());
    EXPECT_EQ(last_hit, 0);
    keep_hit(me, 1, 100, "too old");
    std::vector<tovrik::owned_hit> kept;
    for (const std::string& text : hostile_texts)
        kept.push_back({me, {static_cast<std::int64_t>(kept.size()) + 2, 200, text}});
    EXPECT_EQ(pager_hits_keep(in, kept), "");
    EXPECT_EQ(pager_hits_keep(in, kept), "") << "they are there already";
    keep_hit(same_address, 90, 200, "of the other one");
    open_again();
    auto found = hits(200);
    ASSERT_EQ(found.size(), kept.size() + 1);
    EXPECT_EQ(found.back().owner, same_address);
    EXPECT_EQ(last_hit, 90);
    found.pop_back();
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].owner, me);
        EXPECT_EQ(found[i].hit, kept[i].hit);
    }
    EXPECT_EQ(pager_hits_tell(in, {3, 90}), "");
    EXPECT_EQ(hits(200).size(), kept.size() - 1);
    EXPECT_EQ(last_hit, 90) << "its number is not used again";
}

TEST_F(kept_pagers, have_hits_that_are_bounded_and_forgotten)
{
    ASSERT_TRUE(keep(me, {"D-AIQA", "", ""}));
    ASSERT_TRUE(keep(same_address, {"X", "", ""}));
    keep_hit(same_address, 1, 1, "of the other one");
    constexpr auto limit = static_cast<std::int64_t>(tovrik::max_pager_hits);
    for (std::int64_t i = 0; i < limit + 3; ++i)
        keep_hit(me, i + 2, i, std::to_string(i));
    const auto found = hits(0);
    ASSERT_EQ(found.size(), tovrik::max_pager_hits + 1);
    EXPECT_EQ(found[0].owner, same_address);
    EXPECT_EQ(found[1].hit.text, "3");
    EXPECT_EQ(pager_hits_forget(in, 50), "");
    EXPECT_EQ(hits(0).front().hit.text, "50");
    EXPECT_EQ(remove(me, {"*", "*", "*"}), 1U);
    EXPECT_EQ(number_in(in, "SELECT count(*) FROM pager_hits"), 0) << "gone with their list";
    keep_hit(me, 999, 60, "of a list that is gone");
    EXPECT_EQ(number_in(in, "SELECT count(*) FROM pager_hits"), 0);
}

class kept_subscriptions : public storage_database
{
protected:
    static constexpr std::int64_t today = 20000;

    tovrik::subscription_result keep(const std::string& address)
    {
        auto result = tovrik::subscription_result::full;
        EXPECT_EQ(subscription_keep(in, address, today, kept, result), "");
        return result;
    }
    tovrik::mail_subscription read(const std::string& address)
    {
        tovrik::mail_subscription found{.address = "old"};
        EXPECT_EQ(subscription_read(in, address, found), "");
        return found;
    }
    std::vector<std::string> due(std::int64_t day)
    {
        std::vector<tovrik::mail_subscription> found;
        EXPECT_EQ(subscriptions_due(in, day, found), "");
        std::vector<std::string> addresses;
        for (const auto& each : found)
            addresses.push_back(each.address);
        return addresses;
    }

    tovrik::mail_subscription kept;
};

TEST_F(kept_subscriptions, keep_their_random_code)
{
    std::set<std::uint16_t> codes;
    for (const std::string& text : hostile_texts) {
        EXPECT_EQ(keep(text), tovrik::subscription_result::made);
        EXPECT_EQ(kept.address, text);
        EXPECT_NE(kept.code, 0);
        codes.insert(kept.code);
    }
    EXPECT_GT(codes.size(), 3U);
    open_again();
    for (const std::string& text : hostile_texts) {
        const auto found = read(text);
        EXPECT_EQ(keep(text), tovrik::subscription_result::known);
        EXPECT_EQ(kept.code, found.code);
        EXPECT_EQ(codes.count(kept.code), 1U);
    }
    EXPECT_EQ(read("nobody").code, 0);
    EXPECT_EQ(read("nobody").address, "");
}

TEST_F(kept_subscriptions, keep_their_style)
{
    EXPECT_EQ(keep("me"), tovrik::subscription_result::made);
    EXPECT_EQ(kept.style, 0U);
    const struct {
        const char* address;
        unsigned style;
        bool is_kept;
    } rows[] = {{"me", 2, true}, {"me", 3, false}, {"me", 4294967295, false}, {"you", 1, false}};
    for (const auto& row : rows) {
        bool is_kept = !row.is_kept;
        EXPECT_EQ(subscription_set_style(in, row.address, row.style, is_kept), "");
        EXPECT_EQ(is_kept, row.is_kept) << row.address << row.style;
    }
    EXPECT_EQ(keep("me"), tovrik::subscription_result::known);
    EXPECT_EQ(kept.style, 2U) << "subscribing again does not change it";
}

TEST_F(kept_subscriptions, are_due_once_a_day)
{
    EXPECT_EQ(keep("me"), tovrik::subscription_result::made);
    EXPECT_EQ(keep("you"), tovrik::subscription_result::made);
    EXPECT_TRUE(due(today - 1).empty()) << "it was before they subscribed";
    EXPECT_EQ(due(today).size(), 2U);
    EXPECT_EQ(subscription_mailed(in, "me", today), "");
    open_again();
    EXPECT_EQ(due(today), std::vector<std::string>{"you"});
    EXPECT_EQ(due(today + 1).size(), 2U);
    EXPECT_EQ(subscription_mailed(in, "me", today - 5), "");
    EXPECT_EQ(read("me").mailed_day, today) << "an earlier day changes nothing";
}

TEST_F(kept_subscriptions, have_a_limit)
{
    tovrik::transaction together{in, tovrik::transaction_use::writing};
    for (std::size_t i = 0; i < tovrik::max_subscriptions; ++i)
        ASSERT_EQ(keep(std::to_string(i)), tovrik::subscription_result::made);
    EXPECT_EQ(keep("one more"), tovrik::subscription_result::full);
    EXPECT_EQ(keep("7"), tovrik::subscription_result::known);
    EXPECT_EQ(together.commit(), "");
    std::size_t count = 0;
    EXPECT_EQ(subscriptions_count(in, count), "");
    EXPECT_EQ(count, tovrik::max_subscriptions);
}

} // namespace
