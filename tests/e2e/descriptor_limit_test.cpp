// descriptor_limit_test.cpp - a process may open only so many files: what goes beyond that is
// refused with a message, and everything else goes on.
#include "e2e/directory_session.hpp"
#include "e2e/network_session.hpp"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sys/resource.h>

namespace
{

constexpr int connecting_speed = 20;

/// Servers on one port, each with an address of its own, so that one listener serves them all.
client_settings make_settings(const scripted_server& listener, int count)
{
    client_settings settings;
    for (int index = count; index > 0; --index)
        settings.servers.push_back({.name = "127.0.0." + std::to_string(100 + index),
                                    .port = std::to_string(listener.port()),
                                    .alias = "s" + std::to_string(100 + index)});
    return settings;
}

/// From now on the process gets no descriptor with this number or above.
bool limit_descriptors(pid_t process, int count)
{
    rlimit limit{};
    if (prlimit(process, RLIMIT_NOFILE, nullptr, &limit) != 0)
        return false;
    limit.rlim_cur = static_cast<rlim_t>(count);
    return prlimit(process, RLIMIT_NOFILE, &limit, nullptr) == 0;
}

class descriptor_limit : public testing::Test
{
protected:
    [[nodiscard]] testing::AssertionResult start(const client_settings& settings)
    {
        client.clock().set_speed(connecting_speed);
        client_start how = wide_terminal;
        how.alarm_ms_per_second = 1000 / connecting_speed;
        testing::AssertionResult started = client.start(settings, how);
        in_use = started ? descriptors() : 0;
        return started;
    }

    int descriptors()
    {
        const std::string folder =
            "/proc/" + std::to_string(client.terminal().process_id()) + "/fd";
        std::error_code failure;
        const std::filesystem::directory_iterator all{folder, failure};
        return failure ? -1 : static_cast<int>(std::distance(begin(all), end(all)));
    }

    [[nodiscard]] bool limit_to(int count)
    {
        return limit_descriptors(client.terminal().process_id(), count);
    }

    /// ^L on the selected server: accepts the connection and waits for the marker.
    void connect_selected()
    {
        client.terminal().send_control('l');
        std::optional<server_connection> connection = listener.accept();
        ASSERT_TRUE(connection) << client.terminal().description();
        ASSERT_TRUE(connection->send(capabilities_packet("<Version>1</Version>")));
        connections.push_back(std::move(*connection));
        ASSERT_TRUE(client.terminal().wait_until(
            [&] {
                const int row = client.bar_row();
                return row != 0 && client.marker(row).text == "*";
            },
            "the server is marked as connected"));
    }

    void select_next()
    {
        const std::string before = client.bar_text();
        client.terminal().send_key(named_key::down);
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() != before; },
                                                 "the bar has moved"));
    }

    /// Connects to `count` servers, from the selected one down, and leaves the bar on the next one.
    void connect_to(int count)
    {
        for (int index = 0; index < count; ++index) {
            ASSERT_NO_FATAL_FAILURE(connect_selected());
            ASSERT_NO_FATAL_FAILURE(select_next());
        }
    }

    scripted_server listener{"0.0.0.0"};
    client_session client;
    std::vector<server_connection> connections;
    int in_use = 0; // descriptors of a client without connections
};

class small_descriptor_limit : public descriptor_limit, public testing::WithParamInterface<int>
{
};

TEST_P(small_descriptor_limit, refuses_one_server_more_and_goes_on)
{
    const int limit = GetParam();
    ASSERT_TRUE(start(make_settings(listener, limit)));
    ASSERT_TRUE(limit_to(limit));
    ASSERT_NO_FATAL_FAILURE(connect_to(limit - in_use));
    client.terminal().send_control('l');
    ASSERT_TRUE(client.wait_for_status("Unable to create new socket", pairs::error));

    ASSERT_TRUE(wait_for_notice(client, connections.front(), "the first still talks"));
    ASSERT_TRUE(wait_for_notice(client, connections.back(), "the last still talks"));
    ASSERT_TRUE(connections.front().send({.kind = 3, .payload = "bye"}));
    ASSERT_TRUE(connections.front().wait_for_close());
    ASSERT_NO_FATAL_FAILURE(connect_selected());
}

INSTANTIATE_TEST_SUITE_P(few, small_descriptor_limit, testing::Values(16, 64));

TEST_F(descriptor_limit, leaves_a_log_unopened_and_goes_on)
{
    client_settings settings = make_settings(listener, 2);
    settings.acars_log = true;
    settings.log_folder = "log";
    client.home().make_folder("s102");
    client.home().make_folder("s101");
    ASSERT_TRUE(start(settings));
    ASSERT_TRUE(limit_to(in_use + 1));
    ASSERT_NO_FATAL_FAILURE(connect_selected());
    ASSERT_TRUE(client.wait_for_status("Logfile 's102/log.log' not opened", pairs::notice));
    ASSERT_TRUE(connections.front().send(plain_packet(document_of({}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
    EXPECT_FALSE(client.home().read_file("s102/log.log"));
}

TEST_F(descriptor_limit, leaves_the_log_of_all_servers_unopened_until_a_descriptor_is_free)
{
    client_settings settings = make_settings(listener, 2);
    settings.save_to_one = true;
    settings.log_folder = "logs";
    client.home().make_folder("logs");
    ASSERT_TRUE(start(settings));
    ASSERT_TRUE(limit_to(in_use + 1));
    ASSERT_NO_FATAL_FAILURE(connect_selected());
    ASSERT_TRUE(client.wait_for_status("Logfile 'logs/ACARS.log' not opened", pairs::notice));
    ASSERT_TRUE(limit_to(in_use + 3));
    ASSERT_NO_FATAL_FAILURE(select_next());
    ASSERT_NO_FATAL_FAILURE(connect_selected());
    ASSERT_TRUE(
        client.wait_for_status("Logfile 'logs/ACARS.log' successfully opened", pairs::notice));
    ASSERT_TRUE(connections.front().send(plain_packet(document_of({}))));
    ASSERT_TRUE(wait_for_file(client, "logs/ACARS.log", text_of({})));
}

TEST_F(descriptor_limit, leaves_a_report_unsaved)
{
    ASSERT_TRUE(start(make_settings(listener, 1)));
    ASSERT_TRUE(limit_to(in_use + 1));
    ASSERT_NO_FATAL_FAILURE(connect_selected());
    client.clock().set_speed(1); // the prompt waits ten seconds for its answer
    client.clock().set_alarm_pace(1000 / connecting_speed);
    const server_packet report = compressed_packet("a report");
    ASSERT_TRUE(connections.front().send(74, std::to_string(report.payload.size()) + "\t8"));
    ASSERT_TRUE(connections.front().send({.kind = 205, .payload = report.payload}));
    ASSERT_TRUE(client.terminal().wait_for_text("Save ZOBE Style Report as..."));
    client.terminal().send("report.txt\n");
    ASSERT_TRUE(client.wait_for_status("Unable to save report as './report.txt'", pairs::error));
    EXPECT_FALSE(client.home().read_file("report.txt"));
    ASSERT_TRUE(wait_for_notice(client, connections.front(), "still here"));
}

TEST_F(descriptor_limit, saves_the_configuration_since_connections_are_closed_first)
{
    client_settings settings = make_settings(listener, 16);
    settings.save_on_exit = true;
    const std::string saved = config_text(settings);
    client.home().write_config(saved + "not written by the client\n");
    client.clock().set_speed(connecting_speed);
    client_start how = wide_terminal;
    how.alarm_ms_per_second = 1000 / connecting_speed;
    ASSERT_TRUE(client.start_as_it_is(how));
    in_use = descriptors();
    ASSERT_TRUE(limit_to(16));
    ASSERT_NO_FATAL_FAILURE(connect_to(16 - in_use));
    client.quit();
    EXPECT_EQ(client.home().read_config(), saved);
}

class descriptor_limit_of_a_fetch : public directory_test
{
};

TEST_F(descriptor_limit_of_a_fetch, ends_it_like_a_fetch_that_reaches_no_directory)
{
    ASSERT_TRUE(start());
    const pid_t process = client.terminal().process_id();
    ASSERT_TRUE(limit_descriptors(process, 3));
    client.terminal().send_control('r');
    ASSERT_TRUE(wait_for_fetched(1));
    ASSERT_TRUE(limit_descriptors(process, 64));
    ASSERT_TRUE(fetch_answered(answer_header + directory_line({.name = "new.example"}), 2));
}

} // namespace
