// demo_shot.cpp - drives the demo in a terminal of its own, as a person would, and prints its
// screen.
//
// Usage: demo_shot CLIENT HOME. Exits with 0 only if both servers' transmissions have been on the
// screen, and in the log that HOME's configuration asks for.
#include "support/terminal_session.hpp"

#include <cstdio>
#include <fstream>
#include <string>

namespace
{

constexpr int rows = 30;
constexpr int columns = 100;
constexpr int first_server_row = 2;
constexpr int servers = 2;
constexpr int wanted_records = 6;
constexpr std::chrono::seconds traffic_patience{60};

int count_of(const std::string& text, const std::string& part)
{
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

int logged_records()
{
    std::ifstream log{"logs/ACARS.log"};
    const std::string text{std::istreambuf_iterator<char>{log}, {}};
    return count_of(text, "ACARS mode: ");
}

/// Connects to each server of the list, and sees each one's marker appear.
bool connect_all(terminal_session& session)
{
    for (int server = 0; server < servers; ++server) {
        if (server > 0)
            session.send_key(named_key::down);
        session.send_control('l');
        const int row = first_server_row + server;
        const auto is_connected = [&] { return session.row(row).find("*") != std::string::npos; };
        if (!session.wait_until(is_connected, "a connection"))
            return false;
    }
    return true;
}

/// Waits for messages of both servers: each shows its flight statistics beside its own row.
bool messages_seen(terminal_session& session)
{
    bool seen[servers] = {};
    const auto all_seen = [&] {
        for (int server = 0; server < servers; ++server)
            seen[server] =
                seen[server] ||
                session.row(first_server_row + server).find("Unique Flights:") != std::string::npos;
        return seen[0] && seen[1] && session.shows("ACARS mode: ") &&
               logged_records() >= wanted_records;
    };
    return static_cast<bool>(
        session.wait_until(all_seen, "messages of both servers", traffic_patience));
}

void screen_print(terminal_session& session)
{
    for (int row = 0; row < rows; ++row)
        std::puts(session.row(row).c_str());
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fputs("usage: demo_shot CLIENT HOME\n", stderr);
        return 2;
    }
    terminal_session session{
        {.command = {arguments[1]}, .rows = rows, .columns = columns, .home = arguments[2]}};
    const bool is_good =
        session.wait_for_text("^H Help") && connect_all(session) && messages_seen(session);
    screen_print(session);
    if (!is_good) {
        std::fputs("demo_shot: no messages of both servers on the screen\n", stderr);
        return 1;
    }
    session.send_control('x');
    return session.wait_for_exit() == 0 ? 0 : 1;
}
