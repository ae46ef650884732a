// soak_user.hpp - the user at the terminal of a soak: types, resizes, and makes servers do things
// that need an answer.
//
// Leaves the client as it was after every action: no box open, the panes in front. Expects nothing
// of what an action shows in the panes, where fifty servers talk all the time, but checks what the
// servers receive. A client that does not respond ends the soak with std::runtime_error, which
// holds what was expected and the screen.
#pragma once

#include "e2e/client_session.hpp"
#include "soak/soak_servers.hpp"

#include <random>
#include <vector>

class soak_user
{
public:
    soak_user(client_session& client, soak_servers& servers, const soak_options& options);

    /// Does one thing. The first calls do each thing once, later calls any of them.
    void do_something();
    /// Connects to all servers that are not connected.
    void connect_all();
    bool all_are_connected();
    /// Makes all servers silent, and waits until the client has read what they sent.
    void hush_all();
    /// The number of different things that the user can do.
    static int different_actions();
    /// How many things were done.
    int actions_done() const
    {
        return actions;
    }
    /// Connections that were closed again because their server was too slow to send something.
    int late_greetings() const
    {
        return lates;
    }

private:
    using action = void (soak_user::*)();
    static const std::vector<action>& all_actions();

    void reconnect();
    void be_dropped_by_notice();
    void be_dropped_by_end();
    void be_dropped_by_reset();
    void leave_alone();
    void leave_alone_for_long();
    void resize();
    void resize_to_little();
    void open_settings();
    void open_help();
    void open_server_info();
    void use_services();
    void receive_report();
    void receive_pager_list();
    void give_password();
    void connect_again();
    void type_nonsense();

    void drop_and_connect(int index, const std::function<void(soak_server&)>& drop,
                          bool client_sees_it);
    void select(int index);
    void disconnect_selected(int index);
    void connect_selected(int index);
    void hold(int index);
    void talk(int index);
    void set_size(int rows, int columns);
    void show_page(std::string_view mark, char control);
    void close_boxes(int most = 1);
    void type(std::string_view keys);
    void wait_for_polls(int count);
    void wait(const std::function<bool()>& holds, const std::string& what);
    bool comes(const std::function<bool()>& holds);
    void slow_the_clock_down();
    int any_talking_server();

    client_session& client;
    soak_servers& servers;
    int speed; // of the client's clock
    int polls_for_escape;
    std::mt19937 dice;
    std::vector<action> to_do{};
    int actions = 0;
    int lates = 0;
};

/// The name of a server in the client's list.
std::string soak_alias(int index);

/// The usual size of a soak's terminal.
constexpr int soak_rows = 40;
constexpr int soak_columns = 132;
