// sim_access_test.cpp - how the practice server welcomes a client, and what it asks of it.
#include "sim_raw_client.hpp"

#include "data/xml.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace
{

constexpr const char* document = "<?xml version=\"1.0\"?><tovrik><ACARS></ACARS></tovrik>";

std::string value_of(const std::string& xml, const char* name)
{
    const xml_document parsed(xml_parse(xml.c_str()));
    const heap_text value(xml_get(parsed.get(), name, true, true));
    return value ? value.get() : "";
}

TEST(sim_access, tells_its_capabilities_at_once)
{
    tovrik::practice_server server; // at its ordinary pace: the first packet waits for nothing
    ASSERT_TRUE(server.start()) << server.error();
    sim_raw_client client{server.port()};
    const auto first = client.receive();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->kind, 41U);
    EXPECT_EQ(value_of(first->payload, "Version"), "1.00.000");
    EXPECT_EQ(value_of(first->payload, "NeedAuth"), "0");
    EXPECT_EQ(value_of(first->payload, "ServerUUID").size(), 36U);
}

TEST(sim_access, has_an_identity_that_stays_and_that_no_other_has)
{
    tovrik::practice_server one{quick_server()};
    tovrik::practice_server other{quick_server()};
    ASSERT_TRUE(one.start() && other.start());
    std::vector<std::string> identities;
    for (const auto port : {one.port(), one.port(), other.port()}) {
        sim_raw_client client{port};
        const auto first = client.receive();
        ASSERT_TRUE(first);
        identities.push_back(value_of(first->payload, "ServerUUID"));
    }
    EXPECT_EQ(identities[0], identities[1]);
    EXPECT_NE(identities[0], identities[2]);
}

TEST(sim_access, welcomes_in_a_fixed_order)
{
    auto options = quick_server();
    options.ask_identification = true;
    options.greetings = {{.kind = 64, .payload = "a\n\nb"}, {.kind = 103, .payload = "n"}};
    options.send_uptime = true;
    options.name = "here";
    options.capabilities.server_uuid = "given";
    options.capabilities.pager = "1";
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    const auto capabilities = client.receive();
    ASSERT_TRUE(capabilities);
    EXPECT_EQ(value_of(capabilities->payload, "ServerUUID"), "given");
    EXPECT_EQ(value_of(capabilities->payload, "Pager"), "1");
    EXPECT_EQ(client.receive()->kind, 85U);
    EXPECT_EQ(client.receive(), (server_packet{.kind = 64, .payload = "a\n\nb"}));
    EXPECT_EQ(client.receive(), (server_packet{.kind = 103, .payload = "n"}));
    const auto uptime = client.receive();
    ASSERT_TRUE(uptime);
    EXPECT_EQ(uptime->kind, 153U);
    EXPECT_TRUE(uptime->payload.ends_with("\t1\there")) << uptime->payload;
    EXPECT_NE(uptime->payload.front(), '\t');
}

TEST(sim_access, never_sends_a_packet_that_clients_would_discard)
{
    auto options = quick_server();
    options.password = "abc";
    options.ask_identification = true;
    options.send_uptime = true;
    options.replay_count = 1;
    options.tick_every_ms = 5;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    client.send_text(81, "wrong");
    client.send_text(81, "900150983cd24fb0d6963f7d28e17f72");
    client.send_text(85, "somebody");
    client.send_text(85, "ncursesclient");
    client.send_text(148, "^");
    std::set<std::uint32_t> missing{5, 27, 40, 41, 82, 83, 85, 86, 87, 153};
    while (!missing.empty()) {
        const auto received = client.receive();
        ASSERT_TRUE(received) << missing.size() << " kinds missing";
        EXPECT_FALSE(received->payload.empty()) << received->kind;
        missing.erase(received->kind);
    }
}

TEST(sim_access, sends_transmissions_only_after_the_right_password)
{
    auto options = quick_server();
    options.password = "abc";
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    const auto capabilities = client.receive();
    ASSERT_TRUE(capabilities);
    EXPECT_EQ(value_of(capabilities->payload, "NeedAuth"), "1");

    EXPECT_TRUE(server.push_transmission(document));
    client.send_text(81, "abc");
    EXPECT_EQ(client.receive()->kind, 83U) << "the password itself is not its digest";
    EXPECT_TRUE(server.push_transmission(document));
    client.send_text(81, "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(client.receive()->kind, 82U);
    EXPECT_TRUE(server.push_transmission(document));
    EXPECT_EQ(client.receive(), (server_packet{.kind = 40, .payload = document}));
    client.send_text(81, "nonsense");
    EXPECT_EQ(client.receive()->kind, 83U);
}

TEST(sim_access, is_not_given_again_or_taken_back_by_another_password)
{
    auto options = quick_server();
    options.password = "abc";
    options.ask_identification = true;
    options.replay_count = 2;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    EXPECT_EQ(next_kinds(client, 2), (std::vector<std::uint32_t>{41, 85}));
    client.send_text(81, "900150983cd24fb0d6963f7d28e17f72");
    client.send_text(81, "nonsense");
    EXPECT_EQ(next_kinds(client, 2), (std::vector<std::uint32_t>{82, 83}));
    client.send_text(85, "ncursesclient");
    EXPECT_EQ(next_kinds(client, 4), (std::vector<std::uint32_t>{86, 27, 40, 40}));
    for (const char* digest : {"900150983cd24fb0d6963f7d28e17f72", "nonsense"})
        client.send_text(81, digest);
    client.send_text(85, "ncursesclient");
    EXPECT_EQ(next_kinds(client, 3), (std::vector<std::uint32_t>{82, 83, 86}))
        << "nothing is replayed again";
    EXPECT_TRUE(server.push_transmission(document));
    EXPECT_EQ(client.receive(), (server_packet{.kind = 40, .payload = document}));
}

TEST(sim_access, announces_no_password_where_told_so)
{
    auto options = quick_server();
    options.password = "abc";
    options.capabilities.need_auth = "0";
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    EXPECT_EQ(value_of(client.receive()->payload, "NeedAuth"), "0");
}

TEST(sim_access, sends_transmissions_only_to_clients_that_it_knows)
{
    auto options = quick_server();
    options.ask_identification = true;
    options.known_clients = {"ncursesclient", "other"};
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    EXPECT_EQ(next_kinds(client, 2), (std::vector<std::uint32_t>{41, 85}));
    client.send_text(85, "nobody");
    EXPECT_EQ(client.receive()->kind, 87U);
    EXPECT_TRUE(server.push_transmission(document));
    client.send_text(85, "other");
    EXPECT_EQ(client.receive()->kind, 86U);
    EXPECT_TRUE(server.push_transmission(document));
    EXPECT_EQ(client.receive()->kind, 40U);
}

TEST(sim_access, answers_a_heartbeat)
{
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    client.send_text(148, "^");
    EXPECT_EQ(next_kinds(client, 2), (std::vector<std::uint32_t>{41, 5}));
}

} // namespace
