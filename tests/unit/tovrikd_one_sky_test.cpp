// tovrikd_one_sky_test.cpp - several servers behind one broker serve one sky, whoever fails.
#include "client_crowd.hpp"
#include "own_broker.hpp"
#include "tovrikd_place.hpp"

#include <algorithm>
#include <map>
#include <optional>

namespace
{

constexpr std::size_t server_count = 3;
constexpr std::size_t clients_per_server = 100;

/// What everybody hears last: nothing can come after it.
constexpr const char* last_text = "AFTERWARDS";

/// By which the figures name the input.
const std::string labels = R"({input="1",receiver="sky",type="mqtt"})";

/// A receiver in a process of its own, which can be killed.
class own_receiver
{
public:
    own_receiver(const own_broker& broker, const std::string& topic)
    {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const unique_fd heard{ends[0]};
        lines = unique_fd{ends[1]};
        pid = fork();
        if (pid == 0) {
            lines = unique_fd{};
            publish_lines(broker, topic, heard.get());
        }
    }
    own_receiver(const own_receiver&) = delete;
    own_receiver& operator=(const own_receiver&) = delete;
    ~own_receiver()
    {
        end();
    }

    /// Makes it hear a message.
    void hear(const std::string& text)
    {
        const std::string line = heard_line(text) + "\n";
        EXPECT_EQ(write(lines.get(), line.data(), line.size()), static_cast<ssize_t>(line.size()));
    }

    /// Kills it.
    void end()
    {
        if (pid <= 0)
            return;
        kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
        pid = -1;
    }

private:
    /// Publishes each line as it comes.
    [[noreturn]] static void publish_lines(const own_broker& broker, const std::string& topic,
                                           int heard)
    {
        own_publisher publisher{broker};
        std::string line;
        for (char byte = 0; read(heard, &byte, 1) == 1;) {
            line += byte;
            if (byte != '\n')
                continue;
            publisher.publish(topic, line);
            line.clear();
        }
        _exit(EXIT_SUCCESS);
    }

    unique_fd lines;
    pid_t pid = -1;
};

/// How often each text has come to a client.
std::map<std::string, int> texts_of(const crowd_client& client)
{
    constexpr std::string_view begin = "<MessageContent>";
    std::map<std::string, int> texts;
    for (const server_packet& each : client.taken) {
        if (each.kind != 40)
            continue;
        const std::size_t from = each.payload.find(begin) + begin.size();
        ++texts[each.payload.substr(from, each.payload.find("</", from) - from)];
    }
    return texts;
}

class one_sky : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!own_broker::is_installed())
            GTEST_SKIP() << "mosquitto is not installed";
        broker.emplace(home, free_port(), own_broker::anyone);
        roof.emplace(*broker, "acars/roof");
        garden.emplace(*broker, "acars/garden");
        const own_publisher wait_for_broker{*broker};
        for (std::size_t i = 0; i < server_count; ++i)
            start_server(i);
        ASSERT_TRUE(all_show("tovrikd_receiver_connected" + labels + " 1"));
        roof->hear("BEFORE ANYBODY CAME");
        garden->hear("BEFORE ANYBODY CAME");
        ASSERT_TRUE(all_show("tovrikd_receiver_messages_total" + labels + " 2"));
        for (std::size_t i = 0; i < server_count; ++i)
            crowd.connect(places[i].port, i, clients_per_server);
        ASSERT_TRUE(crowd.take_in_until([this] {
            return std::ranges::all_of(
                crowd.clients, [](const auto& client) { return client.count_kind(41) == 1; });
        })) << "everybody is welcomed";
    }

    void start_server(std::size_t index)
    {
        tovrikd_place& place = places[index];
        place.input = "name = \"sky\"\ntype = \"mqtt\"\nhost = \"127.0.0.1\"\n"
                      "topic = \"acars/#\"\nport = " +
                      std::to_string(broker->port) + "\n";
        place.write_configuration();
        servers[index] = place.start();
    }

    /// Waits until the figures of all servers have a line.
    bool all_show(const std::string& line) const
    {
        const auto end = tovrik::steady_clock::now() + default_patience;
        for (const tovrikd_place& place : places) {
            while (place.ask_web("/metrics").find(line + "\n") == std::string::npos) {
                if (tovrik::steady_clock::now() > end)
                    return false;
                usleep(50000);
            }
        }
        return true;
    }

    bool has_anybody_heard(const std::string& text) const
    {
        return std::ranges::any_of(
            crowd.clients, [&](const auto& client) { return texts_of(client).contains(text); });
    }

    /// Whether it has come to all clients of servers that live.
    bool has_everybody_heard(const std::string& text) const
    {
        return std::ranges::all_of(crowd.clients, [&](const auto& client) {
            return servers[client.server] == nullptr || texts_of(client).contains(text);
        });
    }

    temp_home home;
    std::optional<own_broker> broker;
    std::optional<own_receiver> roof;
    std::optional<own_receiver> garden;
    tovrikd_place places[server_count];
    std::unique_ptr<sim_program> servers[server_count];
    client_crowd crowd;
};

TEST_F(one_sky, reaches_every_client_of_a_living_server_once)
{
    roof->hear("BOTH HEAR IT");
    garden->hear("BOTH HEAR IT");
    garden->hear("THE GARDEN ALONE");
    roof->hear("THE ROOF ALONE");
    ASSERT_TRUE(crowd.take_in_until([this] { return has_anybody_heard("THE ROOF ALONE"); }));
    servers[1] = nullptr; // kills it, while its other clients still wait for that
    roof->end();
    garden->hear(last_text);
    ASSERT_TRUE(crowd.take_in_until([this] { return has_everybody_heard(last_text); }));

    const std::map<std::string, int> all_once = {
        {"BOTH HEAR IT", 1}, {"THE GARDEN ALONE", 1}, {"THE ROOF ALONE", 1}, {last_text, 1}};
    for (const crowd_client& client : crowd.clients) {
        if (client.server != 1) {
            EXPECT_EQ(texts_of(client), all_once);
            EXPECT_FALSE(client.has_ended);
            continue;
        }
        EXPECT_TRUE(client.has_ended);
        for (const auto& [text, count] : texts_of(client))
            EXPECT_EQ(count, 1) << text;
    }
}

} // namespace
