// server_channel_test.cpp - several channels of one server, and what their clients are sent and
// told.
#include "server_driven_core.hpp"

#include <vector>

namespace
{

using namespace std::chrono_literals;
using tovrik::message_link;

tovrik::transmission message_of(message_link link, const std::string& text)
{
    return {.registration = "D-AIQA", .content = text, .heard = {.link = link}};
}

/// The kind of the next packet, and the text of the message in it.
std::string next_message(driven_core& server, sim_raw_client& client)
{
    const auto received = server.next_packet(client);
    return received ? received->payload : "nothing came";
}

TEST(server_channel, passes_on_what_its_filter_asks_for)
{
    driven_core server{{.pace_ms = 0}};
    auto& all = server.open({});
    auto& part = server.open({.filter = {.links = {message_link::vdl2}}});
    auto everything = server.connect(all);
    auto something = server.connect(part);
    for (auto* const client : {&everything, &something})
        EXPECT_EQ(server.next_packet(*client)->kind, 41U);
    ASSERT_TRUE(publish_message(server.core, message_of(message_link::vhf, "on VHF")));
    ASSERT_TRUE(publish_message(server.core, message_of(message_link::vdl2, "on VDL2")));
    EXPECT_NE(next_message(server, everything).find("on VHF"), std::string::npos);
    EXPECT_NE(next_message(server, everything).find("on VDL2"), std::string::npos);
    EXPECT_NE(next_message(server, something).find("on VDL2"), std::string::npos);
    EXPECT_EQ(all.messages, 2U);
    EXPECT_EQ(part.messages, 1U);
}

TEST(server_channel, replays_what_its_filter_asks_for)
{
    driven_core server{{.pace_ms = 0, .replay_count = 9}};
    auto& part = server.open({.filter = {.links = {message_link::vdl2}}});
    for (const auto link : {message_link::vhf, message_link::vdl2, message_link::hfdl})
        publish_message(server.core, message_of(link, "text"));
    auto client = server.connect(part);
    EXPECT_EQ(server.next_packet(client)->kind, 41U);
    const auto announcement = server.next_packet(client);
    ASSERT_TRUE(announcement);
    EXPECT_EQ(announcement->kind, 27U);
    EXPECT_EQ(announcement->payload, "1");
}

TEST(server_channel, has_an_identity_of_its_own)
{
    driven_core server{{}};
    const std::string one = server.open({.seed = "server"}).uuid;
    const std::string other = server.open({.seed = "server"}).uuid;
    EXPECT_EQ(one.size(), 36U);
    EXPECT_NE(one, other);
}

TEST(server_channel, says_good_bye_when_it_is_closed_and_the_others_serve_on)
{
    driven_core server{{.pace_ms = 0}};
    auto& closed = server.open({});
    auto& open = server.open({});
    auto leaving = server.connect(closed);
    auto staying = server.connect(open);
    for (auto* const client : {&leaving, &staying})
        EXPECT_EQ(server.next_packet(*client)->kind, 41U);
    loop_close_channel(server.core, closed);
    EXPECT_EQ(server.next_packet(leaving)->kind, 100U);
    EXPECT_EQ(server.core.channels.size(), 2U) << "its client is still there";
    leaving.hang_up();
    EXPECT_TRUE(server.run_until([&] { return server.core.channels.size() == 1; }));
    publish_message(server.core, message_of(message_link::vhf, "still here"));
    EXPECT_NE(next_message(server, staying).find("still here"), std::string::npos);
}

TEST(server_left_out, is_told_to_the_client_once_a_minute)
{
    driven_core server{{.pace_ms = 1000, .queue_limit = 1, .tell_left_out = true}};
    auto client = server.connect(server.open({}));
    EXPECT_EQ(server.next_packet(client)->kind, 41U);
    for (int i = 0; i < 4; ++i)
        publish_message(server.core, message_of(message_link::vhf, "text"));
    tovrik::client_session& session = server.core.sessions.begin()->second;
    const auto now = tovrik::steady_clock::now();
    loop_on_time(server.core, now);
    EXPECT_TRUE(session.assured.empty()) << "not at once";
    loop_on_time(server.core, now + 59s);
    EXPECT_TRUE(session.assured.empty());
    loop_on_time(server.core, now + 61s);
    const auto told = server.next_packet(client, 70s);
    ASSERT_TRUE(told);
    EXPECT_EQ(told->kind, 40U) << "the message that was under way";
    const auto notice = server.next_packet(client, 80s);
    ASSERT_TRUE(notice);
    EXPECT_EQ(notice->kind, 103U);
    EXPECT_EQ(notice->payload, "3 messages left out");
}

TEST(server_left_out, counts_for_the_channel_when_the_client_has_gone)
{
    driven_core server{{.queue_limit = 1}};
    auto& home = server.open({});
    {
        auto client = server.connect(home);
        for (int i = 0; i < 4; ++i)
            publish_message(server.core, message_of(message_link::vhf, "text"));
    }
    EXPECT_TRUE(server.run_until([&] { return server.core.sessions.empty(); }));
    EXPECT_EQ(home.left_out_before, 3U);
}

tovrik::service_options with_password()
{
    return {.pace_ms = 0,
            .label_of_digest =
                [](std::string_view digest) {
                    return digest == "right" ? std::string{"roof"} : std::string{};
                },
            .tries_per_minute = 2};
}

TEST(server_access, takes_a_bounded_number_of_wrong_passwords_of_an_address)
{
    driven_core server{with_password()};
    auto& home = server.open({});
    auto client = server.connect(home);
    EXPECT_EQ(server.next_packet(client)->kind, 41U);
    for (const char* digest : {"wrong", "wrong", "right"}) {
        client.send_text(81, digest);
        EXPECT_EQ(server.next_packet(client)->kind, 83U) << digest;
    }
    EXPECT_EQ(server.core.wrong_passwords, 3U);
    auto other = server.connect(home);
    EXPECT_EQ(server.next_packet(other)->kind, 41U);
    other.send_text(81, "right");
    EXPECT_EQ(server.next_packet(other)->kind, 83U) << "it has the same address";
}

TEST(server_access, knows_the_label_of_a_right_password)
{
    driven_core server{with_password()};
    auto client = server.connect(server.open({}));
    EXPECT_EQ(server.next_packet(client)->kind, 41U);
    client.send_text(81, "right");
    EXPECT_EQ(server.next_packet(client)->kind, 82U);
    EXPECT_EQ(server.core.sessions.begin()->second.label, "roof");
}

TEST(server_access, ends_a_connection_that_is_silent_for_too_long)
{
    auto options = with_password();
    options.access_within_ms = 120'000;
    driven_core server{options};
    auto& home = server.open({});
    auto silent = server.connect(home);
    auto admitted = server.connect(home);
    for (auto* const client : {&silent, &admitted})
        EXPECT_EQ(server.next_packet(*client)->kind, 41U);
    admitted.send_text(81, "right");
    EXPECT_EQ(server.next_packet(admitted)->kind, 82U);
    EXPECT_EQ(server.next_packet(silent, 121s)->kind, 3U);
    publish_message(server.core, message_of(message_link::vhf, "still here"));
    EXPECT_NE(next_message(server, admitted).find("still here"), std::string::npos);
}

TEST(server_place, of_a_client_that_never_reads_is_free_again_in_time)
{
    driven_core server{{.pace_ms = 0, .queue_limit = 10'000}};
    auto client = server.connect(server.open({}));
    ASSERT_TRUE(server.run_until([&] {
        publish_message(server.core, message_of(message_link::vhf, std::string(3000, 'x')));
        return server.core.sessions.begin()->second.waiting_to_write;
    }));
    const auto now = tovrik::steady_clock::now();
    const int wait = loop_wait_ms(server.core, tovrik::never, now + 14min + 50s);
    EXPECT_TRUE(wait > 0 && wait <= 10'000) << wait << ", though nothing else ends it";
    loop_on_time(server.core, now + 14min);
    EXPECT_EQ(server.core.sessions.size(), 1U);
    loop_on_time(server.core, now + 16min);
    EXPECT_TRUE(server.core.sessions.empty());
}

} // namespace
