// network_session.hpp - what the tests of the network side share: several servers, transmissions
// as they appear, and ways to know that a client has processed everything.
#pragma once

#include "e2e/client_session.hpp"

#include <cstddef>
#include <deque>
#include <initializer_list>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

/// A terminal on which no line of the tests is wrapped.
inline const client_start wide_terminal{.columns = 132};

/// Servers in the order of the client's list; their aliases are alpha, bravo and so on.
class listed_servers
{
public:
    /// `count`: 1 to 5.
    explicit listed_servers(int count);
    /// `index` counts from 0.
    scripted_server& operator[](std::size_t index)
    {
        return servers[index];
    }
    std::size_t count() const
    {
        return servers.size();
    }
    /// The settings of a client that knows all of them.
    client_settings settings() const;

private:
    std::deque<scripted_server> servers;
};

/// The alias of the server with this index.
std::string alias_of(std::size_t index);

/// Moves the bar to visible row `number` of the list, from 1.
[[nodiscard]] testing::AssertionResult select_row(client_session& client, int number);

/// Connects to all servers in list order and leaves the bar on the last one. If one connection
/// fails, reports a failure and gives fewer connections than servers.
std::vector<server_connection> connect_all(client_session& client, listed_servers& servers);

/// Waits until the newest line of the status pane is `text`.
[[nodiscard]] testing::AssertionResult wait_for_last_status(client_session& client,
                                                            std::string_view text);

/// Sends `text` as a notice and waits until it is shown. Everything that this server sent before
/// has then taken effect, provided that it sent whole packets.
[[nodiscard]] testing::AssertionResult
wait_for_notice(client_session& client, server_connection& connection, std::string_view text);

/// Stops the automatic polls; closes popups. From here on poll_once triggers polls, until the
/// clock gets a pace again.
[[nodiscard]] testing::AssertionResult stop_polls(client_session& client);

/// Makes a client with stopped polls poll its servers once.
[[nodiscard]] testing::AssertionResult poll_once(client_session& client);

/// What the system knows about a process.
struct process_facts {
    char state = ' '; // T: stopped, Z: ended and not yet reaped, blank: gone
    pid_t parent = 0;
};
process_facts facts_of(pid_t process);

/// Whether a process has handled every signal of this number sent to it, and waits where it would
/// receive the next: it has then done all that the signal causes.
bool has_heard(pid_t process, int signal_number);

/// Waits until a process is gone, or is a zombie that only needs to be reaped.
[[nodiscard]] testing::AssertionResult wait_until_gone(terminal_session& terminal, pid_t process);

/// The children of a process that are running, stopped or not yet reaped.
std::vector<pid_t> children_of(pid_t process);

/// A capabilities packet with these elements.
server_packet capabilities_packet(std::string_view elements);

/// One transmission. An empty text leaves its element out of the document.
struct acars_message {
    std::string mode = "2";
    std::string registration = "D-AIQA";
    std::string aircraft = "A320";
    std::string label = "H1";
    std::string block = "4";
    std::string number = "M07A";
    std::string flight = "LH0400";
    std::string from = "FRA";
    std::string to = "JFK";
    std::string operator_name = "Lufthansa";
    std::string content{};
    std::string day = "20";
    std::string month = "11";
    std::string year = "2026";
    std::string hour = "14";
    std::string minute = "05";
    std::string contacts{};
    std::string daily_flights{};
};

/// The XML document of a transmission.
std::string document_of(const acars_message& message);

/// The text in which the client shows and logs it, with its leading line feed.
std::string text_of(const acars_message& message);

/// The lines of that text without the empty first one.
std::vector<std::string> lines_of(const acars_message& message);

/// The document as a plain transmission.
server_packet plain_packet(std::string_view document);

/// The document as a compressed transmission. `hint` below 0: one that is large enough.
server_packet compressed_packet(std::string_view document, int hint = -1);

/// Waits until the message pane shows `lines`, the last one `below` rows above the bottom row of
/// its scrolling region.
[[nodiscard]] testing::AssertionResult
wait_for_message_rows(client_session& client, const std::vector<std::string>& lines, int below = 1);

/// The screen row on which the message pane's scrolling region ends.
int message_bottom_row(client_session& client);

/// Waits until the file `name` in the client's home contains exactly `bytes`.
[[nodiscard]] testing::AssertionResult
wait_for_file(client_session& client, const std::string& name, const std::string& bytes);
