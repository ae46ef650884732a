// demo_shot.cpp - drives the demo in a terminal of its own, as a person would, and prints its
// screen.
//
// Usage: demo_shot CLIENT HOME. Fetches the directory, connects to all servers, looks at one, saves
// a report, and exits with 0 only if the transmissions of all servers have been on the screen and
// in the log that HOME's configuration asks for.
#include "support/terminal_session.hpp"

#include <cstdio>
#include <ctime>
#include <fstream>
#include <set>
#include <string>

namespace
{

constexpr int rows = 30;
constexpr int columns = 100;
constexpr int first_server_row = 2;
constexpr int servers = 3;
constexpr int wanted_records = 6;
constexpr const char* password = "tovrik";
constexpr const char* report_name = "report.txt";
constexpr std::chrono::seconds traffic_patience{90};

std::string file_content(const char* name)
{
    std::ifstream file{name};
    return {std::istreambuf_iterator<char>{file}, {}};
}

int count_of(const std::string& text, const std::string& part)
{
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

/// A part of the demo that did not come off.
bool fail(const char* what)
{
    std::fprintf(stderr, "demo_shot: %s\n", what);
    return false;
}

bool fetch_directory(terminal_session& session)
{
    session.send_control('r');
    return session.wait_for_text("Serverlist fetched with 3 entries") ||
           fail("the directory did not come");
}

bool connect_row(terminal_session& session, int row)
{
    session.send_control('l');
    const bool needs_password = session.row(row).find("Schiphol") != std::string::npos;
    const auto is_connected = [&] { return session.row(row).find("*") != std::string::npos; };
    if (!session.wait_until(is_connected, "a connection"))
        return fail("a server cannot be connected to");
    if (!needs_password)
        return true;
    if (!session.wait_for_text("Password required"))
        return fail("no password was asked for");
    session.send(password);
    session.send_key(named_key::enter);
    return session.wait_for_text("Password accepted") || fail("the password was not taken");
}

/// Connects to each server of the list, from the first on.
bool connect_all(terminal_session& session)
{
    for (int server = 0; server < servers; ++server) {
        if (server > 0)
            session.send_key(named_key::down);
        if (!connect_row(session, first_server_row + server))
            return false;
    }
    return true;
}

/// Moves the bar from the last server to Frankfurt's, which offers reports.
bool go_to_frankfurt(terminal_session& session)
{
    for (int server = servers - 1; server >= 0; --server) {
        if (session.row(first_server_row + server).find("Frankfurt") != std::string::npos)
            return true;
        session.send_key(named_key::up);
    }
    return fail("Frankfurt is not in the list");
}

/// Opens the information window until it was seen: a transmission may close it at any moment.
bool look_at_server(terminal_session& session)
{
    for (int attempt = 0; attempt < 10; ++attempt) {
        session.send_control('i');
        if (session.wait_for_text("Special Keys: ", std::chrono::seconds{1})) {
            const bool offers_reports = session.shows("^O Reports");
            session.send_control('i');
            return (session.wait_for_no_text("Special Keys: ") && offers_reports) ||
                   fail("the information window shows no reports");
        }
    }
    return fail("the information window did not open");
}

bool save_report(terminal_session& session)
{
    const std::time_t now = std::time(nullptr);
    char today[16];
    std::strftime(today, sizeof today, "%d/%m/%Y", std::localtime(&now));
    session.send_control('o');
    if (!session.wait_for_text("Date of report"))
        return fail("no date was asked for");
    session.send(today);
    session.send_key(named_key::enter);
    if (!session.wait_for_text("Save ZOBE Style Report as...", traffic_patience))
        return fail("no report came");
    session.send(report_name);
    session.send_key(named_key::enter);
    if (!session.wait_for_text("Report successfully saved"))
        return fail("the report was not saved");
    return !file_content(report_name).empty() || fail("the saved report is empty");
}

/// Waits for messages of all servers: each shows its flight statistics beside its own row.
bool messages_seen(terminal_session& session)
{
    std::set<int> seen;
    const auto all_seen = [&] {
        for (int row = first_server_row; row < first_server_row + servers; ++row) {
            if (session.row(row).find("Unique Flights:") != std::string::npos)
                seen.insert(row);
        }
        return seen.size() == servers && session.shows("ACARS mode: ") &&
               count_of(file_content("logs/ACARS.log"), "ACARS mode: ") >= wanted_records;
    };
    return session.wait_until(all_seen, "messages of all servers", traffic_patience) ||
           fail("no messages of all servers on the screen and in the log");
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
    const bool is_good = session.wait_for_text("^H Help") && fetch_directory(session) &&
                         connect_all(session) && messages_seen(session) &&
                         go_to_frankfurt(session) && look_at_server(session) &&
                         save_report(session) && messages_seen(session);
    screen_print(session);
    if (!is_good)
        return 1;
    session.send_control('x');
    return session.wait_for_exit() == 0 ? 0 : 1;
}
