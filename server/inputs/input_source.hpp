// input_source.hpp - what all inputs have in common, and what they use of their set.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"
#include "server/inputs/block_queue.hpp"
#include "server/inputs/input_counters.hpp"
#include "server/inputs/input_options.hpp"
#include "server/inputs/json_lines.hpp"
#include "server/messages/transmission.hpp"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tovrik
{

class input_source;

/// What the inputs of a set share. It outlives them and never moves.
struct input_host {
    int epoll_fd = -1;                                ///< of the server's loop
    std::unordered_map<int, input_source*> owners;    ///< of watched descriptors
    std::function<void(const std::string&)> tell;     ///< gets lines for the server's owner
    std::function<void(const std::string&)> complain; ///< gets lines about broken input
};

/// A line about an input for the server's owner, in UTF-8.
std::string input_line(const input_options& options, const std::string& text);

/// A descriptor that the loop waits for on an input's behalf, until the end of its scope.
class watched_fd
{
public:
    watched_fd() = default;
    watched_fd(watched_fd&& other) noexcept;
    watched_fd& operator=(watched_fd&& other) noexcept;
    watched_fd(const watched_fd&) = delete;
    watched_fd& operator=(const watched_fd&) = delete;
    ~watched_fd();

    /// Begins to wait for `events`. False, and closed, when the system refuses.
    bool open(input_host& home, input_source& owner, unique_fd opened, std::uint32_t events);
    void close();
    /// Waits for other events from now on.
    void change(std::uint32_t events) const;
    int get() const
    {
        return fd.get();
    }

private:
    unique_fd fd;
    input_host* host = nullptr;
};

/// One input. Nothing that it does blocks.
class input_source
{
public:
    input_source(input_options chosen, input_host& home);
    virtual ~input_source() = default;
    input_source(const input_source&) = delete;
    input_source& operator=(const input_source&) = delete;

    /// Opens the input, or begins to connect. Returns an error text, empty on success; after an
    /// error it may be called again.
    virtual std::string open(time_point now) = 0;

    /// Handles a readiness event of one of the input's descriptors.
    virtual void on_event(int fd, time_point now) = 0;

    /// Does what is due.
    virtual void on_time(time_point now);

    /// When on_time has something to do; a time in the past: at once.
    virtual time_point next_time() const;

    /// Brings `counters` up to date.
    virtual void refresh_counters();

    /// Begins to end a thread of the input's.
    virtual void stop();

    /// Waits until the thread has ended, until `deadline` at most.
    virtual void wait_for_end(time_point deadline);

    const input_options options;
    input_counters counters;
    input_silence silence;
    std::uint16_t port = 0;             ///< that was taken; 0: none
    bool is_open = false;               ///< false: the set opens it, now or after a pause
    std::vector<transmission> received; ///< since the set took them

protected:
    /// Reads bytes of a stream as lines of JSON.
    void take_bytes(json_lines& lines, std::string_view bytes, time_point now);
    /// Reads the stream's last line, which nothing ends.
    void take_rest(json_lines& lines, time_point now);
    /// Reads blocks of a queue, each of whole lines, until there has been enough for a turn.
    void take_blocks(json_lines& lines, block_queue& queue, time_point now);
    json_lines make_lines();
    /// Tells the server's owner a line about this input.
    void tell(const std::string& text) const;
    void complain(const std::string& text) const;

    input_host& host;

private:
    void note_received(const json_lines& lines, std::size_t messages, std::size_t broken,
                       std::vector<transmission> taken, time_point now);
};

/// Has the system ask a silent peer whether it is still there.
void keep_alive(int socket);

/// Whether one may send: its IPv4 address is in one of the ranges, or there are none. The address
/// is in the byte order of this machine.
bool is_allowed(const std::vector<address_range>& allow, std::uint32_t address);

} // namespace tovrik
