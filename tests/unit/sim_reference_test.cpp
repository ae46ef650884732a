// sim_reference_test.cpp - what clients add to the practice server's database, and its use.
#include "server/base/limits.hpp"
#include "server/practice/feed.hpp"
#include "server/storage/reference_use.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

constexpr std::time_t thursday = 1752148020; // 10 July 2025

tovrik::transmission message_of(const char* flight_number)
{
    return {.registration = "D-AIQA",
            .label = "H1",
            .block_id = "7",
            .flight_number = flight_number,
            .content = std::string{"ABOUT "} + flight_number,
            .from = "FRA",
            .to = "JFK",
            .aircraft = "Airbus A320-211",
            .operator_name = "Lufthansa",
            .time = thursday};
}

TEST(sim_reference, takes_requests_with_the_right_fields_only)
{
    const struct {
        std::uint32_t kind;
        const char* text;
        bool right;
    } rows[] = {
        {31, "LH\tLufthansa", true},
        {31, "LH", false},
        {31, "LH\tLufthansa\t", false},
        {31, "\tLufthansa", false},
        {31, "LH\t", false},
        {31, "LH\t  ", false},
        {31, "", false},
        {31, "LH\tLuft\nhansa", false},
        {30, "LH400\tFRA-JFK\t\tXXXXXXX", true},
        {30, "LH400\tFRA-JFK\tdaily\t-X----X", true},
        {30, "LH400\tFRA-JFK\t\t", false},
        {30, "LH400\tFRA-JFK\t\tXXXXXX", false},
        {30, "LH400\tFRA-JFK\t\tYXXXXXX", false},
        {30, "LH400\t\t\tXXXXXXX", false},
        {30, "LH400\tFRA-JFK\tXXXXXXX", false},
        {38, "D-AIQA\tAirbus\tA320\tA320-211\t\t\t\t\t", true},
        {38, "D-AIQA\tAirbus\tA320\t\t\t\t\t\t", false},
        {38, "D-AIQA\tAirbus\tA320\tA320-211\t\t\t\t", false},
        {38, "D-AIQA\tAirbus\tA320\tA320-211\t\t\t\t\t\t", false},
        {33, "FRA\tFrankfurt, Germany", true},
        {33, "FRA\t", false},
        {34, "Q0\tLink test", true},
        {34, "Q0", false},
        {32, "Q0\tLink test", false},
    };
    for (const auto& row : rows) {
        tovrik::reference_data reference;
        EXPECT_EQ(reference.add(row.kind, row.text), row.right) << row.kind << " " << row.text;
        EXPECT_EQ(reference.size(), row.right ? 1U : 0U);
    }
    tovrik::reference_data reference;
    EXPECT_TRUE(reference.add(31, "LH\t" + std::string(tovrik::max_field_bytes, 'x')));
    EXPECT_FALSE(reference.add(31, "LX\t" + std::string(tovrik::max_field_bytes + 1, 'x')));
}

TEST(sim_reference, replaces_what_has_the_same_name_and_ends_at_its_bound)
{
    tovrik::reference_data reference;
    for (std::size_t i = 0; i < tovrik::max_reference_entries; ++i)
        ASSERT_TRUE(reference.add(31, "A" + std::to_string(i) + "\tname"));
    EXPECT_FALSE(reference.add(31, "B\tname"));
    EXPECT_TRUE(reference.add(31, "a7\tother")) << "one in the place of another";
    EXPECT_EQ(reference.size(), tovrik::max_reference_entries);
    EXPECT_EQ(reference.find(31, "A7")->fields[1], "other");
    EXPECT_EQ(reference.find(33, "A7"), nullptr);
}

TEST(sim_reference, names_the_operator_of_an_airlines_flights)
{
    tovrik::reference_data reference;
    ASSERT_TRUE(reference.add(31, "LH\tHansa of the Air"));
    ASSERT_TRUE(reference.add(31, "DLH\tThe Long Code"));
    ASSERT_TRUE(reference.add(31, "L\tToo short"));
    const struct {
        const char* flight;
        const char* name;
    } rows[] = {{"LH0400", "Hansa of the Air"}, {"lh1", "Hansa of the Air"},
                {"DLH0400", "The Long Code"},   {"LHX", "Lufthansa"},
                {"BA0117", "Lufthansa"},        {"", "Lufthansa"}};
    for (const auto& row : rows) {
        auto message = message_of(row.flight);
        apply_reference(message, reference);
        EXPECT_EQ(message.operator_name, row.name) << row.flight;
    }
}

TEST(sim_reference, routes_a_flight_on_its_days)
{
    const struct {
        const char* text;
        const char* route;
    } rows[] = {{"LH400\tMUC-DXB-SIN\t\tXXXXXXX", "MUC-SIN"},
                {"LH400\tMUC-SIN\t\t---X---", "MUC-SIN"},
                {"LH400\tMUC-SIN\t\t-XX-XX-", "FRA-JFK"},
                {"LH400\tMUC\t\tXXXXXXX", "MUC-"},
                {"LH401\tMUC-SIN\t\tXXXXXXX", "FRA-JFK"}};
    for (const auto& row : rows) {
        tovrik::reference_data reference;
        ASSERT_TRUE(reference.add(30, row.text));
        auto message = message_of("LH0400");
        apply_reference(message, reference);
        EXPECT_EQ(message.from + "-" + message.to, row.route) << row.text;
    }
}

TEST(sim_reference, describes_aircraft_with_the_operator_that_its_codes_name)
{
    const struct {
        const char* codes;
        const char* name;
    } rows[] = {{"\t", "Lufthansa"},
                {"BA\t", "British Airways"},
                {"\tNEW", "New Wings"},
                {"??\tNEW", "New Wings"},
                {"BA\tNEW", "British Airways"}};
    for (const auto& row : rows) {
        tovrik::reference_data reference;
        ASSERT_TRUE(reference.add(31, "NEW\tNew Wings"));
        ASSERT_TRUE(reference.add(38, "d-aiqa\tBoeing\tB737\tB737-5K5\t\t" +
                                          std::string{row.codes} + "\t\t"));
        auto message = message_of("LH0400");
        apply_reference(message, reference);
        EXPECT_EQ(message.aircraft, "Boeing B737-5K5");
        EXPECT_EQ(message.operator_name, row.name) << row.codes;
    }
}

TEST(sim_reference, describes_labels_first_for_the_airline)
{
    tovrik::reference_data reference;
    ASSERT_TRUE(reference.add(34, "H1\tAny airline's"));
    ASSERT_TRUE(reference.add(34, "H1LH\tLufthansa's"));
    auto message = message_of("LH0400");
    apply_reference(message, reference);
    EXPECT_EQ(message.label, "H1 [Lufthansa's]");
    message = message_of("BA0117");
    apply_reference(message, reference);
    EXPECT_EQ(message.label, "H1 [Any airline's]");
}

TEST(sim_reference, names_airports)
{
    tovrik::reference_data reference;
    ASSERT_TRUE(reference.add(33, "FRA\tFrankfurt, Germany"));
    EXPECT_EQ(tovrik::airport_text("fra", reference), "fra (Frankfurt, Germany)");
    EXPECT_EQ(tovrik::airport_text("JFK", reference), "JFK");
}

/// Messages of a feed of made-up traffic.
std::vector<tovrik::transmission> heard(const tovrik::reference_data& reference, int count)
{
    tovrik::server_options options;
    options.fixed_time = thursday;
    tovrik::feed feed{options, reference};
    std::vector<tovrik::transmission> messages;
    for (int i = 0; i < count; ++i) {
        auto message = std::get<tovrik::transmission>(feed.next(thursday));
        apply_reference(message, reference);
        messages.push_back(std::move(message));
    }
    return messages;
}

TEST(sim_reference, soon_shows_in_the_traffic)
{
    tovrik::reference_data reference;
    ASSERT_TRUE(reference.add(31, "ZZ\tZeppelin Lines"));
    ASSERT_TRUE(reference.add(30, "ZY77\tFDH-NYC\t\tXXXXXXX"));
    ASSERT_TRUE(reference.add(38, "D-LZ129\tZeppelin\tLZ\tLZ 129\t\tZZ\t\t\t"));
    ASSERT_TRUE(reference.add(33, "FDH\tFriedrichshafen, Germany"));
    ASSERT_TRUE(reference.add(34, "Z9\tAirship talk"));
    const auto messages = heard(reference, 400);
    const auto count = [&messages](auto wanted) {
        return std::count_if(messages.begin(), messages.end(), wanted);
    };
    EXPECT_GT(count([](const auto& m) { return m.operator_name == "Zeppelin Lines"; }), 1);
    EXPECT_GT(count([](const auto& m) {
                  return m.flight_number == "ZY77" && m.from == "FDH" && m.to == "NYC";
              }),
              1);
    EXPECT_GT(count([](const auto& m) {
                  return m.registration == "D-LZ129" && m.aircraft == "Zeppelin LZ 129";
              }),
              1);
    EXPECT_GT(count([](const auto& m) { return m.to == "FDH"; }), 1);
    EXPECT_GT(count([](const auto& m) { return m.label == "Z9 [Airship talk]"; }), 1);
    EXPECT_GT(count([](const auto& m) {
                  return m.content.find(m.flight_number) != std::string::npos &&
                         m.flight_number.starts_with("Z");
              }),
              0)
        << "a text names the flight that it is about";
}

TEST(sim_reference, without_entries_leaves_the_traffic_as_it_was)
{
    tovrik::traffic_generator traffic{1};
    for (const auto& message : heard({}, 200))
        ASSERT_EQ(transmission_xml(message), transmission_xml(traffic.next(thursday)));
}

} // namespace
