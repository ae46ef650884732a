// app_state.hpp - the one record of everything that the running program shares.
//
// Every part of the program reads and writes it directly. The main thread and signal handlers use
// it under the state lock (state_lock.hpp). A pause may replace any window: read window fields
// again after one.
#pragma once

#include "base/limits.hpp"
#include "data/server_registry.hpp"
#include "data/settings_table.hpp"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <ncurses.h>
#include <pthread.h>
#include <termios.h>

/// The client's version, as it is shown and as servers are told.
constexpr const char* client_version = "0.02.001";

/// What the thread that fetches the server list shares with the rest of the program.
struct server_list_fetch {
    pthread_t fetch_thread = {};                             // the last one started; detached
    pthread_mutex_t fetch_mutex = PTHREAD_MUTEX_INITIALIZER; // held by the thread for its whole run
    std::atomic<int> running = 0;       // threads started and not ended; raised before the start
    std::atomic<unsigned> progress = 0; // steps made; stands still while the directory is silent
    int socket = -1;                    // to the directory; under the state lock
    bool is_given_up = false;           // the thread must not touch shared state any more; likewise
};

/// How far the cycle over all servers has come; a long cycle is made in several runs.
struct poll_progress {
    std::int32_t next = 0; // index of the next server to visit; 0: a new cycle begins
    std::time_t now = 0;   // when the cycle began
};

/// Curses' output on its way to the terminal (terminal_output.hpp).
struct terminal_output {
    int curses_fd = -1;     // where curses writes; -1: the standard output itself
    int store_fd = -1;      // the store, a file in memory; -1: there is none
    int line_fd = -1;       // the terminal, opened anew, never waits; -1: it could not be opened
    off_t taken = 0;        // bytes of the store that the terminal has taken
    off_t kept = 0;         // end of what stays in the store, after whole sequences
    bool is_stored = false; // curses_fd is the store, otherwise the terminal
    bool has_lost = false;  // output was dropped since the screen was last drawn whole
};

struct application_state {
    WINDOW* screen = nullptr;       // the standard screen
    WINDOW* status_pane = nullptr;  // six framed lines at the bottom right: notices and errors
    WINDOW* server_pane = nullptr;  // the list at the left; keys are read from this window
    WINDOW* message_pane = nullptr; // received transmissions
    WINDOW* key_line = nullptr;     // one row at the bottom
    WINDOW* popup_win = nullptr;    // the open popup
    WINDOW* dialog_win = nullptr;   // a second transient window, closed together with popup_win
    WINDOW* modal_win = nullptr;    // the box that waits for the user; owned by who opened it
    WINDOW* settings_win = nullptr; // full screen, behind the panes until settings_shown
    WINDOW* help_win = nullptr;     // full screen, behind the panes until help_shown

    collection* servers = nullptr; // the known servers, in display order; owned
    std::int32_t selected = -1;    // 1-based row of the highlight bar; -1 before the first drawing
    std::int32_t settings_shown = 0;
    std::int32_t help_shown = 0;
    bool is_help_over_settings = false; // if both are shown: the help came last
    std::uint32_t setting_flags = 0;    // setting_flag bits
    std::FILE* shared_log = nullptr;    // the one log of SaveToOne; null: not open
    log_condition shared_log_state = {};
    char** setting_texts = nullptr; // setting_text_count owned texts; null text: not set
    bool is_config_unread = false;  // there is a configuration that was not read completely, and
                                    // that is not to be replaced by what the program knows

    server_list_fetch fetch;
    poll_progress poll;

    int checkbox_rows[checkbox_setting_count]; // row on the settings page, -1: not drawn
    int text_rows[setting_text_count];
    int text_columns[setting_text_count]; // column of the folder's value on the settings page

    unsigned char receive_scratch[packet_max_payload_bytes] = {}; // every payload read lands here

    SCREEN* terminal = nullptr;   // what curses allocated for the terminal
    termios shell_modes = {};     // the terminal's modes before curses changed them
    termios client_modes = {};    // the ones that the client needs
    bool has_shell_modes = false; // they could be read
    bool has_line = false;        // the terminal has the client's modes, as far as is known
    terminal_output output;
    bool is_update_due = false;     // the terminal was behind when the screen was to be updated
    void (*pause_work)() = nullptr; // what is done before every pause; null: nothing
    bool is_screen_lost = false;    // a resize ran out of memory; nothing may be drawn
    int screen_number = 1;          // grows with every resize
    std::int32_t list_scroll = 0;   // rows that the server list is scrolled up by
    char* list_markers = nullptr;   // the marker of each unscrolled row of the list; owned
    std::int32_t list_markers_count = 0;
    int screen_batches = 0; // how many exist now; they nest
    int open_boxes = 0;     // prompts, menus and lists that wait for the user; they may nest

    application_state();
};

extern application_state app_state;

/// The server under the highlight bar; null if none is selected.
server_entry* selected_server();

/// Whether a switch is on.
bool is_setting_on(setting_flag flag);

/// A folder setting, or "./" if it was never set. Borrowed.
const char* folder_setting(setting_text which);
