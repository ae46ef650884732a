// soak_user.hpp - the person at the terminal of a soak: types, resizes, and has servers do things
// that want an answer.
//
// Leaves the client as it found it after every deed: no box open, the panes in front. Expects
// nothing of what a deed shows in the panes, where fifty servers talk all the time, but of what the
// servers get to see of it. A client that does not do its part ends the soak: std::runtime_error,
// with what was waited for and the screen.
#pragma once

#include "e2e/client_session.hpp"
#include "soak/soak_servers.hpp"

#include <random>
#include <vector>

class soak_user
{
public:
    soak_user(client_session& client, soak_servers& servers, const soak_options& options);

    /// Does one thing. The first calls together do each thing once, those behind them any.
    void do_something();
    /// Connects to all servers that are not connected.
    void connect_all();
    bool all_are_connected();
    /// Has all servers fall silent, and waits until the client has read what they said.
    void hush_all();
    /// The number of different things that can be done.
    static int different_deeds();
    /// How often something was done.
    int deeds_done() const
    {
        return deeds;
    }
    /// Connections that were closed again since their server was too slow to say something.
    int late_greetings() const
    {
        return lates;
    }

private:
    using deed = void (soak_user::*)();
    static const std::vector<deed>& all_deeds();

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
    int any_talking_server();

    client_session& client;
    soak_servers& servers;
    int polls_for_escape;
    std::mt19937 dice;
    std::vector<deed> to_do{};
    int deeds = 0;
    int lates = 0;
};

/// The name under which the client lists a server.
std::string soak_alias(int index);

/// The usual size of a soak's terminal.
constexpr int soak_rows = 40;
constexpr int soak_columns = 132;
