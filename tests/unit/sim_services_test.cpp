// sim_services_test.cpp - the practice server's services, as clients ask for them.
#include "sim_raw_client.hpp"

#include "server/base/limits.hpp"
#include "server/messages/transmission.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

tovrik::server_options full_service()
{
    auto options = quick_server();
    options.capabilities.mailing = "1";
    options.capabilities.db_modify = "1";
    options.capabilities.pager = "1";
    options.capabilities.reports = "1";
    return options;
}

/// A running server with one client that has been welcomed.
class sim_services : public testing::Test
{
protected:
    void start(const tovrik::server_options& options)
    {
        server = std::make_unique<tovrik::practice_server>(options);
        ASSERT_TRUE(server->start());
        client = std::make_unique<sim_raw_client>(server->port());
        ASSERT_TRUE(client->receive());
    }

    server_packet answer_to(std::uint32_t kind, const std::string& text, std::uint16_t param1 = 0)
    {
        client->send_bytes(packet_bytes({.kind = kind, .payload = text, .param1 = param1}));
        const auto received = client->receive();
        EXPECT_TRUE(received) << kind;
        if (!received)
            return {};
        EXPECT_FALSE(received->payload.empty()) << "clients drop empty packets";
        return *received;
    }

    std::unique_ptr<tovrik::practice_server> server;
    std::unique_ptr<sim_raw_client> client;
};

constexpr const char* aircraft = "D-AIQA\tAirbus\tA320\tA320-211\t\t\t\t\t";

TEST_F(sim_services, store_updates)
{
    start(full_service());
    const std::pair<std::uint32_t, const char*> requests[] = {{30, "LH400\tFRA-JFK\t\tXXXXXXX"},
                                                              {31, "ZZ\tZeppelin Lines"},
                                                              {33, "FDH\tFriedrichshafen"},
                                                              {34, "Z9\tAirship talk"},
                                                              {38, aircraft}};
    for (const auto& [kind, text] : requests)
        EXPECT_EQ(answer_to(kind, text).kind, 35U) << kind;
    const auto stored = server->reference_entries();
    ASSERT_EQ(stored.size(), 5U);
    EXPECT_EQ(stored[0].kind, 30U);
    EXPECT_EQ(stored[0].fields, (std::vector<std::string>{"LH400", "FRA-JFK", "", "XXXXXXX"}));
    EXPECT_EQ(stored[4].fields.size(), 9U);
    EXPECT_EQ(answer_to(31, "ZZ").kind, 36U);
    EXPECT_EQ(answer_to(38, "D-AIQA\t\t\t\t\t\t\t\t").kind, 36U);
    EXPECT_EQ(server->reference_entries().size(), 5U);
}

TEST_F(sim_services, use_updates_in_the_traffic_that_follows)
{
    auto options = full_service();
    options.rate_per_minute = 6000;
    start(options);
    client->send_text(31, "ZZ\tZeppelin Lines");
    ASSERT_TRUE(client->receive_kind(35));
    auto received = client->receive();
    while (received && received->payload.find("<Operator>Zeppelin Lines<") == std::string::npos)
        received = client->receive();
    ASSERT_TRUE(received);
    EXPECT_NE(received->payload.find("<FlightNumber>ZZ"), std::string::npos);
}

TEST_F(sim_services, keep_pager_lists)
{
    start(full_service());
    EXPECT_EQ(answer_to(77, "me@here\tD-AIQA\tLH400\tFRA", 12).kind, 78U);
    EXPECT_EQ(answer_to(77, "me@here\t\tBA117\t", 12).kind, 78U);
    EXPECT_EQ(answer_to(89, "me@here", 12),
              (server_packet{.kind = 89, .payload = "D-AIQA\tFRA\tLH400~^\t^\tBA117"}));
    EXPECT_EQ(answer_to(89, "me@here", 13).payload, "^\t^\t^") << "a wrong code opens no list";
    EXPECT_EQ(server->pager_list("me@here", 12).size(), 2U);
    EXPECT_EQ(answer_to(88, "me@here\t\tBA*\t", 13).kind, 79U);
    EXPECT_EQ(answer_to(88, "me@here\t\tBA*\t", 12).kind, 78U);
    EXPECT_EQ(answer_to(88, "me@here\t\tBA*\t", 12).kind, 79U) << "there is nothing left";
    EXPECT_EQ(answer_to(89, "me@here", 12).payload, "D-AIQA\tFRA\tLH400");
    for (const char* text : {"me@here", "me@here\tD\tL", "me@here\tD\tL\tF\t", "\tD\tL\tF",
                             "me@here\t\t\t", "me@here\tD~A\t\t"})
        EXPECT_EQ(answer_to(77, text, 12).kind, 79U) << text;
    EXPECT_EQ(answer_to(89, "", 12).kind, 108U);
    EXPECT_EQ(answer_to(89, "me@here\t", 12).kind, 108U);
}

TEST_F(sim_services, tell_of_messages_that_a_pager_list_asks_for)
{
    start(full_service());
    const tovrik::transmission message{
        .registration = "D-AIQA", .flight_number = "LH0400", .to = "JFK", .time = 1752148020};
    const std::string xml = transmission_xml(message);
    EXPECT_EQ(answer_to(77, "me@here\tD-AI*\tLH400\t", 12).kind, 78U);
    sim_raw_client other{server->port()};
    ASSERT_TRUE(other.receive());
    server->push_transmission(xml);
    EXPECT_EQ(client->receive()->payload, xml);
    EXPECT_EQ(client->receive(),
              (server_packet{.kind = 103, .payload = "Pager of me@here: D-AIQA LH0400 JFK"}));
    EXPECT_EQ(other.receive()->payload, xml);
    other.send_text(148, "^");
    EXPECT_EQ(other.receive()->kind, 5U) << "who does not know the list is not told";

    EXPECT_EQ(answer_to(88, "me@here\t*\t*\t*", 12).kind, 78U);
    server->push_transmission(xml);
    EXPECT_EQ(client->receive()->payload, xml);
    client->send_text(148, "^");
    EXPECT_EQ(client->receive()->kind, 5U);
}

TEST_F(sim_services, put_pager_requests_off_by_option)
{
    auto options = full_service();
    options.pager_blocked = true;
    start(options);
    EXPECT_EQ(answer_to(77, "me@here\tD-AIQA\t\t").kind, 76U);
    EXPECT_EQ(answer_to(88, "me@here\tD-AIQA\t\t").kind, 76U);
    EXPECT_EQ(answer_to(89, "me@here").kind, 76U);
    EXPECT_TRUE(server->pager_list("me@here", 0).empty());
}

TEST_F(sim_services, record_subscriptions)
{
    start(full_service());
    EXPECT_EQ(server->subscription_style("me@here"), std::nullopt);
    EXPECT_EQ(answer_to(66, "me@here", 1).kind, 108U) << "not subscribed";
    const auto subscribed = answer_to(60, "me@here");
    EXPECT_EQ(subscribed.kind, 103U);
    EXPECT_TRUE(subscribed.payload.starts_with("Daily reports subscribed. Your code: "))
        << subscribed.payload;
    EXPECT_EQ(server->subscription_style("me@here"), 0U);
    const std::string code = subscribed.payload.substr(subscribed.payload.rfind(' '));
    const auto again = answer_to(60, "me@here");
    EXPECT_EQ(again.kind, 103U);
    EXPECT_TRUE(again.payload.ends_with(code)) << again.payload;
    EXPECT_EQ(answer_to(66, "me@here", 1).payload,
              "Daily reports for me@here now have the ZOBE style");
    EXPECT_EQ(server->subscription_style("me@here"), 1U);
    EXPECT_EQ(answer_to(66, "me@here", 3).kind, 108U);
    EXPECT_EQ(answer_to(66, "me@here", 65535).kind, 108U);
    EXPECT_EQ(server->subscription_style("me@here"), 1U);
    EXPECT_EQ(answer_to(60, "").kind, 108U);
    EXPECT_EQ(answer_to(60, "a\nb").kind, 108U);
    EXPECT_EQ(answer_to(60, std::string(tovrik::max_field_bytes + 1, 'x')).kind, 108U);
}

TEST_F(sim_services, survive_percent_signs)
{
    start(full_service());
    EXPECT_EQ(answer_to(66, "100%s%n@here", 1).kind, 108U);
    EXPECT_EQ(answer_to(60, "100%s%n@here").kind, 103U);
    EXPECT_EQ(server->subscription_style("100%s%n@here"), 0U);
}

const std::pair<std::uint32_t, std::uint32_t> refusals[] = {
    {30, 106}, {31, 106}, {33, 106}, {34, 106}, {38, 106}, {60, 108},
    {66, 108}, {70, 108}, {77, 79},  {88, 79},  {89, 108}};

TEST_F(sim_services, are_refused_where_not_offered)
{
    start(quick_server());
    for (const auto& [kind, refusal] : refusals)
        EXPECT_EQ(answer_to(kind, "ZZ\tZeppelin Lines").kind, refusal) << kind;
    EXPECT_TRUE(server->reference_entries().empty());
}

TEST_F(sim_services, are_refused_before_access_is_given)
{
    auto options = full_service();
    options.password = "abc";
    start(options);
    for (const auto& [kind, refusal] : refusals)
        EXPECT_EQ(answer_to(kind, "ZZ\tZeppelin Lines").kind, refusal) << kind;
    EXPECT_TRUE(server->reference_entries().empty());
    EXPECT_EQ(answer_to(81, "900150983cd24fb0d6963f7d28e17f72").kind, 82U);
    EXPECT_EQ(answer_to(31, "ZZ\tZeppelin Lines").kind, 35U);
}

TEST_F(sim_services, are_offered_by_numbers_other_than_0)
{
    const struct {
        const char* text;
        std::uint32_t answer;
    } rows[] = {{"1", 35}, {"2", 35}, {"-1", 35}, {"0", 106}, {"", 106}, {"yes", 106}};
    for (const auto& row : rows) {
        auto options = quick_server();
        options.capabilities.modify_flags = row.text;
        start(options);
        EXPECT_EQ(answer_to(31, "ZZ\tZeppelin Lines").kind, row.answer) << row.text;
    }
}

TEST_F(sim_services, take_a_bounded_number_of_entries_from_a_client)
{
    start(full_service());
    for (std::size_t i = 0; i < tovrik::max_changes_per_client; ++i)
        ASSERT_EQ(answer_to(31, "Z" + std::to_string(i) + "\tname").kind, 35U);
    EXPECT_EQ(answer_to(31, "ZZ\tname").kind, 36U);
    EXPECT_EQ(answer_to(60, "me@here").kind, 108U);
    EXPECT_EQ(answer_to(77, "me@here\tD-AIQA\t\t").kind, 79U);
    EXPECT_EQ(answer_to(89, "me@here").kind, 89U) << "asking is free";
    EXPECT_EQ(server->reference_entries().size(), tovrik::max_changes_per_client);
}

TEST_F(sim_services, forget_everything_when_the_server_stops)
{
    start(full_service());
    EXPECT_EQ(answer_to(31, "ZZ\tZeppelin Lines").kind, 35U);
    EXPECT_EQ(answer_to(60, "me@here").kind, 103U);
    EXPECT_EQ(answer_to(77, "me@here\tD-AIQA\t\t").kind, 78U);
    server->stop();
    EXPECT_TRUE(server->reference_entries().empty());
    EXPECT_TRUE(server->pager_list("me@here", 0).empty());
    EXPECT_EQ(server->subscription_style("me@here"), std::nullopt);
}

} // namespace
