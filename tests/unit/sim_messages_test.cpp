// sim_messages_test.cpp - the practice server's messages: made up, recorded, pushed and replayed.
#include "sim_raw_client.hpp"

#include "server/practice/traffic_generator.hpp"

#include <gtest/gtest.h>

#include <string>
#include <zlib.h>

namespace
{

constexpr const char* document = "<?xml version=\"1.0\"?><tovrik><ACARS></ACARS></tovrik>";
constexpr const char* uplink = "<?xml version=\"1.0\"?><tovrik><BlockID>C</BlockID></tovrik>";

std::string decompressed(const server_packet& received)
{
    std::string text(std::size_t{4} * received.extra, '\0');
    uLongf length = text.size();
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(text.data()), &length,
                         reinterpret_cast<const Bytef*>(received.payload.data()),
                         received.payload.size()),
              Z_OK);
    EXPECT_LT(length, text.size()) << "no room for a terminator";
    return text.substr(0, length);
}

TEST(sim_messages, withholds_uplinks_from_a_client_that_wants_none)
{
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    server.push_transmission(uplink);
    EXPECT_EQ(client.receive()->payload, uplink);
    client.send_text(95, "1");
    ASSERT_TRUE(server.wait_for_packet(95, default_patience));
    server.push_transmission(uplink);
    server.push_transmission(document);
    EXPECT_EQ(client.receive()->payload, document);
    client.send_text(95, "0");
    ASSERT_TRUE(server.wait_for_packet(95, default_patience, 2));
    server.push_transmission(uplink);
    EXPECT_EQ(client.receive()->payload, uplink);
}

TEST(sim_messages, replays_as_many_recent_transmissions_as_it_announces)
{
    auto options = quick_server();
    options.replay_count = 3;
    options.queue_limit = 1; // newer ones may push each other out, but none of these
    options.pace_ms = 5;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    for (const char* text : {"<?xml?>1", "<?xml?>2", "<?xml?>3", "<?xml?>4"})
        EXPECT_TRUE(server.push_transmission(text));
    sim_raw_client client{server.port()};
    ASSERT_EQ(client.receive()->kind, 41U);
    server.push_transmission("<?xml?>5");
    server.push_transmission("<?xml?>6");
    const auto announcement = client.receive();
    ASSERT_TRUE(announcement);
    EXPECT_EQ(announcement->kind, 27U);
    EXPECT_EQ(announcement->param1, 3);
    EXPECT_EQ(announcement->param2, 0);
    for (const char* text : {"<?xml?>2", "<?xml?>3", "<?xml?>4"})
        EXPECT_EQ(client.receive()->payload, text);
    auto live = client.receive();
    if (live && live->payload == "<?xml?>5")
        live = client.receive();
    EXPECT_EQ(live, (server_packet{.kind = 40, .payload = "<?xml?>6"}));
}

TEST(sim_messages, has_past_transmissions_to_replay_from_the_start)
{
    auto options = quick_server();
    options.replay_count = 5;
    options.seed = 9;
    options.fixed_time = 1752148020;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    EXPECT_EQ(client.receive_kind(27)->param1, 5);
    tovrik::traffic_generator traffic{9};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(client.receive()->payload, transmission_xml(traffic.next(1752148020)));
}

TEST(sim_messages, generates_traffic_from_its_seed)
{
    auto options = quick_server();
    options.rate_per_minute = 6000;
    options.queue_limit = 1000; // a stalled machine must not leave gaps here
    options.seed = 5;
    options.fixed_time = 1752148020;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_EQ(client.receive()->kind, 41U);
    // Messages go by whether somebody listens or not, so the first one heard may be any.
    tovrik::traffic_generator traffic{5};
    auto received = client.receive();
    ASSERT_TRUE(received);
    std::string expected;
    for (int skipped = 0; skipped < 100000 && expected != received->payload; ++skipped)
        expected = transmission_xml(traffic.next(1752148020));
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(received);
        EXPECT_EQ(received->kind, 40U);
        EXPECT_EQ(received->payload, expected);
        received = client.receive();
        expected = transmission_xml(traffic.next(1752148020));
    }
}

TEST(sim_messages, compresses_transmissions_where_told_so)
{
    auto options = quick_server();
    options.compressed = true;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_EQ(client.receive()->kind, 41U);
    const std::string large = std::string{document} + std::string(20000, ' ');
    for (const std::string& xml : {std::string{document}, large}) {
        EXPECT_TRUE(server.push_transmission(xml));
        const auto received = client.receive();
        ASSERT_TRUE(received);
        EXPECT_EQ(received->kind, 204U);
        EXPECT_EQ(decompressed(*received), xml);
    }
}

TEST(sim_messages, replays_recorded_documents_in_turn)
{
    auto options = quick_server();
    options.rate_per_minute = 6000;
    options.queue_limit = 1000;
    options.replay_documents = {"<?xml?>a", "<?xml?>b", "<?xml?>c"};
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_EQ(client.receive()->kind, 41U);
    std::string heard;
    for (int i = 0; i < 7; ++i)
        heard += client.receive()->payload.back();
    EXPECT_NE(std::string{"abcabcabc"}.find(heard), std::string::npos) << heard;
}

TEST(sim_messages, sends_ticks_between_transmissions)
{
    auto options = quick_server();
    options.tick_every_ms = 5;
    options.rate_per_minute = 6000;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    EXPECT_TRUE(client.receive_kind(5));
    EXPECT_TRUE(client.receive_kind(40));
    EXPECT_TRUE(client.receive_kind(5));
    EXPECT_TRUE(client.receive_kind(40));
}

TEST(sim_messages, sends_any_packet_as_it_is)
{
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    EXPECT_EQ(server.push_packet({.kind = 40000,
                                  .payload = std::string("a\0b", 3),
                                  .param1 = 1,
                                  .param2 = 65535,
                                  .extra = 77}),
              1U);
    EXPECT_EQ(client.receive(), (server_packet{.kind = 40000,
                                               .payload = std::string("a\0b", 3),
                                               .extra = 77,
                                               .param1 = 1,
                                               .param2 = 65535}));
}

} // namespace
