// storage_messages_test.cpp - the archive of messages, its counts, and its reports.
#include "unit/storage_fixture.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/storage/calendar_day.hpp"
#include "server/storage/day_report.hpp"
#include "server/storage/kept_messages.hpp"
#include "server/storage/message_archive.hpp"
#include "unit/sim_sample_message.hpp"

#include <limits>
#include <numeric>
#include <sstream>

namespace
{

using tovrik::seconds_per_day;
using tovrik::seconds_per_hour;
using tovrik::transmission_xml;

/// 10 July 2025, 00:00 UTC.
constexpr std::time_t midnight = sample_time - sample_time % seconds_per_day;

class kept_messages : public storage_database
{
protected:
    void keep(const tovrik::transmission& message, std::time_t received)
    {
        EXPECT_EQ(message_keep(in, message, received), "");
    }
    void keep_many(std::size_t count, std::time_t received)
    {
        tovrik::transaction together{in, tovrik::transaction_use::writing};
        for (std::size_t i = 0; i < count; ++i)
            keep({.registration = "D-MANY", .flight_number = "LH" + std::to_string(i + 1)},
                 received);
        EXPECT_EQ(together.commit(), "");
    }
    std::vector<tovrik::kept_message> between(std::time_t begin, std::time_t end)
    {
        std::vector<tovrik::kept_message> found;
        EXPECT_EQ(messages_visit(in, begin, end,
                                 [&found](const tovrik::kept_message& kept) {
                                     found.push_back(kept);
                                     return true;
                                 }),
                  "");
        return found;
    }
    std::vector<tovrik::kept_message> all()
    {
        return between(std::numeric_limits<std::time_t>::min(),
                       std::numeric_limits<std::time_t>::max());
    }
    std::uint64_t total()
    {
        std::uint64_t count = 99;
        EXPECT_EQ(messages_count(in, count), "");
        return count;
    }
    std::uint32_t contacts(const std::string& registration)
    {
        std::uint32_t count = 99;
        EXPECT_EQ(contacts_count(in, registration, count), "");
        return count;
    }
    std::uint32_t flights(std::time_t moment)
    {
        std::uint32_t count = 99;
        EXPECT_EQ(flights_count(in, tovrik::day_number(moment), count), "");
        return count;
    }
    std::size_t forget(std::time_t before)
    {
        std::vector<std::string> forgotten{"of another time"};
        EXPECT_EQ(messages_forget(in, before, forgotten), "");
        return forgotten.size();
    }
    std::vector<std::string> report(const tovrik::day_report_request& request,
                                    const tovrik::reference_data& reference = {})
    {
        std::vector<std::string> parts;
        EXPECT_EQ(day_report_make(in, request, reference,
                                  [&parts](std::string part) { parts.push_back(std::move(part)); }),
                  "");
        return parts;
    }
};

TEST_F(kept_messages, come_back_with_all_that_is_known)
{
    auto message = sample_message();
    message.contacts = 4000000000;
    message.daily_flights = 17;
    message.heard = {.link = tovrik::message_link::inmarsat,
                     .station = "roof",
                     .frequency_mhz = 131.725,
                     .level_db = -12.5,
                     .continues = true};
    keep(message, sample_time + 2);
    keep({}, sample_time + 3);
    open_again();
    const auto found = all();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_LT(found[0].id, found[1].id);
    EXPECT_EQ(found[0].received, sample_time + 2);
    EXPECT_EQ(transmission_xml(found[0].message), transmission_xml(message));
    EXPECT_EQ(found[0].message.time, sample_time);
    const auto& heard = found[0].message.heard;
    EXPECT_EQ(heard.link, tovrik::message_link::inmarsat);
    EXPECT_EQ(heard.station, "roof");
    EXPECT_EQ(heard.frequency_mhz, 131.725);
    EXPECT_EQ(heard.level_db, -12.5);
    EXPECT_TRUE(heard.continues);
    EXPECT_EQ(transmission_xml(found[1].message), transmission_xml({}));
    EXPECT_EQ(found[1].message.heard.level_db, -999);
    EXPECT_FALSE(found[1].message.heard.continues);
}

TEST_F(kept_messages, hold_any_text_in_any_place)
{
    constexpr std::string tovrik::transmission::*members[] = {&tovrik::transmission::mode,
                                                              &tovrik::transmission::registration,
                                                              &tovrik::transmission::label,
                                                              &tovrik::transmission::block_id,
                                                              &tovrik::transmission::message_number,
                                                              &tovrik::transmission::flight_number,
                                                              &tovrik::transmission::content,
                                                              &tovrik::transmission::from,
                                                              &tovrik::transmission::to,
                                                              &tovrik::transmission::aircraft,
                                                              &tovrik::transmission::operator_name};
    std::vector<tovrik::transmission> written;
    for (const std::string& text : hostile_texts) {
        tovrik::transmission message{.heard = {.station = text}};
        for (const auto member : members)
            message.*member = text;
        keep(message, sample_time);
        written.push_back(message);
        EXPECT_EQ(contacts(text), 1U);
    }
    const auto found = all();
    ASSERT_EQ(found.size(), written.size());
    for (std::size_t i = 0; i < written.size(); ++i) {
        for (const auto member : members)
            EXPECT_EQ(found[i].message.*member, written[i].*member);
        EXPECT_EQ(found[i].message.heard.station, written[i].heard.station);
    }
}

TEST_F(kept_messages, hold_numbers_that_are_none)
{
    tovrik::transmission message;
    message.heard.frequency_mhz = std::numeric_limits<double>::quiet_NaN();
    message.heard.level_db = std::numeric_limits<double>::infinity();
    keep(message, sample_time);
    EXPECT_EQ(all().at(0).message.heard.frequency_mhz, 0);
    EXPECT_EQ(all().at(0).message.heard.level_db, 0);
}

TEST_F(kept_messages, are_found_by_the_moments_of_their_reception)
{
    for (const int second : {5, 3, 4, 3})
        keep({.registration = std::to_string(second)}, sample_time + second);
    std::string order;
    for (const auto& kept : between(sample_time + 3, sample_time + 5))
        order += kept.message.registration;
    EXPECT_EQ(order, "334");
    int seen = 0;
    EXPECT_EQ(messages_visit(in, sample_time, sample_time + 9,
                             [&seen](const tovrik::kept_message&) { return ++seen < 2; }),
              "");
    EXPECT_EQ(seen, 2);
}

TEST_F(kept_messages, are_counted)
{
    EXPECT_EQ(total(), 0U);
    EXPECT_EQ(contacts("D-AIQA"), 0U);
    for (const char* registration : {"D-AIQA", "D-AIQA", "D-AIQB", ""})
        keep({.registration = registration}, sample_time);
    open_again();
    EXPECT_EQ(total(), 4U);
    EXPECT_EQ(contacts("D-AIQA"), 2U);
    EXPECT_EQ(contacts("D-AIQB"), 1U);
    EXPECT_EQ(contacts(""), 0U) << "an aircraft that is not known";
    std::map<std::string, std::uint32_t> read;
    EXPECT_EQ(contacts_read(in, 10, read), "");
    EXPECT_EQ(read, (std::map<std::string, std::uint32_t>{{"D-AIQA", 2}, {"D-AIQB", 1}}));
    read.clear();
    EXPECT_EQ(contacts_read(in, 1, read), "");
    EXPECT_EQ(read.begin()->first, "D-AIQA") << "the one with the most";
    EXPECT_EQ(read.size(), 1U);
}

TEST_F(kept_messages, are_of_different_flights_on_each_day)
{
    for (const char* flight : {"LH0400", "lh400", "LH401", "", "AF1"})
        keep({.flight_number = flight}, midnight);
    keep({.flight_number = "LH400"}, midnight + seconds_per_day - 1);
    keep({.flight_number = "LH400"}, midnight + seconds_per_day);
    EXPECT_EQ(flights(midnight), 3U);
    EXPECT_EQ(flights(midnight + seconds_per_day), 1U);
    EXPECT_EQ(flights(midnight - 1), 0U);
    std::set<std::string> read;
    EXPECT_EQ(flights_read(in, tovrik::day_number(midnight), 10, read), "");
    EXPECT_EQ(read, (std::set<std::string>{"LH400", "LH401", "AF1"}));
    read.clear();
    EXPECT_EQ(flights_read(in, tovrik::day_number(midnight), 2, read), "");
    EXPECT_EQ(read.size(), 2U);
}

TEST_F(kept_messages, are_counted_by_the_hour)
{
    constexpr std::time_t now = midnight + 5 * seconds_per_hour + 10;
    keep({}, now);
    keep({}, now - 10);
    keep({}, now - 11);
    keep({}, now - 23 * seconds_per_hour);
    keep({}, now - 24 * seconds_per_hour);
    keep({}, now + seconds_per_hour);
    std::array<std::uint64_t, 24> hours;
    hours.fill(99);
    EXPECT_EQ(hours_read(in, now, hours), "");
    EXPECT_EQ(hours[23], 2U);
    EXPECT_EQ(hours[22], 1U);
    EXPECT_EQ(hours[0], 1U);
    EXPECT_EQ(std::accumulate(hours.begin(), hours.end(), std::uint64_t{0}), 4U);
}

TEST_F(kept_messages, are_forgotten_with_their_counts)
{
    keep({.registration = "D-OLD", .flight_number = "LH1"}, midnight - 1);
    keep({.registration = "D-BOTH", .flight_number = "LH2"}, midnight - 1);
    keep({.registration = "D-BOTH", .flight_number = "LH3"}, midnight);
    EXPECT_EQ(forget(midnight), 2U);
    EXPECT_EQ(total(), 1U);
    EXPECT_EQ(contacts("D-OLD"), 0U);
    EXPECT_EQ(contacts("D-BOTH"), 1U);
    EXPECT_EQ(flights(midnight - 1), 0U);
    EXPECT_EQ(flights(midnight), 1U);
    EXPECT_EQ(all().at(0).received, midnight);
    EXPECT_EQ(forget(midnight), 0U);
    EXPECT_EQ(forget(midnight + 1), 1U);
    EXPECT_EQ(
        number_in(in, "SELECT (SELECT count(*) FROM contacts) + (SELECT count(*) FROM hours)"), 0);
}

TEST_F(kept_messages, are_forgotten_a_slice_at_a_time)
{
    constexpr std::size_t slice = tovrik::max_forgotten_messages;
    keep_many(slice + 5, midnight - 1);
    keep_many(3, midnight + 1);
    tovrik::transaction together{in, tovrik::transaction_use::writing};
    EXPECT_EQ(forget(midnight), slice);
    EXPECT_EQ(total(), 8U);
    EXPECT_EQ(flights(midnight - 1), 5U);
    EXPECT_EQ(forget(midnight), 5U);
    EXPECT_EQ(flights(midnight - 1), 0U);
    EXPECT_EQ(contacts("D-MANY"), 3U);
    EXPECT_EQ(together.commit(), "");
}

TEST_F(kept_messages, make_the_report_of_a_day_that_begins_anywhere)
{
    tovrik::reference_data reference;
    ASSERT_TRUE(reference.add(33, "FRA\tFrankfurt, Germany"));
    constexpr std::time_t begin = midnight - 5400; // half past ten in the evening
    for (const std::time_t received :
         {begin - 1, begin, begin + seconds_per_day - 1, begin + seconds_per_day})
        keep(sample_message("D-" + std::to_string(received - begin)), received);
    const auto parts = report({begin, "Home", 10000}, reference);
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_EQ(parts[0], "Messages of 10/07/2025 from Home\n"
                        "2 messages. Times are UTC.\n\n"
                        "11:47  D-0  Airbus A320-211  Lufthansa\n"
                        "       Flight LH0400  FRA (Frankfurt, Germany) - JFK\n"
                        "       Mode 2  Label H1  Block 7  Message M07A\n"
                        "       LINE ONE\n"
                        "       LINE TWO\n\n"
                        "11:47  D-86399  Airbus A320-211  Lufthansa\n"
                        "       Flight LH0400  FRA (Frankfurt, Germany) - JFK\n"
                        "       Mode 2  Label H1  Block 7  Message M07A\n"
                        "       LINE ONE\n"
                        "       LINE TWO\n\n");
    EXPECT_TRUE(report({begin - 2 * seconds_per_day, "Home", 10000}).empty());
}

TEST_F(kept_messages, make_reports_like_those_of_the_archive_in_memory)
{
    tovrik::message_archive archive;
    for (const char* registration : {"D-AIQA", "D-AIQB"}) {
        keep(sample_message(registration), sample_time);
        archive.add(sample_message(registration), sample_time, {});
    }
    EXPECT_EQ(report({midnight, "Home", 10000}).at(0), archive.report_of({10, 7, 2025}, "Home"));
}

TEST_F(kept_messages, make_reports_in_parts_that_have_every_message_once)
{
    constexpr std::size_t count = 1000;
    constexpr std::size_t part_bytes = 20000;
    tovrik::transaction together{in, tovrik::transaction_use::writing};
    for (std::size_t i = 0; i < count; ++i) {
        tovrik::transmission message{.registration = "D-" + std::to_string(i)};
        message.content = std::string(i % 90, 'x');
        keep(message, midnight + static_cast<std::time_t>(i));
    }
    EXPECT_EQ(together.commit(), "");
    const auto parts = report({midnight, "Home", part_bytes});
    ASSERT_GT(parts.size(), 3U);
    std::size_t next = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        EXPECT_LE(parts[i].size(), part_bytes);
        const std::size_t first = next;
        std::istringstream lines{parts[i]};
        std::string title;
        std::string counts;
        std::getline(lines, title);
        std::getline(lines, counts);
        EXPECT_EQ(title, "Messages of 10/07/2025 from Home, part " + std::to_string(i + 1) +
                             " of " + std::to_string(parts.size()));
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("--:--")) {
                EXPECT_EQ(line, "--:--  D-" + std::to_string(next++));
            }
        }
        EXPECT_EQ(counts, "1000 messages, " + std::to_string(next - first) +
                              " of them in this part. Times are UTC.");
        if (i + 1 < parts.size()) {
            EXPECT_GT(parts[i].size(), part_bytes - 500) << "parts are as large as may be";
        }
    }
    EXPECT_EQ(next, count);
}

TEST_F(kept_messages, of_any_length_get_into_a_report)
{
    for (int i = 0; i < 3; ++i)
        keep({.content = std::string(4000, 'x')}, midnight);
    const auto parts = report({midnight, "Home", 0});
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_GT(parts[1].size(), 4000U);
}

TEST(day_of_a_report, is_that_of_the_asker)
{
    const struct {
        int hours_east;
        tovrik::calendar_day day;
    } rows[] = {{0, {10, 7, 2025}},  {1, {10, 7, 2025}},  {-5, {10, 7, 2025}},
                {12, {10, 7, 2025}}, {13, {10, 7, 2025}}, {-10, {10, 7, 2025}}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::day_beginning_at(midnight - row.hours_east * seconds_per_hour), row.day)
            << row.hours_east;
}

TEST(day_number, counts_from_1970_in_both_directions)
{
    EXPECT_EQ(tovrik::day_number(0), 0);
    EXPECT_EQ(tovrik::day_number(86399), 0);
    EXPECT_EQ(tovrik::day_number(86400), 1);
    EXPECT_EQ(tovrik::day_number(-1), -1);
    EXPECT_EQ(tovrik::day_number(-86400), -1);
    EXPECT_EQ(tovrik::hour_number(-1), -1);
    EXPECT_EQ(tovrik::hour_number(7200), 2);
}

} // namespace
