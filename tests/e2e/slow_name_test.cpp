// slow_name_test.cpp - a server whose name takes its time to be found holds nothing else up.
#include "e2e/network_session.hpp"

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

/// A client that is connected to one server and has begun to look up the name of another.
class slow_name : public testing::Test
{
protected:
    void SetUp() override
    {
        client_settings settings;
        settings.save_on_exit = true;
        settings.servers = {
            {.name = "slow.example", .port = std::to_string(named.port()), .alias = "slow"},
            {.name = "127.0.0.1", .port = std::to_string(numeric.port()), .alias = "quick"}};
        client_start how = wide_terminal;
        how.environment["LD_PRELOAD"] = CLOCK_PRELOAD ":" RESOLVER_PRELOAD;
        how.environment["SLOW_RESOLVER_FOLDER"] = answers.path();
        ASSERT_TRUE(client.start(settings, how));
        ASSERT_TRUE(select_row(client, 2));
        connection = client.connect_selected(numeric);
        ASSERT_TRUE(connection);
        ASSERT_TRUE(select_row(client, 1));
        client.terminal().send_control('l');
        ASSERT_TRUE(client.terminal().wait_until(
            [&] { return answers.read_file("asked").has_value(); }, "the name is asked for"));
    }

    testing::AssertionResult messages_flow(const std::string& flight)
    {
        if (!connection->send(plain_packet(document_of({.flight = flight}))))
            return testing::AssertionFailure() << "the client takes no bytes";
        return wait_for_message_rows(client, lines_of({.flight = flight}));
    }

    /// Keys that were typed have begun to wait in the terminal, and none does so any more.
    testing::AssertionResult keys_are_read()
    {
        const unique_fd terminal = client.open_terminal();
        bool have_waited = false;
        return client.terminal().wait_until(
            [&] {
                int waiting = 0;
                const bool is_known = ioctl(terminal.get(), FIONREAD, &waiting) == 0;
                have_waited = have_waited || waiting > 0;
                return is_known && have_waited && waiting == 0;
            },
            "every key is read");
    }

    void answer(const std::string& address)
    {
        // In one step: the waiting side must not see a file that has no text yet.
        answers.write_file("prepared", address);
        ASSERT_EQ(rename(answers.path_of("prepared").c_str(), answers.path_of("answer").c_str()),
                  0);
    }

    scripted_server named;
    scripted_server numeric;
    temp_home answers;
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(slow_name, that_does_not_exist_is_reported_while_messages_flow)
{
    ASSERT_TRUE(messages_flow("DURING1"));
    ASSERT_TRUE(wait_for_notice(client, *connection, "in the wait"));
    EXPECT_FALSE(client.terminal().shows("Unable to create new socket"));
    ASSERT_NO_FATAL_FAILURE(answer(""));
    ASSERT_TRUE(client.wait_for_status("Unable to create new socket", pairs::error));
    ASSERT_TRUE(messages_flow("AFTER"));
    ASSERT_TRUE(client.wait_for_keys());
    client.quit();
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
}

TEST_F(slow_name, that_is_found_at_last_is_connected_to)
{
    ASSERT_TRUE(messages_flow("DURING1"));
    ASSERT_TRUE(messages_flow("DURING2"));
    EXPECT_FALSE(named.has_waiting_client());
    ASSERT_NO_FATAL_FAILURE(answer("127.0.0.1"));
    std::optional<server_connection> second = named.accept();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->read_packet(), (server_packet{.kind = 101, .payload = "0 02 001"}));
    ASSERT_TRUE(wait_for_notice(client, *second, "found"));
    ASSERT_TRUE(messages_flow("AFTER"));
}

TEST_F(slow_name, keeps_keys_for_afterwards)
{
    client.terminal().send_control('h');
    ASSERT_TRUE(messages_flow("DURING"));
    EXPECT_FALSE(client.terminal().shows("To exit press ^H"));
    ASSERT_NO_FATAL_FAILURE(answer(""));
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.wait_for_status("Unable to create new socket", pairs::error));
}

TEST_F(slow_name, forgets_keys_beyond_the_sixty_fourth)
{
    client.terminal().send(std::string(64, 'q'));
    client.terminal().send_control('h');
    ASSERT_TRUE(keys_are_read());
    ASSERT_NO_FATAL_FAILURE(answer(""));
    ASSERT_TRUE(client.wait_for_status("Unable to create new socket", pairs::error));
    client.terminal().send_control('i');
    ASSERT_TRUE(client.terminal().wait_for_text("[ Close Window ^I ]"));
    EXPECT_FALSE(client.terminal().shows("To exit press ^H"));
}

TEST_F(slow_name, ends_with_the_program_without_an_answer)
{
    unlink(client.home().path_of("ncursesclient.conf").c_str());
    client.quit();
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    EXPECT_TRUE(connection->wait_for_close());
    EXPECT_TRUE(client.home().read_config()) << "saved in order";
}

TEST_F(slow_name, survives_a_resize_and_a_password_in_between)
{
    client.terminal().resize(30, 100);
    ASSERT_TRUE(connection->send(capabilities_packet("<NeedAuth>1</NeedAuth>")));
    ASSERT_TRUE(client.terminal().wait_for_text("[ Password required ]"));
    client.terminal().send("abc\r");
    EXPECT_EQ(connection->read_packet(),
              (server_packet{.kind = 81, .payload = "900150983cd24fb0d6963f7d28e17f72"}));
    ASSERT_TRUE(client.terminal().wait_for_no_text("Password required"));
    ASSERT_NO_FATAL_FAILURE(answer(""));
    ASSERT_TRUE(client.wait_for_status("Unable to create new socket", pairs::error));
}

} // namespace
