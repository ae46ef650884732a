// client_rig.hpp - the client within the test program, with servers and a directory beside it.
//
// Every scenario works on this one record. What is called while allocations fail allocates nothing.
#pragma once

#include "data/server_registry.hpp"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

constexpr std::size_t rig_servers = 2;

/// What stands for the arrows among typed keys.
constexpr unsigned char rig_key_down = 0x80;
constexpr unsigned char rig_key_up = 0x81;

/// One server: where it listens, and its end of the client's connection.
struct rig_server {
    int listener = -1;
    int connection = -1; // -1: none
};

struct client_rig {
    std::array<rig_server, rig_servers> servers; // in the order of the client's list
    std::vector<std::string> packets;            // what the first server is about to send
    std::string directory_answer;
};

/// The servers' listening sockets and the configuration that names them. fetch_on_start: whether it
/// asks for the directory's list at once.
void rig_listen(client_rig& rig);
std::string rig_config(const client_rig& rig, bool fetch_on_start);

/// Starts the client as its own main function does. False when it says that it cannot run.
bool rig_start();

/// A server's entry in the client's list; null when it has none.
server_entry* rig_entry(std::size_t index);

/// Whether the list has the server as the configuration has it; memory may have been short while it
/// was read.
bool rig_is_configured(const client_rig& rig, std::size_t index);

/// Connects a server of the list as the user would. False when that did not come about.
bool rig_connect(client_rig& rig, std::size_t index);

/// Gives all servers of the list a connection, as a connect leaves it, over which they have allowed
/// everything.
void rig_join(client_rig& rig);

/// Waits until a connect, well or badly, has ended.
void rig_connect_wait(std::size_t index);

/// Takes the server's end of a connection that was made. False when nobody is there.
bool rig_accept(client_rig& rig, std::size_t index);

/// Runs the key loop on keys that are typed ahead, then leaves it. A box that a failure has left
/// open is closed by Escape, again and again, until the loop ends.
void rig_type(std::string_view keys);

/// Has the first server send its packets and the client take them, one at each poll. keys: typed
/// ahead for what they open; what is left open then is closed as in rig_type.
void rig_packets_take(const client_rig& rig, std::string_view keys);

/// Has the client look after its servers once.
void rig_poll();

/// Gives the terminal another size, which the client learns of.
void rig_resize(unsigned short rows, unsigned short columns);

/// Sends bytes of a server, whole.
void rig_send(const client_rig& rig, std::size_t index, std::string_view bytes);

/// Answers every fetch of the list that is under way and waits for their end.
void rig_directory_serve(const client_rig& rig);

/// Whether the newest line of the status pane is this text.
bool rig_status_is(std::string_view text);

/// Waits until no other thread is left.
void rig_threads_wait();
