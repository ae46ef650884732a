// xml_bound_test.cpp - documents of servers and configurations that would fill the memory.
#include "e2e/network_session.hpp"

#include "data/xml.hpp"

#include <fstream>
#include <string>
#include <string_view>

namespace
{

constexpr std::size_t largest_inflated = 262'140; // of one packet
constexpr std::size_t hostile_config_bytes = 250'000;
constexpr const char* declaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n";

/// Memory that the program may need for other things in the meantime, and keep.
constexpr std::size_t other_memory_kb = 3 * 1024;

std::size_t most_memory_kb(std::size_t text_bytes)
{
    return (xml_memory_factor * text_bytes + xml_memory_base + text_bytes) / 1024;
}

/// Elements in each other, whose paths grow and grow.
std::string make_hostile_document(std::size_t size)
{
    std::string text = declaration;
    text += "<a>";
    while (text.size() + 2 <= size)
        text += "<>";
    return text;
}

/// A figure of the kernel about a process, in kB.
std::size_t read_memory_kb(pid_t process, std::string_view name)
{
    std::ifstream status{"/proc/" + std::to_string(process) + "/status"};
    std::string word;
    std::size_t value = 0;
    while (status >> word) {
        if (word == name && status >> value)
            return value;
    }
    return 0;
}

class xml_bound : public testing::Test
{
protected:
    std::size_t memory_kb(std::string_view name)
    {
        return read_memory_kb(client.terminal().process_id(), name);
    }

    void expect_keys_work()
    {
        const int before = client.bar_row();
        client.terminal().send_key(named_key::down);
        EXPECT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == before + 1; },
                                                 "the bar has moved"));
        client.terminal().send_key(named_key::up);
        EXPECT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == before; },
                                                 "the bar is back"));
    }

    listed_servers servers{2};
    client_session client;
};

TEST_F(xml_bound, a_packet_that_would_fill_the_memory_takes_little_and_gives_it_back)
{
    ASSERT_TRUE(client.start(servers.settings(), wide_terminal));
    std::optional<server_connection> connection = client.connect_selected(servers[0]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(wait_for_notice(client, *connection, "begin"));
    const std::size_t before_kb = memory_kb("VmRSS:");
    const server_packet hostile = compressed_packet(make_hostile_document(largest_inflated));
    ASSERT_LT(hostile.payload.size(), 400U);
    for (int packet = 0; packet < 5; ++packet)
        ASSERT_TRUE(connection->send(hostile));
    ASSERT_TRUE(wait_for_notice(client, *connection, "and on"));
    EXPECT_TRUE(client.terminal().wait_for_text("[ // : ]-")) << "a transmission without a text";
    expect_keys_work();
    if (!CLIENT_IS_HARDENED)
        GTEST_SKIP() << "the sanitizers need memory of their own";
    EXPECT_LT(memory_kb("VmRSS:"), before_kb + other_memory_kb);
    EXPECT_LT(memory_kb("VmHWM:"), before_kb + most_memory_kb(largest_inflated) + other_memory_kb);
}

TEST_F(xml_bound, a_configuration_that_would_fill_the_memory_takes_little_and_stays)
{
    ASSERT_TRUE(client.start(servers.settings()));
    const std::size_t usual_kb = memory_kb("VmRSS:");
    client.quit();

    client_session again;
    client_settings settings = servers.settings();
    settings.save_on_exit = true;
    std::string text = config_text(settings);
    text.resize(text.rfind("</clientconf>"));
    while (text.size() < hostile_config_bytes)
        text += "<>";
    again.home().write_config(text);
    ASSERT_TRUE(again.start_as_it_is());
    EXPECT_EQ(again.server_row(1).substr(0, 6), " alpha");
    const pid_t process = again.terminal().process_id();
    const std::size_t resident_kb = read_memory_kb(process, "VmRSS:");
    const std::size_t most_kb = read_memory_kb(process, "VmHWM:");
    again.terminal().send_key(named_key::down);
    EXPECT_TRUE(again.terminal().wait_until([&] { return again.bar_row() == 2; }, "the bar moves"));
    again.quit();
    EXPECT_EQ(again.home().read_config(), text);
    if (!CLIENT_IS_HARDENED)
        GTEST_SKIP() << "the sanitizers need memory of their own";
    EXPECT_LT(resident_kb, usual_kb + other_memory_kb);
    EXPECT_LT(most_kb, usual_kb + most_memory_kb(hostile_config_bytes) + other_memory_kb);
}

} // namespace
