// sim_misbehaviour_test.cpp - clients that do not keep to the protocol, and those who must not
// notice them.
#include "sim_raw_client.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace
{

/// A running server with one well-behaved client.
class sim_misbehaviour : public testing::Test
{
protected:
    sim_misbehaviour() : server(options())
    {
        EXPECT_TRUE(server.start());
        honest = std::make_unique<sim_raw_client>(server.port());
        EXPECT_TRUE(honest->receive());
    }

    static tovrik::server_options options()
    {
        auto chosen = quick_server();
        chosen.record_limit = 100;
        chosen.queue_limit = 500;
        return chosen;
    }

    /// Whether the server still listens to its honest client and answers.
    bool still_serves()
    {
        return honest->send_text(148, "^") && honest->receive_kind(5).has_value();
    }

    tovrik::practice_server server;
    std::unique_ptr<sim_raw_client> honest;
};

TEST_F(sim_misbehaviour, is_hung_up_on_when_a_header_announces_too_much)
{
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    ASSERT_TRUE(client.send_bytes(header_bytes({.kind = 101}, 4097)));
    EXPECT_TRUE(client.ends());
    EXPECT_TRUE(still_serves());
}

TEST_F(sim_misbehaviour, may_use_the_whole_payload)
{
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    client.send_text(77, std::string(4096, 'x'));
    const auto heard = server.wait_for_packet(77, default_patience);
    ASSERT_TRUE(heard);
    EXPECT_EQ(heard->text.size(), 4096U);
}

TEST_F(sim_misbehaviour, unknown_kinds_and_empty_packets_have_no_consequence)
{
    for (const std::uint32_t kind : {0U, 1U, 3U, 41U, 204U, 4294967295U})
        ASSERT_TRUE(honest->send_text(kind, kind == 1 ? "" : "something"));
    EXPECT_TRUE(still_serves());
    ASSERT_TRUE(server.wait_for_packet(148, default_patience));
    EXPECT_EQ(server.packets().size(), 7U);
}

TEST_F(sim_misbehaviour, unasked_answers_have_no_consequence)
{
    ASSERT_TRUE(honest->send_text(85, "ncursesclient"));
    EXPECT_TRUE(honest->send_text(148, "^"));
    EXPECT_EQ(honest->receive()->kind, 5U);
    ASSERT_TRUE(honest->send_text(81, "any digest"));
    EXPECT_EQ(honest->receive()->kind, 82U) << "no password, no wrong one";
}

TEST_F(sim_misbehaviour, by_hanging_up_amid_a_packet_is_survived)
{
    for (std::size_t cut = 1; cut < 20; ++cut) {
        sim_raw_client client{server.port()};
        ASSERT_TRUE(client.receive());
        client.send_bytes(packet_bytes({.kind = 101, .payload = "0 02 001"}).substr(0, cut));
    }
    EXPECT_TRUE(server.wait_for_clients(1, default_patience));
    EXPECT_TRUE(still_serves());
}

TEST_F(sim_misbehaviour, by_resetting_the_connection_is_survived)
{
    for (int i = 0; i < 20; ++i) {
        sim_raw_client client{server.port()};
        ASSERT_TRUE(client.receive());
        const linger at_once{1, 0};
        setsockopt(client.fd, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        client.hang_up();
        server.push_packet({.kind = 103, .payload = "to a client that may be gone"});
    }
    EXPECT_TRUE(server.wait_for_clients(1, default_patience));
    EXPECT_TRUE(still_serves());
}

TEST_F(sim_misbehaviour, with_noise_is_survived)
{
    std::uint32_t state = 1;
    for (int i = 0; i < 50; ++i) {
        std::string noise;
        while (noise.size() < 5000) {
            state = state * 1664525 + 1013904223;
            noise += static_cast<char>(state >> 24);
        }
        sim_raw_client client{server.port()};
        client.send_bytes(noise);
    }
    EXPECT_TRUE(server.wait_for_clients(1, default_patience));
    EXPECT_TRUE(still_serves());
}

TEST_F(sim_misbehaviour, by_flooding_without_reading_does_not_keep_others_from_being_served)
{
    sim_raw_client client{server.port()};
    std::string flood;
    for (int i = 0; i < 1000; ++i)
        flood += packet_bytes({.kind = 148, .payload = "^"});
    for (int i = 0; i < 40; ++i) {
        ASSERT_TRUE(client.send_bytes(flood));
        ASSERT_TRUE(still_serves());
    }
    EXPECT_LE(server.packets().size(), 100U);
}

TEST_F(sim_misbehaviour, by_reading_late_gets_whole_packets_and_the_newest_transmissions)
{
    sim_raw_client late{server.port()};
    const int small = 65536;
    setsockopt(late.fd, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    ASSERT_TRUE(server.wait_for_clients(2, default_patience));
    const std::string filler(4000, 'x');
    constexpr int count = 8000; // more than the sockets and the queue can hold between them
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(server.push_transmission(filler + std::to_string(i)));
        ASSERT_EQ(honest->receive()->payload, filler + std::to_string(i));
    }
    ASSERT_EQ(late.receive()->kind, 41U);
    int heard = 0;
    std::string last;
    while (last != filler + std::to_string(count - 1)) {
        const auto received = late.receive();
        ASSERT_TRUE(received) << "after " << heard;
        ASSERT_EQ(received->kind, 40U);
        ASSERT_TRUE(received->payload.starts_with(filler));
        last = received->payload;
        ++heard;
    }
    EXPECT_LT(heard, count) << "the oldest were to be dropped";
    EXPECT_TRUE(still_serves());
}

TEST_F(sim_misbehaviour, by_never_reading_does_not_keep_the_server_from_stopping)
{
    sim_raw_client client{server.port()};
    ASSERT_TRUE(server.wait_for_clients(2, default_patience));
    for (int i = 0; i < 2000; ++i)
        server.push_transmission(std::string(4000, 'x'));
    server.stop();
    EXPECT_TRUE(client.ends());
}

} // namespace
