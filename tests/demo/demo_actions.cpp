// demo_actions.cpp - see demo_actions.hpp.
#include "demo/demo_actions.hpp"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>

namespace
{

constexpr int first_server_row = 2;
constexpr int servers = 3;
constexpr int wanted_records = 6;
constexpr const char* password = "tovrik";
constexpr const char* port_variable = "DEMO_DIRECTORY_PORT";

int count_occurrences(const std::string& text, const std::string& part)
{
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

bool connect_row(terminal_session& session, int row)
{
    session.send_control('l');
    const bool needs_password = session.row(row).find("Schiphol") != std::string::npos;
    const auto is_connected = [&] { return session.row(row).find("*") != std::string::npos; };
    if (!session.wait_until(is_connected, "a connection"))
        return demo_fail("a server cannot be connected to");
    if (!needs_password)
        return true;
    if (!session.wait_for_text("Password required"))
        return demo_fail("no password was asked for");
    session.send(password);
    session.send_key(named_key::enter);
    return session.wait_for_text("Password accepted") || demo_fail("the password was not taken");
}

} // namespace

terminal_options demo_terminal(const std::string& client, const std::string& home)
{
    const char* port = std::getenv(port_variable);
    return {.command = {client},
            .rows = demo_rows,
            .columns = demo_columns,
            .home = home,
            .environment = {{port_variable, port != nullptr ? port : ""}}};
}

bool demo_fail(const char* what)
{
    std::fprintf(stderr, "demo: %s\n", what);
    return false;
}

std::string demo_file(const char* name)
{
    std::ifstream file{name};
    return {std::istreambuf_iterator<char>{file}, {}};
}

bool demo_fetch(terminal_session& session)
{
    session.send_control('r');
    return session.wait_for_text("Serverlist fetched with 3 entries") ||
           demo_fail("the directory did not come");
}

bool demo_connect(terminal_session& session)
{
    for (int server = 0; server < servers; ++server) {
        if (server > 0)
            session.send_key(named_key::down);
        if (!connect_row(session, first_server_row + server))
            return false;
    }
    return true;
}

bool demo_go_to(terminal_session& session, std::string_view name)
{
    for (int server = servers - 1; server >= 0; --server) {
        if (session.row(first_server_row + server).find(name) != std::string::npos)
            return true;
        session.send_key(named_key::up);
    }
    return demo_fail("a server is not in the list");
}

bool demo_messages_seen(terminal_session& session)
{
    std::set<int> seen;
    const auto all_seen = [&] {
        for (int row = first_server_row; row < first_server_row + servers; ++row) {
            if (session.row(row).find("Unique Flights:") != std::string::npos)
                seen.insert(row);
        }
        return seen.size() == servers && session.shows("ACARS mode: ") &&
               count_occurrences(demo_file("logs/ACARS.log"), "ACARS mode: ") >= wanted_records;
    };
    return session.wait_until(all_seen, "messages of all servers", traffic_patience) ||
           demo_fail("no messages of all servers on the screen and in the log");
}
