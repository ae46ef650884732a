// demo_shots.cpp - drives the demo in a terminal of its own and writes pictures of its screens.
//
// Usage: demo_shots CLIENT HOME FOLDER. Writes main.svg, information.svg, settings.svg,
// service-menu.svg and pager-list.svg to FOLDER, and exits with 0 only if all of them were written.
#include "demo/demo_actions.hpp"
#include "support/screen_svg.hpp"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr const char* pager_server = "Heathrow";
constexpr const char* pager_question = "Press 1-3 or ESC to quit";

/// A picture: its file, its title, and what the screen shows when it is complete.
struct wanted_picture {
    const char* name;
    const char* title;
    std::vector<const char*> texts;
};

const wanted_picture main_picture = {
    "main", "ncursesclient", {"available Servers", "ACARS mode: ", "Unique Flights: ", "^X Exit"}};
const wanted_picture information_picture = {
    "information",
    "ncursesclient: what a server is and offers",
    {"ServerName: ", "ServerFlags: ", "Special Keys: ", "^P Pager", "[ Close Window ^I ]"}};
const wanted_picture settings_picture = {
    "settings",
    "ncursesclient: settings",
    {"client - Settings ]", "Save configuration on exit", "To exit press ^E ]"}};
const wanted_picture menu_picture = {
    "service-menu", "ncursesclient: a service", {"Request pagerlist from Server", pager_question}};
const wanted_picture list_picture = {
    "pager-list",
    "ncursesclient: a pager list",
    {"Registr. Airp Flightno", "D-AI?A", "BA0117", "JFK", "[ Press ESC to close ]"}};

struct pager_answers {
    const char* registration;
    const char* flight;
    const char* airport;
};
constexpr pager_answers pager_entries[] = {
    {"D-AI?A", "", "FRA"}, {"G-XWB*", "", ""}, {"", "BA0117", "JFK"}, {"", "LH04*", ""}};

bool shows_all(const terminal_screen& screen, const std::vector<const char*>& texts)
{
    const std::string shown = screen.whole_text();
    return std::ranges::all_of(
        texts, [&](const char* text) { return shown.find(text) != std::string::npos; });
}

/// Drives the demo and takes its pictures.
struct photographer {
    terminal_session& session;
    std::string folder;

    /// Takes the picture when the screen is complete and stable: a page may appear in parts.
    bool take(const wanted_picture& picture, std::chrono::milliseconds limit = default_patience)
    {
        std::string svg;
        const auto is_whole = [&] {
            const terminal_screen& seen = session.screen();
            const std::string before = std::exchange(svg, screen_svg(seen, picture.title));
            return svg == before && shows_all(seen, picture.texts);
        };
        if (!session.wait_until(is_whole, picture.name, limit))
            return false;
        std::ofstream file{folder + '/' + picture.name + ".svg", std::ios::binary};
        file << svg << std::flush;
        return file.good() || demo_fail("a picture cannot be written");
    }

    /// Opens the information window until it was seen: a transmission may close it at any time.
    bool take_information()
    {
        for (int attempt = 0; attempt < 10; ++attempt) {
            session.send_control('i');
            if (!take(information_picture, std::chrono::seconds{1}))
                continue;
            session.send_control('i');
            return session.wait_for_no_text("Special Keys: ").operator bool();
        }
        return demo_fail("the information window did not open");
    }

    bool take_settings()
    {
        session.send_control('e');
        if (!take(settings_picture))
            return demo_fail("the settings did not open");
        session.send_control('e');
        return session.wait_for_text("available Servers").operator bool();
    }

    bool answer(const char* question, std::string_view text)
    {
        if (!session.wait_for_text(question))
            return demo_fail(question);
        session.send(text);
        session.send_key(named_key::enter);
        return session.wait_for_no_text(question) || demo_fail(question);
    }

    bool choose(char choice)
    {
        session.send_control('p');
        if (!session.wait_for_text(pager_question))
            return demo_fail("the menu did not open");
        session.send({&choice, 1});
        return answer("Enter your email address", "me@example.com") &&
               answer("Your subscription code", "2202");
    }

    bool add_entry(const pager_answers& entry)
    {
        return choose('1') && answer("Enter Aircraft Registration", entry.registration) &&
               answer("Enter FlightNumber", entry.flight) &&
               answer("Enter Destination Airport (IATA)", entry.airport);
    }

    bool take_menu()
    {
        session.send_control('p');
        if (!take(menu_picture))
            return demo_fail("the menu did not open");
        session.send_key(named_key::escape);
        return session.wait_for_no_text(pager_question).operator bool();
    }

    bool take_list()
    {
        for (const pager_answers& entry : pager_entries) {
            if (!add_entry(entry))
                return false;
        }
        if (!choose('3') || !take(list_picture))
            return demo_fail("the list did not come");
        session.send_key(named_key::escape);
        return session.wait_for_no_text("[ Press ESC to close ]").operator bool();
    }
};

} // namespace

int main(int count, char** arguments)
{
    if (count != 4) {
        std::fputs("usage: demo_shots CLIENT HOME FOLDER\n", stderr);
        return 2;
    }
    terminal_session session{demo_terminal(arguments[1], arguments[2])};
    photographer camera{session, arguments[3]};
    const bool is_good = session.wait_for_text("^H Help") && demo_fetch(session) &&
                         demo_connect(session) && demo_messages_seen(session) &&
                         camera.take(main_picture, traffic_patience) &&
                         demo_go_to(session, pager_server) && camera.take_information() &&
                         camera.take_menu() && camera.take_list() && camera.take_settings();
    if (!is_good) {
        std::fputs(session.screen().whole_text().c_str(), stderr);
        return 1;
    }
    session.send_control('x');
    return session.wait_for_exit() == 0 ? 0 : 1;
}
