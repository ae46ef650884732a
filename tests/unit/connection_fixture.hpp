// connection_fixture.hpp - the user's connect command on a port that the test listens on.
#pragma once

#include "net/connect_attempt.hpp"
#include "net/connect_commands.hpp"
#include "net/connection_end.hpp"
#include "support/loopback.hpp"
#include "unit/net_fixture.hpp"

#include <filesystem>
#include <iterator>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>

inline constexpr const char* loopback = "127.0.0.1";
inline const wire_packets introduction = {{101, "0 02 001"}, {151, "CXML"}};
inline constexpr std::size_t introduction_length = 12 + 8 + 12 + 4;

/// A port where connections wait until the test accepts them.
class listener
{
public:
    listener()
    {
        EXPECT_EQ(listen(socket.get(), 16), 0);
    }
    int port() const
    {
        return port_of(socket.get());
    }
    bool has_connection(std::chrono::milliseconds limit) const
    {
        return wait_for_socket(socket.get(), POLLIN, limit);
    }
    server_end take() const
    {
        EXPECT_TRUE(has_connection(default_patience));
        return server_end{accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC)};
    }

private:
    unique_fd socket{bind_free_port(loopback)};
};

/// Waits until a child has ended, and does not reap it.
inline void await_child(pid_t child)
{
    siginfo_t result;
    EXPECT_EQ(waitid(P_PID, static_cast<id_t>(child), &result, WEXITED | WNOWAIT), 0);
}

/// How many descriptors the test program has open.
inline std::ptrdiff_t count_open_descriptors()
{
    const std::filesystem::directory_iterator folder{"/proc/self/fd"};
    return std::distance(begin(folder), end(folder));
}

/// A server as messages name it.
inline std::string place(const char* name, int port)
{
    return std::string{name} + ":" + std::to_string(port);
}

class connection_test : public net_test
{
protected:
    /// Gives the user's command for an entry.
    void command_connect(const server_entry& entry)
    {
        select(entry);
        mark();
        connect_selected_server();
    }

    static void select(const server_entry& entry)
    {
        for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
            if (server_at(app_state.servers, index) == &entry)
                app_state.selected = index + 1;
        }
    }

    /// Connects to the listener and reads the introduction.
    server_end connected(server_entry& entry)
    {
        command_connect(entry);
        EXPECT_TRUE(wait_until([&] { return entry.connected == 1; }));
        server_end server = home.take();
        EXPECT_EQ(server.await_bytes(introduction_length).size(), introduction_length);
        mark();
        return server;
    }

    server_entry& local_server(const char* alias = nullptr) const
    {
        return add_server(loopback, alias, home.port());
    }

    char marker_at(int row) const
    {
        return static_cast<char>(mvwinch(app_state.server_pane, row, 1) & A_CHARTEXT);
    }

    listener home;
};
