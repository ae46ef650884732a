// directory_session.cpp - the client and the directory from which it fetches lists of servers.
#include "e2e/directory_session.hpp"

#include <array>
#include <cstdio>

const std::string directory_request = "GET /tovrikserver.main HTTP/1.0\r\n"
                                      "Host: localhost\r\n"
                                      "Accept: */*\r\n"
                                      "User-Agent: tovrikclient-0.02.001\r\n\r\n";

const std::string answer_header = "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\n";

std::string directory_line(const server_settings& server)
{
    return server.name + '\t' + server.port + "\tthird\t" + server.location + '\t' + server.info +
           "\tsixth\t" + server.alias + "\teighth\tninth\n";
}

std::string many_lines(int count, const std::string& prefix)
{
    std::string lines;
    for (int number = 1; number <= count; ++number) {
        std::array<char, 16> digits{};
        std::snprintf(digits.data(), digits.size(), "%06d", number);
        lines += directory_line({.name = prefix + digits.data() + ".example"});
    }
    return lines;
}

std::string fetched(int count)
{
    return "Serverlist fetched with " + std::to_string(count) + " entries";
}

client_start with_directory(int port, client_start how)
{
    how.environment["LD_PRELOAD"] = std::string{CLOCK_PRELOAD} + ":" + REDIRECT_PRELOAD;
    how.environment["TEST_DIRECTORY_PORT"] = std::to_string(port);
    return how;
}

directory_test::directory_test()
{
    settings.save_on_exit = true;
}

testing::AssertionResult directory_test::start(const client_start& how)
{
    return client.start(settings, with_directory(directory.port(), how));
}

std::optional<server_connection> directory_test::fetch()
{
    client.terminal().send_control('r');
    return take_request();
}

std::optional<server_connection> directory_test::take_request()
{
    std::optional<server_connection> connection = directory.accept();
    if (!connection) {
        ADD_FAILURE() << "nobody came for the list\n" << client.terminal().description();
        return std::nullopt;
    }
    EXPECT_EQ(connection->read_bytes(directory_request.size()), directory_request);
    return connection;
}

testing::AssertionResult directory_test::fetch_answered(const std::string& answer, int count)
{
    std::optional<server_connection> connection = fetch();
    if (!connection)
        return testing::AssertionFailure();
    if (!connection->send_bytes(answer))
        return testing::AssertionFailure() << "the client does not take the list";
    connection->close();
    return wait_for_fetched(count);
}

testing::AssertionResult directory_test::wait_for_fetched(int count)
{
    return client.wait_for_status(fetched(count), pairs::server_text, false);
}

void directory_test::expect_saved(const std::vector<server_settings>& servers)
{
    client.quit();
    client_settings saved = settings;
    saved.servers = servers;
    EXPECT_EQ(client.home().read_config(), config_text(saved));
}
