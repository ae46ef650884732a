// slow_name_test.cpp - a server whose name takes long to resolve delays nothing else.
#include "e2e/network_session.hpp"
#include "e2e/whole_screen.hpp"

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <unistd.h>

namespace
{

/// A client that is connected to one server and is looking up the name of another.
class slow_name : public testing::Test
{
protected:
    void SetUp() override
    {
        client_settings settings;
        settings.save_on_exit = true;
        settings.acars_log = true;
        settings.log_folder = "logs";
        for (const char* alias : {"slow", "quick"})
            client.home().make_folder(alias);
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
        if (testing::AssertionResult shown =
                wait_for_message_rows(client, lines_of({.flight = flight}));
            !shown)
            return shown;
        logged += text_of({.flight = flight});
        return wait_for_file(client, "quick/logs.log", logged);
    }

    /// Waits until typed keys have reached the terminal and the client has read all of them.
    testing::AssertionResult keys_are_read()
    {
        bool have_waited = false;
        return client.terminal().wait_until(
            [&] {
                const bool do_wait = client.terminal().has_unread_keys();
                have_waited = have_waited || do_wait;
                return have_waited && !do_wait;
            },
            "every key is read");
    }

    void answer(const std::string& address)
    {
        // In one step: the waiting side must not see a file without its text.
        answers.write_file("prepared", address);
        ASSERT_EQ(rename(answers.path_of("prepared").c_str(), answers.path_of("answer").c_str()),
                  0);
    }

    scripted_server named;
    scripted_server numeric;
    temp_home answers;
    client_session client;
    std::optional<server_connection> connection;
    std::string logged;
};

TEST_F(slow_name, is_reported_while_messages_flow_if_it_does_not_exist)
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

TEST_F(slow_name, leads_to_a_connection_when_it_is_found_at_last)
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

TEST_F(slow_name, keeps_typed_keys_for_later)
{
    client.terminal().send_control('h');
    ASSERT_TRUE(messages_flow("DURING"));
    EXPECT_FALSE(client.terminal().shows("To exit press ^H"));
    ASSERT_NO_FATAL_FAILURE(answer(""));
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.wait_for_status("Unable to create new socket", pairs::error));
}

TEST_F(slow_name, keeps_the_order_of_keys)
{
    client.terminal().send("\x04\033OB"); // ^D on the server with the name, then down
    ASSERT_TRUE(messages_flow("DURING"));
    ASSERT_NO_FATAL_FAILURE(answer(""));
    ASSERT_TRUE(client.wait_for_status("You are not connected to slow", pairs::error));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 2; }, "the bar"));
    ASSERT_TRUE(wait_for_notice(client, *connection, "still here"));
}

TEST_F(slow_name, drops_keys_beyond_the_sixty_fourth)
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

TEST_F(slow_name, ends_with_the_program_whatever_was_typed_before)
{
    client.terminal().send(std::string(80, 'q'));
    client.quit();
    EXPECT_TRUE(connection->wait_for_close());
}

TEST_F(slow_name, allows_a_resize_at_once)
{
    client.terminal().resize(30, 100);
    ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
    EXPECT_FALSE(client.terminal().shows("Try connecting"));
    ASSERT_TRUE(messages_flow("BIGGER"));
    ASSERT_TRUE(answers.read_file("asked"));
    ASSERT_NO_FATAL_FAILURE(answer("127.0.0.1"));
    ASSERT_TRUE(named.accept());
    ASSERT_TRUE(client.terminal().wait_for_text("Successfully connected slow:"));
}

TEST_F(slow_name, is_reported_like_a_quick_one)
{
    const std::string port = std::to_string(named.port());
    EXPECT_EQ(client.status_lines().back(), "Try connecting to slow:" + port);
    ASSERT_NO_FATAL_FAILURE(answer("127.0.0.1"));
    ASSERT_TRUE(named.accept());
    ASSERT_TRUE(wait_for_last_status(client, "Logfile 'slow/logs.log' successfully opened"));
    const std::vector<std::string> lines = client.status_lines();
    EXPECT_EQ(lines[1], "Try connecting to slow:" + port);
    EXPECT_TRUE(lines[2].starts_with("Successfully connected slow:" + port + ". Handle #"));
    EXPECT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == "*"; },
                                             "the mark of a connection"));
}

TEST_F(slow_name, makes_a_second_connect_wait)
{
    client.terminal().send_control('l');
    client.terminal().send_key(named_key::down);
    client.terminal().send_control('l');
    ASSERT_TRUE(messages_flow("DURING"));
    EXPECT_EQ(client.bar_row(), 1);
    EXPECT_FALSE(client.terminal().shows("You are already connected"));
    ASSERT_NO_FATAL_FAILURE(answer("127.0.0.1"));
    ASSERT_TRUE(client.wait_for_status("You are already connected to slow", pairs::error));
    ASSERT_TRUE(client.wait_for_status("You are already connected to quick", pairs::error));
    EXPECT_TRUE(named.accept());
    EXPECT_EQ(client.bar_row(), 2);
    EXPECT_FALSE(named.has_waiting_client());
}

/// How many threads a process has.
std::ptrdiff_t count_threads(pid_t process)
{
    return std::distance(
        std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task"), {});
}

TEST(slow_names, do_no_harm_when_found_after_the_screen_was_left)
{
    scripted_server directory;
    temp_home answers;
    answers.write_file("answer", "127.0.0.1");
    client_session client;
    client_settings settings;
    settings.servers = {{.name = "slow.example", .alias = "slow"}};
    client_start how;
    how.environment["LD_PRELOAD"] = CLOCK_PRELOAD ":" RESOLVER_PRELOAD ":" REDIRECT_PRELOAD;
    how.environment["SLOW_RESOLVER_FOLDER"] = answers.path();
    how.environment["TEST_DIRECTORY_PORT"] = std::to_string(directory.port());
    ASSERT_TRUE(client.start(settings, how));
    // A fetch in progress delays the client's end.
    client.terminal().send_control('r');
    std::optional<server_connection> list = directory.accept();
    ASSERT_TRUE(list);
    for (const char* name : {"answer", "asked"})
        unlink(answers.path_of(name).c_str());
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_until([&] { return answers.read_file("asked").has_value(); },
                                             "the name is asked for"));
    const std::ptrdiff_t threads = count_threads(client.terminal().process_id());
    client.terminal().send_control('x');
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return !client.terminal().screen().alternate_screen(); }, "the screen is left"));
    answers.write_file("answer", "127.0.0.1");
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return count_threads(client.terminal().process_id()) == threads - 1; },
        "the name is found"));
    list->close();
    const std::optional<int> status = client.wait_for_exit();
    ASSERT_TRUE(status);
    EXPECT_EQ(*status, 0);
    EXPECT_EQ(client.terminal().error_text(), "");
    EXPECT_FALSE(client.terminal().screen().alternate_screen());
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
