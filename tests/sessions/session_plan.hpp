// session_plan.hpp - all that is done to a client in a random session, decided before it begins.
//
// The same seed and number of actions always give the same plan, whatever the client does.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

constexpr int session_server_count = 3;

enum class session_action_kind : std::uint8_t {
    keys,       // types the bytes; not while the client is stopped
    resize,     // to number rows and other columns
    signal,     // sends signal `number` to the client
    stop,       // by signal or, if number is not 0, by the stop key
    bring_back, // continues a stopped client in front
    send,       // server `number` sends the bytes
    hang_up,    // server `number` closes, with a reset if other is not 0
    list,       // the directory answers with the bytes, and closes if number is not 0
    jump,       // the wall clock, by `number` seconds
    rest,       // `number` polls pass
    check,      // whether everything is well
};

struct session_action {
    session_action_kind kind;
    int number = 0;
    int other = 0;
    std::string bytes{};
};

/// For a person to read, on one line.
std::string session_action_text(const session_action& action);

enum class session_end : std::uint8_t {
    exit_key,      // ^X from the panes
    signal,        // wherever the client is
    signal_behind, // while the client is stopped; then it is brought back
    hurried,       // ^X and a signal after it
};

struct session_plan {
    int rows = 24;
    int columns = 80;
    bool utf8 = true;
    const char* terminal = "screen-256color";
    int speed = 1; // of the client's clock
    int ms_per_alarm = 50;
    bool acars_log = false;
    bool save_to_one = false;
    bool contact_info = false;
    bool flight_stats = false;
    bool save_passwords = false;
    bool save_on_exit = true;

    /// What each server says to its clients, one after another and then from the first again.
    std::array<std::vector<std::string>, session_server_count> greetings{};
    std::vector<session_action> actions{};
    session_end end = session_end::exit_key;
    int end_signal = 0;
};

/// The plan of a session with at least `actions` actions.
session_plan session_plan_new(unsigned seed, int actions);
