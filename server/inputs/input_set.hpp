// input_set.hpp - all inputs of a server, in the thread of its loop.
//
// How to use it. After input_set_open, call input_set_on_event for each descriptor that epoll
// reports and that is the set's (others are let alone), and input_set_on_time and
// input_set_notices when input_set_next_time has come; doing so in every round costs little. The
// messages are whole and as they were heard: pass them through doubles, joining and message_parts,
// in this order. Nothing here blocks, but input_set_close waits for threads, at most for
// thread_end_patience.
#pragma once

#include "server/base/clock.hpp"
#include "server/inputs/input_counters.hpp"
#include "server/inputs/input_options.hpp"
#include "server/inputs/input_source.hpp"
#include "server/inputs/retry_pause.hpp"
#include "server/messages/transmission.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tovrik
{

/// An input and when it is opened again, if it could not be opened.
struct input_entry {
    std::unique_ptr<input_source> source; ///< never null
    retry_pause pause;
    time_point open_at = never; ///< of one that is not open
};

/// Counts the lines of a kind that are told within a second.
struct line_limit {
    time_point second_began{};
    int told = 0;
};

struct input_set {
    input_host host;
    std::vector<input_entry> entries; ///< in the order of the options
    line_limit told;
    line_limit complained;

    input_set() = default;
    input_set(const input_set&) = delete; ///< inputs point to the host
    input_set& operator=(const input_set&) = delete;
    ~input_set();
};

/// An input's name, type and counters, for figures and pages.
struct input_report {
    std::string name;
    std::string type;       ///< as in the configuration: "udp"
    std::uint16_t port = 0; ///< that a udp or tcp-listen input has taken; 0: none
    bool is_silent = false; ///< clients have been told so
    input_counters counters;
};

/// Opens the inputs. `epoll_fd` is the loop's, and stays open longer than the set. `tell` gets
/// lines for the server's owner: about broken input, and about connections lost and
/// found and the end of a stream; of either at most max_complaints_per_second, those beyond are
/// dropped. Returns an error text for each input
/// that could not be opened: a port is taken, a pipe missing, an address wrong. The others work;
/// those are opened again after growing pauses. A connection that cannot be made yet is no error.
std::vector<std::string> input_set_open(input_set& set, int epoll_fd,
                                        const std::vector<input_options>& options,
                                        const std::function<void(const std::string&)>& tell,
                                        time_point now);

/// Replaces the inputs by those of new options. An input whose options stay equal is not touched;
/// the others are closed, then the new ones are opened. Returns error texts like input_set_open.
std::vector<std::string> input_set_change(input_set& set, const std::vector<input_options>& options,
                                          time_point now);

/// Handles a readiness event; returns the messages that came. None if `fd` is not one of the set's.
std::vector<transmission> input_set_on_event(input_set& set, int fd, time_point now);

/// Whether a descriptor is one of the set's.
bool input_set_owns(const input_set& set, int fd);

/// Does what is due: connecting again, and reading what had to wait. Returns the messages of that.
std::vector<transmission> input_set_on_time(input_set& set, time_point now);

/// What clients are to be told now of receivers that became silent, or are heard again; each once.
std::vector<std::string> input_set_notices(input_set& set, time_point now);

/// When input_set_on_time or input_set_notices has something to do; a time in the past: at once.
time_point input_set_next_time(const input_set& set);

/// The state of all inputs, in the order of the options.
std::vector<input_report> input_set_reports(input_set& set);

/// Closes all inputs, and waits for their threads.
void input_set_close(input_set& set);

} // namespace tovrik
