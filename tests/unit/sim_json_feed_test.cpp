// sim_json_feed_test.cpp - messages of receivers, on their way through the practice server.
#include "sim_json_lines.hpp"
#include "sim_raw_client.hpp"

#include "base/owners.hpp"
#include "server/inputs/json_file.hpp"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace
{

/// A running server that takes datagrams, and a client of it.
class sim_json_feed : public testing::Test
{
protected:
    sim_json_feed() : server(options())
    {
        EXPECT_TRUE(server.start());
        client = std::make_unique<sim_raw_client>(server.port());
        EXPECT_TRUE(client->receive());
        sender = unique_fd{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    }

    static tovrik::server_options options()
    {
        auto chosen = quick_server();
        chosen.json_udp_port = 0;
        chosen.capabilities.db_modify = "1";
        return chosen;
    }

    void send_datagram(const std::string& bytes) const
    {
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(server.json_port());
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(sendto(sender.get(), bytes.data(), bytes.size(), 0,
                         reinterpret_cast<const sockaddr*>(&place), sizeof place),
                  static_cast<ssize_t>(bytes.size()));
    }

    tovrik::practice_server server;
    std::unique_ptr<sim_raw_client> client;
    unique_fd sender;
};

TEST_F(sim_json_feed, passes_datagrams_on)
{
    send_datagram(flat);
    EXPECT_EQ(client->receive()->payload, transmission_xml(only_part(flat)));
    send_datagram(std::string{vdl2} + "\nbroken\n\n" + hfdl + "\n");
    EXPECT_EQ(client->receive()->payload, transmission_xml(only_part(vdl2)));
    EXPECT_EQ(client->receive()->payload, transmission_xml(only_part(hfdl)));
    EXPECT_EQ(server.broken_json_lines(), 1U);
}

TEST_F(sim_json_feed, survives_datagrams_of_any_size_and_kind)
{
    send_datagram("");
    send_datagram(std::string(60000, '\0'));
    send_datagram(std::string(60000, '{'));
    send_datagram(R"({"text":"still there"})");
    const auto received = client->receive();
    ASSERT_TRUE(received);
    EXPECT_NE(received->payload.find(">still there<"), std::string::npos);
    EXPECT_EQ(server.broken_json_lines(), 2U);
}

TEST_F(sim_json_feed, marks_uplinks_so_that_clients_can_be_spared_them)
{
    client->send_text(95, "1");
    ASSERT_TRUE(server.wait_for_packet(95, default_patience));
    EXPECT_EQ(server.push_json(hfdl), 1U) << "its block id is a letter";
    EXPECT_EQ(server.push_json(vdl2), 1U);
    EXPECT_EQ(client->receive()->payload, transmission_xml(only_part(vdl2)));
}

TEST_F(sim_json_feed, dates_a_message_without_a_time_with_its_arrival)
{
    const std::time_t before = std::time(nullptr);
    EXPECT_EQ(server.push_json(R"({"text":"x"})"), 1U);
    const std::time_t after = std::time(nullptr);
    const std::string xml = client->receive()->payload;
    EXPECT_TRUE(xml == tovrik::transmission_xml({.content = "x", .time = before}) ||
                xml == tovrik::transmission_xml({.content = "x", .time = after}))
        << xml;
}

TEST_F(sim_json_feed, completes_messages_by_what_was_added)
{
    client->send_text(31, "NW\tNew Wings");
    EXPECT_EQ(client->receive()->kind, 35U);
    EXPECT_EQ(server.push_json(flat), 1U);
    EXPECT_NE(client->receive()->payload.find("<Operator>New Wings<"), std::string::npos);
}

TEST(sim_json_stream, passes_lines_on_as_they_come_and_outlives_its_end)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const unique_fd reading{ends[0]};
    unique_fd writing{ends[1]};
    auto options = quick_server();
    options.json_stream_fd = reading.get();
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    const auto say = [&writing](const std::string& text) {
        EXPECT_EQ(write(writing.get(), text.data(), text.size()),
                  static_cast<ssize_t>(text.size()));
    };
    say("{\"text\":\"on");
    say("e\"}\n{\"text\":");
    EXPECT_NE(client.receive()->payload.find(">one<"), std::string::npos);
    say("\"two\"}");
    writing = unique_fd{};
    EXPECT_NE(client.receive()->payload.find(">two<"), std::string::npos);
    client.send_text(148, "^");
    EXPECT_EQ(client.receive()->kind, 5U);
}

TEST(sim_json_stream, refuses_what_cannot_be_waited_for)
{
    const unique_fd file{open("/dev/null", O_RDONLY | O_CLOEXEC)};
    auto options = quick_server();
    options.json_stream_fd = file.get();
    tovrik::practice_server server{options};
    EXPECT_FALSE(server.start());
    EXPECT_EQ(server.error(), "cannot wait for JSON: Operation not permitted");
}

class sim_json_files : public testing::Test
{
protected:
    static std::string written(const std::string& text)
    {
        const std::string path = testing::TempDir() + "sim_json_" + std::to_string(getpid());
        std::ofstream{path, std::ios::binary} << text;
        return path;
    }
};

TEST_F(sim_json_files, are_read_but_for_their_broken_lines)
{
    std::vector<std::string> complaints;
    const std::string path = written(std::string{flat} + "\nbroken\n" + vdl2);
    const auto file = tovrik::open_json_file(
        path, [&complaints](const std::string& text) { complaints.push_back(text); });
    unlink(path.c_str());
    EXPECT_EQ(file.error, "");
    ASSERT_EQ(file.messages.size(), 2U);
    EXPECT_EQ(file.messages[0].registration, "N827NW");
    EXPECT_FALSE(file.stream);
    EXPECT_EQ(complaints.size(), 1U);
}

TEST_F(sim_json_files, are_refused_without_messages)
{
    const std::string path = written("{}\nbroken\n");
    EXPECT_EQ(tovrik::open_json_file(path, {}).error, path + ": holds no message");
    unlink(path.c_str());
    EXPECT_EQ(tovrik::open_json_file("/nowhere/at/all", {}).error,
              "/nowhere/at/all: No such file or directory");
    EXPECT_NE(tovrik::open_json_file("/tmp", {}).error, "");
}

TEST_F(sim_json_files, come_over_and_over_at_the_rate)
{
    auto options = quick_server();
    options.rate_per_minute = 6000;
    options.queue_limit = 1000;
    for (const char* text : {"a", "b", "c"})
        options.replay_messages.push_back({.content = text, .time = 1752148020});
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    std::string heard;
    for (int i = 0; i < 7; ++i) {
        const std::string xml = client.receive()->payload;
        heard += xml[xml.find("<MessageContent>") + 16];
    }
    EXPECT_NE(std::string{"abcabcabc"}.find(heard), std::string::npos) << heard;
}

} // namespace
