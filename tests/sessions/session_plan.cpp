// session_plan.cpp - see session_plan.hpp.
#include "sessions/session_plan.hpp"

#include "sessions/session_dice.hpp"
#include "sessions/session_packets.hpp"
#include "support/shown_bytes.hpp"

#include <cctype>
#include <csignal>
#include <iterator>
#include <string_view>
#include <utility>

namespace
{

using kind = session_action_kind;
using actions = std::vector<session_action>;

constexpr int max_rows = 120;
constexpr int max_columns = 300;
constexpr int min_start_rows = 8; // of a terminal on which the client starts
constexpr int min_start_columns = 30;
constexpr int actions_per_check = 40;
constexpr int greetings_per_server = 5;
constexpr std::size_t max_shown_bytes = 60;

/// Commands and what is typed into their boxes. Without "/" and ".", which could lead out of the
/// test's folder, except in a date.
constexpr const char* key_words[] = {"\001",
                                     "\004",
                                     "\005",
                                     "\005",
                                     "\010",
                                     "\010",
                                     "\t",
                                     "\t",
                                     "\n",
                                     "\r",
                                     "\014",
                                     "\014",
                                     "\014",
                                     "\017",
                                     "\020",
                                     "\022",
                                     "\033",
                                     "\033",
                                     "\033",
                                     "\033[A",
                                     "\033[B",
                                     "\033OA",
                                     "\033OB",
                                     "\033OB",
                                     "\033OA",
                                     "\033OP",
                                     "\033[1~",
                                     "\033[15~",
                                     "\177",
                                     "\177\177",
                                     "1",
                                     "2",
                                     "3",
                                     "4",
                                     "5",
                                     "6",
                                     "n",
                                     "y",
                                     "x",
                                     " ",
                                     "\023\021",
                                     "\002\006\013",
                                     "logs",
                                     "reports",
                                     "secret\n",
                                     "report\n",
                                     "1234\n",
                                     "1/2/2026\n",
                                     "LH0400\n",
                                     "someone@example,org\n",
                                     "\033a",
                                     "\033d",
                                     "\033e",
                                     "\033f",
                                     "\033h",
                                     "\033i",
                                     "\033l",
                                     "\033r",
                                     "\033s",
                                     "\033t",
                                     "\xE1",
                                     "\xF3",
                                     "\xC3\xA4",
                                     "\xC3\xB3",
                                     "\xE4\xB8\xAD",
                                     "\xF0\x9F\x98\x80",
                                     "\xE4",
                                     "\x9B"};

/// End the program, stop it, or belong to a path.
constexpr std::string_view forbidden_keys{"\003\030\032\034\023\021./\0", 9};

actions make_keys(session_dice& dice)
{
    std::string keys;
    for (int left = dice.once_in(4) ? dice.number(2, 12) : 1; left > 0; --left)
        keys += dice.once_in(8) ? dice.noise(1) : dice.any_of(key_words);
    std::string allowed;
    for (std::size_t at = 0; at < keys.size(); ++at) {
        // The keys that hold the output and let it go come in pairs; a date has its slashes.
        const bool is_pair = keys.compare(at, 2, "\023\021") == 0;
        const bool is_in_date = at > 0 && keys[at] == '/' && std::isdigit(keys[at - 1]) != 0;
        if (is_pair)
            allowed += keys.substr(at++, 2);
        else if (is_in_date || forbidden_keys.find(keys[at]) == std::string_view::npos)
            allowed += keys[at];
    }
    return {{.kind = kind::keys, .bytes = allowed}};
}

actions make_traffic(session_dice& dice)
{
    actions made;
    const int server = dice.number(0, session_server_count - 1);
    for (int left = dice.once_in(5) ? dice.number(2, 12) : 1; left > 0; --left)
        for (std::string& piece : session_traffic(dice)) {
            made.push_back({.kind = kind::send, .number = server, .bytes = std::move(piece)});
            if (dice.once_in(3))
                made.push_back({.kind = kind::rest, .number = 1});
        }
    return made;
}

actions make_hang_up(session_dice& dice)
{
    return {{.kind = kind::hang_up,
             .number = dice.number(0, session_server_count - 1),
             .other = dice.number(0, 1)}};
}

/// Goes through the first entries and connects, so that there are connections again. An entry whose
/// server has hung up is disconnected first.
actions make_connections(session_dice& dice)
{
    const std::string connect = dice.once_in(2) ? "\014" : "\004\014";
    std::string keys = "\033";
    for (int entry = 0; entry < session_server_count; ++entry)
        keys += connect + "\033OB";
    keys += "\033OA\033OA\033OA";
    return {{.kind = kind::keys, .bytes = keys}, {.kind = kind::rest, .number = 3}};
}

int choose_length(session_dice& dice, int most)
{
    return dice.once_in(3) ? dice.number(1, 8) : dice.number(1, most);
}

actions make_resize(session_dice& dice)
{
    actions made;
    for (int left = dice.once_in(3) ? dice.number(2, 6) : 1; left > 0; --left)
        made.push_back({.kind = kind::resize,
                        .number = choose_length(dice, max_rows),
                        .other = choose_length(dice, max_columns)});
    if (dice.once_in(2))
        made.push_back({.kind = kind::resize, .number = 24, .other = 80});
    return made;
}

/// Signals that a client takes without an end.
constexpr int harmless_signals[] = {SIGALRM, SIGALRM, SIGCHLD, SIGWINCH, SIGCONT, SIGPIPE};
constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

actions make_signals(session_dice& dice)
{
    actions made;
    for (int left = dice.number(1, 4); left > 0; --left)
        made.push_back({.kind = kind::signal, .number = dice.any_of(harmless_signals)});
    return made;
}

/// What happens while the client is stopped, and after it.
actions make_stop(session_dice& dice)
{
    actions made{{.kind = kind::stop, .number = dice.number(0, 1)}};
    using maker = actions (*)(session_dice&);
    constexpr maker makers[] = {make_resize, make_signals, make_traffic, make_hang_up};
    for (int left = dice.number(0, 2); left > 0; --left)
        for (session_action& action : dice.any_of(makers)(dice))
            made.push_back(std::move(action));
    made.push_back({.kind = kind::bring_back});
    return made;
}

actions make_list(session_dice& dice)
{
    return {{.kind = kind::list,
             .number = dice.once_in(4) ? 0 : 1,
             .bytes = session_directory_answer(dice)}};
}

actions make_jump(session_dice& dice)
{
    constexpr int steps[] = {1, 11, 61, 599, 601, 901, 100'000, -1, -30, -1000};
    return {{.kind = kind::jump, .number = dice.any_of(steps)}};
}

actions make_rest(session_dice& dice)
{
    return {{.kind = kind::rest, .number = dice.number(1, 10)}};
}

struct deed {
    int odds;
    actions (*make)(session_dice&);
};

constexpr deed deeds[] = {
    {40, make_keys},       {30, make_traffic}, {10, make_resize}, {8, make_rest}, {6, make_signals},
    {7, make_connections}, {2, make_hang_up},  {2, make_stop},    {2, make_list}, {2, make_jump}};

void choose_start(session_plan& plan, session_dice& dice)
{
    if (!dice.once_in(3)) {
        plan.rows = dice.number(min_start_rows, max_rows);
        plan.columns = dice.number(min_start_columns, max_columns);
    }
    plan.utf8 = !dice.once_in(4);
    plan.terminal = dice.once_in(4) ? "xterm-256color" : "screen-256color";
    constexpr int speeds[] = {1, 10, 30, 100};
    plan.speed = dice.any_of(speeds);
    plan.ms_per_alarm = dice.number(10, 50);
    plan.save_on_exit = !dice.once_in(4);
    for (bool* const setting : {&plan.acars_log, &plan.save_to_one, &plan.contact_info,
                                &plan.flight_stats, &plan.save_passwords})
        *setting = dice.once_in(2);
}

void choose_end(session_plan& plan, session_dice& dice)
{
    constexpr session_end ends[] = {session_end::exit_key,      session_end::exit_key,
                                    session_end::signal,        session_end::signal,
                                    session_end::signal_behind, session_end::hurried};
    plan.end = dice.any_of(ends);
    plan.end_signal = dice.any_of(ending_signals);
}

} // namespace

std::string session_action_text(const session_action& action)
{
    constexpr const char* names[] = {"keys",    "resize", "signal", "stop", "bring back", "send",
                                     "hang up", "list",   "jump",   "rest", "check"};
    static_assert(std::size(names) == static_cast<std::size_t>(kind::check) + 1);
    return std::string{names[static_cast<int>(action.kind)]} + " " + std::to_string(action.number) +
           " " + std::to_string(action.other) + " \"" + shown_bytes(action.bytes, max_shown_bytes) +
           "\"";
}

session_plan session_plan_new(unsigned seed, int count)
{
    session_dice dice{seed};
    session_plan plan;
    choose_start(plan, dice);
    for (int server = 0; server < session_server_count; ++server)
        for (int left = greetings_per_server; left > 0; --left)
            plan.greetings[static_cast<std::size_t>(server)].push_back(
                session_greeting(dice, server));
    plan.actions = make_connections(dice);
    std::size_t next_check = actions_per_check;
    while (plan.actions.size() < static_cast<std::size_t>(count)) {
        for (session_action& action : dice.by_odds(deeds).make(dice))
            plan.actions.push_back(std::move(action));
        if (plan.actions.size() >= next_check) {
            plan.actions.push_back({.kind = kind::check});
            next_check = plan.actions.size() + actions_per_check;
        }
    }
    choose_end(plan, dice);
    return plan;
}
