// shutdown_order_test.cpp - ^X says good-bye to the servers in list order, then saves.
#include "e2e/network_session.hpp"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace
{

/// The recorded lines about farewells and saved files, without the introductions before them.
std::vector<std::string> read_order(const std::filesystem::path& path, std::size_t introductions)
{
    std::ifstream file{path};
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    lines.erase(lines.begin(),
                lines.begin() + static_cast<std::ptrdiff_t>(std::min(introductions, lines.size())));
    return lines;
}

TEST(shutdown_order, farewells_go_out_in_list_order_before_the_configuration_is_saved)
{
    listed_servers servers{3};
    client_session client;
    client_start how;
    const std::filesystem::path order = std::filesystem::path{client.home().path()} / "order";
    how.environment["LD_PRELOAD"] = CLOCK_PRELOAD ":" ORDER_PRELOAD;
    how.environment["TEST_ORDER_FILE"] = order;
    client_settings settings = servers.settings();
    settings.save_on_exit = true;
    ASSERT_TRUE(client.start(settings, how));
    const std::vector<server_connection> connections = connect_all(client, servers);
    ASSERT_EQ(connections.size(), servers.count());
    client.quit();
    std::vector<std::string> wanted;
    for (std::size_t index = 0; index < servers.count(); ++index)
        wanted.push_back("send " + std::to_string(servers[index].port()));
    wanted.push_back("rename ncursesclient.conf");
    EXPECT_EQ(read_order(order, 2 * servers.count()), wanted);
}

} // namespace
