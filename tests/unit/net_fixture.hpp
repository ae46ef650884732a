// net_fixture.hpp - the client's own screen, servers and connections, for tests of what it sends to
// servers and shows of them.
//
// Owns the far ends of the connections, and everything that a test leaves in app_state.
#pragma once

#include "base/owners.hpp"
#include "support/patience.hpp"
#include "unit/headless_screen.hpp"

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

/// A packet by its numbers and its text. Its bytes are made without the client's code.
struct wire_packet {
    std::uint32_t kind = 0;
    std::string text{};
    std::uint16_t extra = 0;
    std::uint16_t param1 = 0;
    std::uint16_t param2 = 0;

    bool operator==(const wire_packet&) const = default;
};
using wire_packets = std::vector<wire_packet>;

std::ostream& operator<<(std::ostream& out, const wire_packet& packet);

/// The packet as it travels.
std::string wire_bytes(const wire_packet& packet);

/// The server's end of a connection.
class server_end
{
public:
    explicit server_end(int socket) : held(socket) {}

    void send(const wire_packet& packet) const;
    void send_bytes(std::string_view bytes) const;
    /// What the client has sent and nobody has read yet, without waiting.
    std::string take_bytes() const;
    /// The same as packets; a partial packet fails the test.
    wire_packets take_packets() const;
    /// Waits for that many bytes; gives fewer when the time runs out.
    std::string await_bytes(std::size_t count) const;
    /// Waits until the client has closed, whatever it sent before.
    bool await_end() const;
    /// Whether the client has closed; drops what it sent before.
    bool is_ended() const;
    /// Closes this end.
    void close();

private:
    unique_fd held;
};

/// One line of the status pane.
struct status_line {
    std::string text;
    int pair = 0; // 0 for an empty line, which has no visible colour

    bool operator==(const status_line&) const = default;
};
using status_lines = std::vector<status_line>;

std::ostream& operator<<(std::ostream& out, const status_line& line);

/// Lets signals in only during pauses, as the running program does. Restores the mask at its end,
/// so that programs which later tests start can receive signals.
class signal_guard
{
public:
    signal_guard();
    ~signal_guard();
    signal_guard(const signal_guard&) = delete;
    signal_guard& operator=(const signal_guard&) = delete;

private:
    sigset_t mask_before = {};
    bool is_owner = false; // no other guard in the test program is active
};

/// A wide screen of 24 lines, built as the program builds it, without servers.
class net_test : public testing::Test
{
protected:
    explicit net_test(int columns = 160);
    ~net_test() override;
    net_test(const net_test&) = delete;
    net_test& operator=(const net_test&) = delete;

    /// Registers a server and draws the list again, which renews every list_row.
    server_entry& add_server(const char* name, const char* alias = nullptr,
                             std::int32_t port = 0) const;
    /// Gives an entry a complete connection with fresh data, as the connect command and its result
    /// leave it.
    server_end connect(server_entry& entry) const;

    /// Polls every connected server once, with the breaks that a busy machine brings.
    static void poll_all();

    /// said() and beeps() count from here.
    void mark();
    /// The lines of the status pane since the mark, oldest first; the last four at most.
    status_lines said() const;
    std::size_t beeps() const;

    /// A row of the message pane, without the blanks at its ends.
    std::string message_row(int row) const;
    /// The marker in the list beside an entry that the connect command placed.
    char marker_of(const server_entry& entry) const;

    /// Lets signals in until the condition holds; false when the time runs out.
    static bool wait_until(const std::function<bool()>& holds);

    headless_screen screen;

private:
    signal_guard signals;
    std::size_t bells_at_mark = 0;
};

/// Types keys for the next prompt.
void type_ahead(std::string_view keys);

/// A text as the client keeps it: malloc'ed, to be owned by a record.
char* owned_text(std::string_view text);

/// The XML document of a transmission with these elements below its root.
std::string transmission_xml(std::string_view elements);

/// Elements of a transmission with everything except a message text, contacts and statistics.
extern const std::string plain_elements;
/// The message text for it.
extern const std::string content_elements;

/// The record for plain_elements, with or without content_elements, with its line feeds.
extern const std::string plain_record;
extern const std::string content_record;
