// demo_shot.cpp - drives the demo in a terminal of its own, as a user would, and prints its screen.
//
// Usage: demo_shot CLIENT HOME. Fetches the directory, connects to all servers, looks at one, saves
// a report, and exits with 0 only if the transmissions of all servers have been on the screen and
// in the log that HOME's configuration asks for.
#include "demo/demo_actions.hpp"

#include <cstdio>
#include <ctime>
#include <string>

namespace
{

constexpr const char* report_name = "report.txt";

/// Opens the information window until it has been seen: a transmission may close it at any time.
bool look_at_server(terminal_session& session)
{
    for (int attempt = 0; attempt < 10; ++attempt) {
        session.send_control('i');
        if (session.wait_for_text("Special Keys: ", std::chrono::seconds{1})) {
            const bool offers_reports = session.shows("^O Reports");
            session.send_control('i');
            return (session.wait_for_no_text("Special Keys: ") && offers_reports) ||
                   demo_fail("the information window shows no reports");
        }
    }
    return demo_fail("the information window did not open");
}

bool save_report(terminal_session& session)
{
    const std::time_t now = std::time(nullptr);
    char today[16];
    std::strftime(today, sizeof today, "%d/%m/%Y", std::localtime(&now));
    session.send_control('o');
    if (!session.wait_for_text("Date of report"))
        return demo_fail("no date was asked for");
    session.send(today);
    session.send_key(named_key::enter);
    if (!session.wait_for_text("Save ZOBE Style Report as...", traffic_patience))
        return demo_fail("no report came");
    session.send(report_name);
    session.send_key(named_key::enter);
    if (!session.wait_for_text("Report successfully saved"))
        return demo_fail("the report was not saved");
    return !demo_file(report_name).empty() || demo_fail("the saved report is empty");
}

void print_screen(terminal_session& session)
{
    for (int row = 0; row < demo_rows; ++row)
        std::puts(session.row(row).c_str());
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fputs("usage: demo_shot CLIENT HOME\n", stderr);
        return 2;
    }
    terminal_session session{demo_terminal(arguments[1], arguments[2])};
    const bool is_good = session.wait_for_text("^H Help") && demo_fetch(session) &&
                         demo_connect(session) && demo_messages_seen(session) &&
                         demo_go_to(session, "Frankfurt") && look_at_server(session) &&
                         save_report(session) && demo_messages_seen(session);
    print_screen(session);
    if (!is_good)
        return 1;
    session.send_control('x');
    return session.wait_for_exit() == 0 ? 0 : 1;
}
