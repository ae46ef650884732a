// disconnect_test.cpp - connections that the user ends, made or still being made.
#include "unit/connection_fixture.hpp"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace
{

class disconnect : public connection_test
{
};

TEST_F(disconnect, does_nothing_without_a_selected_server)
{
    server_entry& entry = local_server();
    for (const std::int32_t selected : {-1, 0, 2, 1000}) {
        app_state.selected = selected;
        connect_selected_server();
        disconnect_selected_server();
        EXPECT_EQ(entry.socket_fd, 0) << selected;
    }
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(disconnect, says_good_bye_and_clears_the_connection)
{
    server_entry& entry = local_server("srv");
    const server_end server = connected(entry);
    entry.server_uuid = owned_text("uuid");
    entry.server_version = owned_text("1");
    entry.report_buffer = owned_text("half a report");
    entry.report_received = 13;
    entry.log_file = std::tmpfile();
    entry.heartbeat_sent = 1;
    entry.last_data_time = 12'345;
    entry.bytes_received = 99;
    entry.Password = owned_text("a digest");
    entry.can_modify = 1;
    disconnect_selected_server();
    EXPECT_EQ(server.await_bytes(20), wire_bytes({2, "Good Bye"}));
    EXPECT_TRUE(server.await_end());
    EXPECT_EQ(said(),
              (status_lines{{"Connection to " + place("srv", home.port()) + " closed", 7}}));
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(entry.server_uuid, nullptr);
    EXPECT_EQ(entry.server_version, nullptr);
    EXPECT_EQ(entry.report_buffer, nullptr);
    EXPECT_EQ(entry.report_received, 0U);
    EXPECT_EQ(entry.log_file, nullptr);
    EXPECT_TRUE(is_wintouched(app_state.status_pane));
    // This outlives the connection.
    EXPECT_EQ(entry.connected, 1);
    EXPECT_EQ(entry.heartbeat_sent, 1);
    EXPECT_EQ(entry.last_data_time, 12'345);
    EXPECT_EQ(entry.bytes_received, 99U);
    EXPECT_STREQ(entry.Password, "a digest");
    EXPECT_EQ(entry.can_modify, 1);
}

TEST_F(disconnect, ends_a_connection_that_another_process_holds_too)
{
    server_entry& entry = local_server();
    const server_end server = connected(entry);
    const unique_fd held{dup(entry.socket_fd)};
    disconnect_selected_server();
    EXPECT_TRUE(server.await_end());
    char byte;
    EXPECT_EQ(recv(held.get(), &byte, 1, MSG_DONTWAIT), 0) << "nothing can come in any more";
}

TEST_F(disconnect, blanks_the_row_above_the_marker)
{
    server_entry& entry = local_server();
    add_server("z.example");
    const server_end server = connected(entry); // second in the list
    EXPECT_EQ(marker_at(3), '*');
    mvwaddch(app_state.server_pane, 2, 1, 'X');
    disconnect_selected_server();
    EXPECT_EQ(marker_at(2), ' ');
    EXPECT_EQ(marker_at(3), '*');
}

TEST_F(disconnect, blanks_the_heading_for_the_first_server)
{
    const server_end server = connected(local_server());
    mvwaddch(app_state.server_pane, 1, 1, 'X');
    disconnect_selected_server();
    EXPECT_EQ(marker_at(1), ' ');
    EXPECT_EQ(marker_at(2), '*');
}

TEST_F(disconnect, gives_up_a_pending_connect)
{
    server_entry& entry = local_server("srv");
    const std::ptrdiff_t before = count_open_descriptors();
    command_connect(entry);
    const pid_t child = entry.connect_pid;
    mark();
    disconnect_selected_server();
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(entry.connect_pid, 0);
    EXPECT_EQ(count_open_descriptors(), before);
    const status_lines closed = {{"Connection to " + place("srv", home.port()) + " closed", 7}};
    EXPECT_EQ(said(), closed);
    // Its result has no meaning any more.
    EXPECT_TRUE(wait_until([&] { return kill(child, 0) != 0; }));
    EXPECT_EQ(said(), closed);
    EXPECT_EQ(entry.connected, 0);
    EXPECT_EQ(marker_at(2), ' ');
}

TEST_F(disconnect, leaves_a_connect_begun_after_it_alone)
{
    server_entry& entry = local_server("srv");
    command_connect(entry);
    disconnect_selected_server();
    const server_end server = connected(entry);
    EXPECT_FALSE(server.is_ended());
    EXPECT_GT(entry.socket_fd, 0);
}

TEST_F(disconnect, drops_half_a_packet)
{
    server_entry& entry = local_server();
    const server_end server = connected(entry);
    entry.rx_packet = static_cast<packet_buffer*>(std::calloc(1, 4108));
    entry.rx_received = 5;
    disconnect_selected_server();
    EXPECT_EQ(entry.rx_packet, nullptr);
    EXPECT_EQ(entry.rx_received, 0U);
}

TEST_F(disconnect, touches_no_descriptor_without_a_connection)
{
    server_entry& entry = local_server();
    for (const std::int32_t socket : {0, -1}) {
        entry.socket_fd = socket;
        connection_end_at_exit(entry);
        EXPECT_EQ(entry.socket_fd, 0);
        EXPECT_NE(fcntl(STDIN_FILENO, F_GETFD), -1);
    }
    EXPECT_EQ(said(), status_lines{});
}

} // namespace
