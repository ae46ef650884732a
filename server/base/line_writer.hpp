// line_writer.hpp - lines for standard error that nobody ever waits for.
//
// A terminal that is stopped, a pipe whose reader hangs and a journal that is busy take no output,
// and a write would wait. To be non-blocking belongs to an opened file, which others share: a shell
// its terminal, a script its pipe. So terminals and pipes are opened once more, sockets are told
// with every call, and the descriptor that was given is never changed. What cannot be opened once
// more, such as another user's terminal, gets byte by byte as long as it says that it has room.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace tovrik
{

/// How urgent a line is, as the journal numbers it.
enum class line_level { error = 3, warning = 4, notice = 5, info = 6 };

/// Any thread may call its functions. The program ignores SIGPIPE: a reader that is gone must not
/// end it.
class line_writer
{
public:
    /// Lines go to `fd`, which stays the caller's and must stay open. Each begins with `program`
    /// and a colon, or with its level in angle brackets if `fd` is the system's journal.
    line_writer(int fd, const std::string& program);

    /// Writes a line, at once if possible. What is not taken waits, max_waiting_line_bytes at most.
    /// Lines beyond that, and more than max_lines_per_second, are left out; the next line that is
    /// taken is told how many. `text` has no line feed; control characters in it become "?", and
    /// all beyond max_line_bytes is cut.
    void put(std::string_view text, line_level level = line_level::warning,
             time_point now = steady_clock::now());

    /// Writes what waits, as far as it is taken now, and then how many lines were left out. To be
    /// called now and then, and at the end.
    void flush();

private:
    std::string make_line(std::string_view text, line_level level) const;
    std::string make_count() const;
    long write_some(std::string_view bytes) const;
    void drain();

    const int given_fd;
    const unique_fd own_fd; ///< the same file, opened once more; empty: not possible or not needed
    const bool is_socket;
    const bool is_journal;
    const std::string program;

    std::mutex lock;
    std::string waiting;       ///< lines, the first of which may be half written
    std::size_t left_out = 0;  ///< lines that nobody has been told of
    time_point second_began{}; ///< the second in which lines are counted
    int lines_this_second = 0;
};

} // namespace tovrik
