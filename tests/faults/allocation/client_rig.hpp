// client_rig.hpp - the client inside the test program, with servers and a directory beside it.
//
// Every scenario works on this one record. Functions called while allocations fail do not allocate.
#pragma once

#include "data/server_registry.hpp"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

constexpr std::size_t rig_servers = 2;

/// How the arrows are written among typed keys.
constexpr unsigned char rig_key_down = 0x80;
constexpr unsigned char rig_key_up = 0x81;

/// One server: its listening socket, and its end of the client's connection.
struct rig_server {
    int listener = -1;
    int connection = -1; // -1: none
};

struct client_rig {
    std::array<rig_server, rig_servers> servers; // in the order of the client's list
    std::vector<std::string> packets;            // what the first server will send
    std::string directory_answer;
};

/// Opens the servers' listening sockets and writes the configuration that names them.
/// fetch_on_start: whether it asks for the directory's list at the start.
void rig_listen(client_rig& rig);
std::string rig_config(const client_rig& rig, bool fetch_on_start);

/// Starts the client as its own main function does. False if it reports that it cannot run.
bool rig_start();

/// A server's entry in the client's list; null if there is none.
server_entry* rig_entry(std::size_t index);

/// Whether the list has the server as configured; the client may have been out of memory when it
/// read the configuration.
bool rig_is_configured(const client_rig& rig, std::size_t index);

/// Connects a server of the list as the user would. False if that failed.
bool rig_connect(client_rig& rig, std::size_t index);

/// Gives every server of the list a connection, as a connect leaves it, over which the server has
/// allowed everything.
void rig_join(client_rig& rig);

/// Waits until a connect has ended, whatever its result.
void rig_connect_wait(std::size_t index);

/// Accepts the server's end of a connection. False if there is none.
bool rig_accept(client_rig& rig, std::size_t index);

/// Runs the key loop on keys that are typed ahead, then leaves it. A box that stays open after a
/// failure is closed with Escape, again and again, until the loop ends.
void rig_type(std::string_view keys);

/// Makes the first server send its packets and the client receive them, one at each poll. keys:
/// typed ahead for what the packets open; what stays open then is closed as in rig_type.
void rig_packets_take(const client_rig& rig, std::string_view keys);

/// Makes the client poll its servers once.
void rig_poll();

/// Changes the size of the terminal; the client learns of it.
void rig_resize(unsigned short rows, unsigned short columns);

/// Sends all these bytes from a server.
void rig_send(const client_rig& rig, std::size_t index, std::string_view bytes);

/// Answers every fetch of the list in progress and waits until all have ended.
void rig_directory_serve(const client_rig& rig);

/// Polls the servers until the newest line of the status pane is this text. Returns false if it
/// never is.
bool rig_wait_for_status(std::string_view text);

/// Waits until no other thread is left.
void rig_threads_wait();
