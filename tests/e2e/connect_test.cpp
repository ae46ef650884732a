// connect_test.cpp - opening connections: what the user and the server are told.
#include "e2e/network_session.hpp"

#include "support/loopback.hpp"

#include <arpa/inet.h>
#include <csignal>
#include <filesystem>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

std::string append_port(const std::string& words, const scripted_server& server)
{
    return words + ":" + std::to_string(server.port());
}

TEST(connect, introduces_itself_byte_for_byte)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    client.terminal().send_control('l');
    std::optional<server_connection> connection = server.accept();
    ASSERT_TRUE(connection);
    using namespace std::string_literals;
    EXPECT_EQ(connection->read_bytes(36), "\x65\0\0\0\x08\0\0\0\0\0\0\0"s
                                          "0 02 001"
                                          "\x97\0\0\0\x04\0\0\0\0\0\0\0"s
                                          "CXML");
    ASSERT_TRUE(wait_for_notice(client, *connection, "welcome"));
    EXPECT_FALSE(connection->has_unread_bytes()) << "nothing more is said";
}

TEST(connect, reports_the_attempt_and_the_success_with_the_number_of_the_socket)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    ASSERT_TRUE(client.connect_selected(server));
    ASSERT_TRUE(client.wait_for_status(append_port("Try connecting to alpha", server), pairs::plain,
                                       false));
    const std::string start = append_port("Successfully connected alpha", server) + ". Handle #";
    const std::string line = client.status_lines().back();
    ASSERT_TRUE(line.starts_with(start)) << line;
    ASSERT_TRUE(client.wait_for_status(line, pairs::notice));
    std::error_code error;
    const std::filesystem::path link = "/proc/" + std::to_string(client.terminal().process_id()) +
                                       "/fd/" + line.substr(start.size());
    EXPECT_TRUE(std::filesystem::read_symlink(link, error).string().starts_with("socket:")) << link;
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST(connect, marks_the_server_at_its_own_row_in_bold_green)
{
    listed_servers servers(3);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings()));
    ASSERT_TRUE(select_row(client, 2));
    ASSERT_TRUE(client.connect_selected(servers[1]));
    EXPECT_EQ(client.marker(2), pair_cell(pairs::success, true, "*"));
    EXPECT_EQ(client.marker(1).text, " ");
    EXPECT_EQ(client.marker(3).text, " ");
}

TEST(connect, names_the_host_if_there_is_no_alias)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server, "")));
    ASSERT_TRUE(client.connect_selected(server));
    EXPECT_TRUE(client.wait_for_status(append_port("Try connecting to 127.0.0.1", server),
                                       pairs::plain, false));
    EXPECT_TRUE(client.status_lines().back().starts_with("Successfully connected 127.0.0.1:"));
}

TEST(connect, a_port_that_is_0_or_no_number_becomes_2202)
{
    // An address that no other test program uses at the same time.
    const int process = getpid();
    const std::string address = "127.77." + std::to_string(process / 250 % 250 + 1) + "." +
                                std::to_string(process % 250 + 1);
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(2202);
    inet_pton(AF_INET, address.c_str(), &place.sin_addr);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
    ASSERT_EQ(listen(listener, 4), 0);
    for (const char* port : {"0", "none"}) {
        client_session client;
        client_settings settings;
        settings.servers = {{.name = address, .port = port, .alias = "alpha"}};
        ASSERT_TRUE(client.start(settings));
        client.terminal().send_control('l');
        ASSERT_TRUE(wait_for_socket(listener, POLLIN, default_patience));
        server_connection connection{accept(listener, nullptr, nullptr)};
        ASSERT_TRUE(client.wait_for_status("Try connecting to alpha:2202", pairs::plain, false));
        ASSERT_TRUE(wait_for_notice(client, connection, "here"));
        client.terminal().send_control('d');
        ASSERT_TRUE(client.wait_for_status("Connection to alpha:2202 closed", pairs::success));
    }
    close(listener);
}

TEST(connect, a_refused_connection_is_reported_and_can_be_tried_again)
{
    closed_port nobody;
    client_session client;
    client_settings settings;
    settings.servers = {{.port = std::to_string(nobody.port()), .alias = "alpha"}};
    ASSERT_TRUE(client.start(settings));
    const std::string failure = "Unable to connect to alpha:" + std::to_string(nobody.port());
    const std::string attempt = "Try connecting to alpha:" + std::to_string(nobody.port());
    client.terminal().send_control('l');
    ASSERT_TRUE(client.wait_for_status(failure, pairs::error));
    EXPECT_EQ(client.marker(1).text, " ");
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            const std::vector<std::string> lines = client.status_lines();
            return lines[0] == attempt && lines[1] == failure && lines[2] == attempt &&
                   lines[3] == failure;
        },
        "the second attempt has failed too"));
    EXPECT_EQ(client.terminal().bells(), 0);
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
}

TEST(connect, a_host_that_cannot_be_resolved_gives_no_socket)
{
    client_session client;
    client_settings settings;
    // A part of a name may not be as long as this, so no look-up is needed.
    settings.servers = {{.name = std::string(70, 'h'), .port = "7", .alias = "alpha"}};
    ASSERT_TRUE(client.start(settings));
    for (int attempt = 0; attempt < 2; ++attempt) {
        client.terminal().send_control('l');
        ASSERT_TRUE(client.terminal().wait_until(
            [&] {
                const std::vector<std::string> lines = client.status_lines();
                return lines[2] == "Try connecting to alpha:7" &&
                       lines[3] == "Unable to create new socket";
            },
            "no socket is made"));
        ASSERT_TRUE(client.wait_for_status("Unable to create new socket", pairs::error));
        client.terminal().send_control('d');
        ASSERT_TRUE(wait_for_last_status(client, "You are not connected to alpha"));
    }
    EXPECT_FALSE(client.terminal().shows("Unable to connect"));
    EXPECT_EQ(client.marker(1).text, " ");
}

TEST(connect, keys_typed_during_a_look_up_take_effect_afterwards)
{
    listed_servers servers(1);
    client_session client;
    client_settings settings = servers.settings();
    settings.servers.push_back(
        {.name = std::string(70, 'a').append("."), .port = "7", .alias = "zulu"});
    ASSERT_TRUE(client.start(settings));
    const int row = client.server_row(1).find("zulu") != std::string::npos ? 1 : 2;
    ASSERT_TRUE(select_row(client, row));
    client.terminal().send("\x0C\x04"); // ^L ^D
    ASSERT_TRUE(client.wait_for_status("Unable to create new socket", pairs::error));
    ASSERT_TRUE(client.wait_for_status("You are not connected to zulu", pairs::error));
}

TEST(connect, a_pending_connection_counts_as_a_connection)
{
    silent_port nowhere;
    client_session client;
    client_settings settings;
    settings.servers = {{.port = std::to_string(nowhere.port()), .alias = "alpha"}};
    ASSERT_TRUE(client.start(settings));
    client.terminal().send_control('l');
    ASSERT_TRUE(
        wait_for_last_status(client, "Try connecting to alpha:" + std::to_string(nowhere.port())));
    client.terminal().send_control('l');
    ASSERT_TRUE(client.wait_for_status("You are already connected to alpha", pairs::error));
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.marker(1).text, " ");
}

TEST(connect, a_pending_connection_delays_nothing)
{
    listed_servers servers(1);
    silent_port nowhere;
    client_session client;
    client_settings settings = servers.settings();
    settings.servers.push_back({.port = std::to_string(nowhere.port()), .alias = "bravo"});
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(select_row(client, 2));
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_for_text("Try connecting to bravo"));
    ASSERT_TRUE(select_row(client, 1));
    std::optional<server_connection> connection = client.connect_selected(servers[0]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(wait_for_notice(client, *connection, "all is well"));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.marker(2).text, " ");
    client.quit();
    EXPECT_TRUE(connection->wait_for_close());
}

TEST(connect, servers_keep_their_connections_apart)
{
    listed_servers servers(5);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings()));
    std::vector<server_connection> connections = connect_all(client, servers);
    ASSERT_EQ(connections.size(), 5U);
    for (int row = 1; row <= 5; ++row)
        EXPECT_EQ(client.marker(row), pair_cell(pairs::success, true, "*")) << row;
    for (std::size_t index = 0; index < 5; ++index)
        ASSERT_TRUE(wait_for_notice(client, connections[index], "from " + alias_of(index)));
    for (server_connection& connection : connections)
        EXPECT_FALSE(connection.has_unread_bytes());
}

TEST(connect, results_that_come_at_the_same_moment_all_count)
{
    listed_servers servers(3);
    closed_port nobody;
    client_session client;
    client_settings settings = servers.settings();
    settings.servers.push_back({.port = std::to_string(nobody.port()), .alias = "zulu"});
    ASSERT_TRUE(client.start(settings, {.rows = 30}));
    client.terminal().send("\x0C\033OB\x0C\033OB\x0C\033OB\x0C"); // ^L, three times down and ^L
    // Stops every attempt's process before it has a result, and then the client itself.
    const pid_t program = client.terminal().process_id();
    std::set<pid_t> held;
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            for (const pid_t child : children_of(program))
                if (held.insert(child).second)
                    kill(child, SIGSTOP);
            return client.terminal().shows("Try connecting to zulu");
        },
        "all attempts have begun"));
    client.terminal().send_signal(SIGSTOP);
    ASSERT_TRUE(
        client.terminal().wait_until([&] { return facts_of(program).state == 'T'; }, "it stops"));
    for (const pid_t child : children_of(program))
        kill(child, SIGCONT);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            for (const pid_t child : children_of(program))
                if (facts_of(child).state != 'Z')
                    return false;
            return true;
        },
        "all attempts have ended"));
    client.terminal().send_signal(SIGCONT);
    for (int row = 1; row <= 3; ++row)
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(row).text == "*"; },
                                                 "a marker in row " + std::to_string(row)));
    ASSERT_TRUE(client.terminal().wait_until([&] { return children_of(program).empty(); },
                                             "every attempt's process is reaped"));
    EXPECT_EQ(client.marker(4).text, " ");
    for (std::size_t index = 0; index < 3; ++index) {
        std::optional<server_connection> connection = servers[index].accept();
        ASSERT_TRUE(connection);
        EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 101, .payload = "0 02 001"}));
        EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 151, .payload = "CXML"}));
        ASSERT_TRUE(wait_for_notice(client, *connection, "from " + alias_of(index)));
    }
    client.terminal().send_control('d'); // the bar is on the one that failed
    ASSERT_TRUE(client.wait_for_status("You are not connected to zulu", pairs::error));
}

TEST(connect, introduces_itself_again_after_the_server_has_closed)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    for (int round = 0; round < 3; ++round) {
        std::optional<server_connection> connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
        ASSERT_TRUE(connection->send(3, "x"));
        ASSERT_TRUE(wait_for_last_status(client, "Connection closed by server"));
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == " "; },
                                                 "the marker goes"));
        EXPECT_TRUE(connection->wait_for_close());
    }
}

} // namespace
