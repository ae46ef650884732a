// connection_test.cpp - connects that real children perform, and their results.
#include "base/signal_door.hpp"
#include "unit/connection_fixture.hpp"
#include "unit/unprivileged.hpp"

#include "base/pause.hpp"
#include "net/log_files.hpp"
#include "support/temp_home.hpp"
#include "ui/keys.hpp"

#include <arpa/inet.h>
#include <csignal>
#include <fcntl.h>
#include <netdb.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

class connection : public connection_test
{
};

TEST_F(connection, is_pending_until_its_child_has_ended)
{
    server_entry& entry = local_server();
    command_connect(entry);
    EXPECT_EQ(said(), (status_lines{{"Try connecting to " + place(loopback, home.port()), 2}}));
    EXPECT_GT(entry.socket_fd, 0);
    EXPECT_GT(entry.connect_pid, 0);
    EXPECT_EQ(entry.connected, 0);
    EXPECT_EQ(entry.list_row, 1);
    // However long it takes: the result comes in only during a pause.
    await_child(entry.connect_pid);
    EXPECT_EQ(entry.connected, 0);
    EXPECT_EQ(marker_at(2), ' ');
}

TEST_F(connection, is_begun_a_tenth_of_a_second_after_the_command)
{
    const auto begin = std::chrono::steady_clock::now();
    command_connect(local_server());
    EXPECT_TRUE(home.has_connection(default_patience));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds{100});
}

TEST_F(connection, is_closed_in_programs_that_are_started)
{
    server_entry& entry = local_server();
    command_connect(entry);
    EXPECT_EQ(fcntl(entry.socket_fd, F_GETFD), FD_CLOEXEC);
    EXPECT_TRUE(wait_until([&] { return entry.connected == 1; }));
    EXPECT_EQ(fcntl(entry.socket_fd, F_GETFD), FD_CLOEXEC);
}

TEST_F(connection, of_the_directory_is_closed_in_programs_that_are_started)
{
    const unique_fd socket{connect_server(loopback, home.port(), nullptr)};
    ASSERT_TRUE(socket);
    EXPECT_EQ(fcntl(socket.get(), F_GETFD), FD_CLOEXEC);
}

TEST_F(connection, is_introduced_marked_and_reported)
{
    server_entry& entry = local_server();
    command_connect(entry);
    const pid_t child = entry.connect_pid;
    EXPECT_TRUE(wait_until([&] { return entry.connected == 1; }));
    const std::string where = place(loopback, home.port());
    EXPECT_EQ(said(), (status_lines{{"Try connecting to " + where, 2},
                                    {"Successfully connected " + where + ". Handle #" +
                                         std::to_string(entry.socket_fd),
                                     6}}));
    EXPECT_EQ(home.take().await_bytes(introduction_length),
              wire_bytes(introduction[0]) + wire_bytes(introduction[1]));
    EXPECT_EQ(marker_at(1 + 1), '*');
    EXPECT_EQ(screen.pair_at(app_state.server_pane, 2, 1), 7);
    EXPECT_TRUE(screen.is_bold_at(app_state.server_pane, 2, 1));
    EXPECT_EQ(entry.connect_pid, 0);
    EXPECT_EQ(waitpid(child, nullptr, WNOHANG), -1); // it has been reaped
}

TEST_F(connection, begins_with_the_silence_that_was_there_before)
{
    server_entry& entry = local_server();
    entry.last_data_time = 12'345;
    entry.heartbeat_sent = 1;
    entry.bytes_received = 99;
    connected(entry);
    EXPECT_EQ(entry.last_data_time, 12'345);
    EXPECT_EQ(entry.heartbeat_sent, 1);
    EXPECT_EQ(entry.bytes_received, 99U);
}

TEST_F(connection, is_reported_by_the_alias)
{
    server_entry& entry = local_server("srv");
    command_connect(entry);
    EXPECT_TRUE(wait_until([&] { return entry.connected == 1; }));
    const std::string where = place("srv", home.port());
    ASSERT_EQ(said().size(), 2U);
    EXPECT_EQ(said()[0].text, "Try connecting to " + where);
    EXPECT_EQ(said()[1].text.find("Successfully connected " + where + ". Handle #"), 0U);
    mark();
    connect_selected_server();
    EXPECT_EQ(said(), (status_lines{{"You are already connected to srv", 5}}));
    EXPECT_EQ(beeps(), 0U);
    disconnect_selected_server();
    EXPECT_EQ(said().back(), (status_line{"Connection to " + where + " closed", 7}));
    disconnect_selected_server();
    EXPECT_EQ(said().back(), (status_line{"You are not connected to srv", 5}));
    EXPECT_EQ(beeps(), 1U);
}

TEST_F(connection, is_made_for_every_child_that_ends_at_the_same_moment)
{
    listener ports[5];
    std::vector<server_entry*> entries;
    for (const listener& port : ports)
        entries.push_back(&add_server(loopback, nullptr, port.port()));
    for (const server_entry* entry : entries)
        command_connect(*entry);
    for (const server_entry* entry : entries)
        await_child(entry->connect_pid);
    // One pending signal stands for all of them.
    pause_for(1'000'000);
    for (std::size_t index = 0; index < entries.size(); ++index) {
        EXPECT_EQ(entries[index]->connected, 1) << index;
        EXPECT_EQ(marker_of(*entries[index]), '*') << index;
        const server_end server = ports[index].take();
        EXPECT_EQ(server.await_bytes(introduction_length),
                  wire_bytes(introduction[0]) + wire_bytes(introduction[1]));
    }
}

TEST_F(connection, attempts_that_fail_and_succeed_together_are_not_mixed_up)
{
    const unique_fd closed{bind_free_port(loopback)};
    server_entry& good = local_server("good");
    server_entry& bad = add_server(loopback, "bad", port_of(closed.get()));
    command_connect(good);
    command_connect(bad);
    await_child(good.connect_pid);
    await_child(bad.connect_pid);
    pause_for(1'000'000);
    EXPECT_EQ(good.connected, 1);
    EXPECT_GT(good.socket_fd, 0);
    EXPECT_EQ(bad.connected, 0);
    EXPECT_EQ(bad.socket_fd, 0);
    EXPECT_EQ(marker_of(bad), ' ');
}

TEST_F(connection, is_reported_and_cleared_when_it_fails)
{
    const unique_fd closed{bind_free_port(loopback)};
    server_entry& entry = add_server(loopback, "srv", port_of(closed.get()));
    entry.server_uuid = owned_text("left from before");
    entry.server_version = owned_text("1");
    const std::ptrdiff_t before = count_open_descriptors();
    command_connect(entry);
    EXPECT_TRUE(wait_until([&] { return entry.connect_pid == 0; }));
    EXPECT_EQ(said().back(),
              (status_line{"Unable to connect to " + place("srv", port_of(closed.get())), 5}));
    EXPECT_EQ(beeps(), 0U);
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(entry.connected, 0);
    EXPECT_EQ(entry.server_uuid, nullptr);
    EXPECT_EQ(entry.server_version, nullptr);
    EXPECT_EQ(count_open_descriptors(), before);
}

TEST_F(connection, fails_when_its_child_is_ended_by_a_signal)
{
    server_entry& entry = local_server("srv");
    for (const int signal_number : {SIGKILL, SIGTERM}) {
        // On a busy machine a child may end before the signal is sent.
        for (int attempt = 0; attempt < 10; ++attempt) {
            command_connect(entry);
            kill(entry.connect_pid, signal_number);
            ASSERT_TRUE(wait_until([&] { return entry.connect_pid == 0; }));
            if (entry.socket_fd == 0)
                break;
            disconnect_selected_server();
        }
        EXPECT_EQ(said().back(),
                  (status_line{"Unable to connect to " + place("srv", home.port()), 5}));
    }
}

TEST_F(connection, fails_when_its_child_cannot_be_started)
{
    server_entry& entry = local_server("srv");
    EXPECT_TRUE(unprivileged([&] {
        const rlimit none = {0, 0};
        if (setrlimit(RLIMIT_NPROC, &none) != 0)
            return false;
        command_connect(entry);
        const status_line failed = {"Unable to connect to " + place("srv", home.port()), 5};
        return said().back() == failed && entry.socket_fd == 0 && entry.connect_pid == 0;
    }));
}

TEST_F(connection, goes_to_port_2202_without_a_port)
{
    // An address of this test's own, on which nobody else listens.
    const std::string own =
        "127.77." + std::to_string(getpid() / 250 % 250) + "." + std::to_string(getpid() % 250 + 1);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(2202);
    ASSERT_EQ(inet_pton(AF_INET, own.c_str(), &address.sin_addr), 1);
    const unique_fd socket{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    ASSERT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(socket.get(), 1), 0);
    server_entry& entry = add_server(own.c_str(), nullptr, 0);
    command_connect(entry);
    EXPECT_TRUE(wait_until([&] { return entry.connected == 1; }));
    EXPECT_TRUE(wait_for_socket(socket.get(), POLLIN, default_patience));
    ASSERT_EQ(said().size(), 2U);
    EXPECT_EQ(said()[0].text, "Try connecting to " + own + ":2202");
    EXPECT_EQ(said()[1].text.find("Successfully connected " + own + ":2202. Handle #"), 0U);
    mark();
    disconnect_selected_server();
    EXPECT_EQ(said(), (status_lines{{"Connection to " + own + ":2202 closed", 7}}));
}

TEST_F(connection, finds_a_host_by_its_name)
{
    addrinfo* answer = nullptr;
    if (getaddrinfo("localhost", nullptr, nullptr, &answer) != 0)
        GTEST_SKIP() << "this machine does not know its own name";
    freeaddrinfo(answer);
    server_entry& entry = add_server("localhost", nullptr, home.port());
    command_connect(entry);
    EXPECT_TRUE(wait_until([&] { return entry.connected == 1; }));
    EXPECT_EQ(said()[0].text, "Try connecting to " + place("localhost", home.port()));
}

TEST_F(connection, is_not_begun_to_a_host_without_an_address)
{
    server_entry& entry = add_server("no..such..host", nullptr, home.port());
    command_connect(entry);
    EXPECT_EQ(said(),
              (status_lines{{"Try connecting to " + place("no..such..host", home.port()), 2},
                            {"Unable to create new socket", 5}}));
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(entry.connect_pid, 0);
    EXPECT_EQ(connect_server("no..such..host", 80, nullptr), -1);
}

TEST_F(connection, keeps_the_keys_typed_while_it_waits_for_a_name)
{
    const server_entry& entry = add_server("no..such..host", nullptr, home.port());
    type_ahead("ab");
    command_connect(entry);
    EXPECT_EQ(key_read(app_state.server_pane), 'a');
    EXPECT_EQ(key_read(app_state.server_pane), 'b');
    EXPECT_EQ(key_read(app_state.server_pane), ERR);
}

TEST_F(connection, is_not_begun_without_a_socket)
{
    server_entry& entry = local_server();
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const unique_fd lowest_free{dup(0)};
    rlimit none_left = before;
    none_left.rlim_cur = static_cast<rlim_t>(lowest_free.get()) + 1;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none_left), 0);
    command_connect(entry);
    const int in_place = connect_server(loopback, home.port(), nullptr);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(said().back(), (status_line{"Unable to create new socket", 5}));
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(entry.connect_pid, 0);
    EXPECT_EQ(in_place, -1);
}

TEST_F(connection, opens_the_log_that_is_wanted)
{
    const temp_home folder;
    server_entry& entry = local_server("srv");
    app_state.setting_texts[LogFilePath] = owned_text(folder.path());
    app_state.setting_flags = SaveToOne;
    command_connect(entry);
    EXPECT_TRUE(wait_until([&] { return entry.connected == 1; }));
    EXPECT_NE(app_state.shared_log, nullptr);
    ASSERT_EQ(said().size(), 3U);
    EXPECT_EQ(said()[1].text.find("Successfully connected"), 0U);
    EXPECT_EQ(
        said()[2],
        (status_line{"Logfile '" + folder.path_of("ACARS.log") + "' successfully opened", 6}));
    disconnect_selected_server();
    EXPECT_NE(app_state.shared_log, nullptr);
    app_state.setting_flags = ACARSLog;
    command_connect(entry);
    EXPECT_TRUE(wait_until([&] { return entry.connected == 1; }));
    EXPECT_EQ(said().back(),
              (status_line{"Logfile 'srv/" + folder.path() + ".log' not opened", 6}));
}

TEST_F(connection, opens_no_log_while_logging_is_off)
{
    app_state.setting_flags = ~static_cast<std::uint32_t>(ACARSLog | SaveToOne);
    const server_end server = connected(local_server());
    EXPECT_EQ(app_state.shared_log, nullptr);
    EXPECT_EQ(server_at(app_state.servers, 0)->log_file, nullptr);
}

TEST_F(connection, cannot_be_begun_twice)
{
    server_entry& entry = local_server("srv");
    command_connect(entry);
    const pid_t child = entry.connect_pid;
    connect_selected_server();
    EXPECT_EQ(said().back(), (status_line{"You are already connected to srv", 5}));
    EXPECT_EQ(entry.connect_pid, child);
}

TEST_F(connection, is_made_with_any_exit_status_of_its_child_but_0)
{
    server_entry& entry = add_server(loopback, "srv");
    const server_end server = connect(entry);
    entry.connected = 0;
    signal_install(SIGCHLD, on_connect_result);
    entry.connect_pid = fork();
    if (entry.connect_pid == 0)
        _exit(7);
    EXPECT_TRUE(wait_until([&] { return entry.connect_pid == 0; }));
    EXPECT_EQ(entry.connected, 1);
    EXPECT_EQ(server.take_packets(), introduction);
}

TEST_F(connection, ignores_the_result_of_an_unknown_child)
{
    server_entry& entry = local_server();
    signal_install(SIGCHLD, on_connect_result);
    const pid_t child = fork();
    if (child == 0)
        _exit(1);
    EXPECT_TRUE(wait_until([&] { return kill(child, 0) != 0; }));
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(entry.connected, 0);
    EXPECT_EQ(entry.socket_fd, 0);
}

TEST_F(connection, finds_its_result_after_that_of_an_unknown_child)
{
    const pid_t nobodys = fork();
    if (nobodys == 0)
        _exit(1);
    server_entry& entry = local_server();
    command_connect(entry);
    await_child(nobodys);
    await_child(entry.connect_pid);
    pause_for(1'000'000);
    EXPECT_EQ(entry.connected, 1);
    EXPECT_NE(kill(nobodys, 0), 0);
}

TEST_F(connection, gives_the_socket_or_none_when_made_synchronously)
{
    const std::ptrdiff_t before = count_open_descriptors();
    const unique_fd socket{connect_server(loopback, home.port(), nullptr)};
    EXPECT_GT(socket.get(), 0);
    EXPECT_TRUE(home.has_connection(default_patience));
    EXPECT_EQ(count_open_descriptors(), before + 1);
    const unique_fd closed{bind_free_port(loopback)};
    EXPECT_EQ(connect_server(loopback, port_of(closed.get()), nullptr), -1);
    EXPECT_EQ(count_open_descriptors(), before + 2);
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(home.take().take_bytes(), "");
}

} // namespace
