// line_writer.cpp - see line_writer.hpp.
#include "server/base/line_writer.hpp"

#include "server/base/limits.hpp"
#include "server/base/sockets.hpp"
#include "server/base/text_fields.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace tovrik
{
namespace
{

struct stat read_about(int fd)
{
    struct stat about {
    };
    fstat(fd, &about);
    return about;
}

/// Opens a terminal or pipe once more, so that writing to it does not wait. Files never let anyone
/// wait, and opened once more they would lose their place.
unique_fd open_once_more(int fd)
{
    const mode_t mode = read_about(fd).st_mode;
    if (!S_ISCHR(mode) && !S_ISFIFO(mode))
        return unique_fd{};
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    return unique_fd{open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
}

/// Whether systemd has said that `fd` leads to its journal.
bool is_journal_stream(int fd)
{
    const char* const stream = std::getenv("JOURNAL_STREAM");
    const struct stat about = read_about(fd);
    return stream != nullptr && S_ISSOCK(about.st_mode) &&
           std::to_string(about.st_dev) + ":" + std::to_string(about.st_ino) == stream;
}

bool has_room(int fd)
{
    pollfd asked{.fd = fd, .events = POLLOUT, .revents = 0};
    return poll(&asked, 1, 0) == 1 && (asked.revents & POLLOUT) != 0;
}

} // namespace

line_writer::line_writer(int fd, const std::string& name)
    : given_fd(fd), own_fd(open_once_more(fd)), is_socket(S_ISSOCK(read_about(fd).st_mode)),
      is_journal(is_journal_stream(fd)), program(name)
{
}

void line_writer::put(std::string_view text, line_level level, time_point now)
{
    const std::lock_guard held{lock};
    drain();
    if (now - second_began >= std::chrono::seconds{1}) {
        second_began = now;
        lines_this_second = 0;
    }
    const std::string added = make_count() + make_line(text, level);
    if (lines_this_second >= max_lines_per_second ||
        waiting.size() + added.size() > max_waiting_line_bytes) {
        ++left_out;
        return;
    }
    ++lines_this_second;
    left_out = 0;
    waiting += added;
    drain();
}

void line_writer::flush()
{
    const std::lock_guard held{lock};
    drain();
    if (left_out == 0 || !waiting.empty())
        return;
    waiting = make_count();
    left_out = 0;
    drain();
}

std::string line_writer::make_line(std::string_view text, line_level level) const
{
    std::string line{text.substr(0, max_line_bytes)};
    // Bytes from 0x80 on may be parts of characters.
    std::replace_if(
        line.begin(), line.end(),
        [](char c) { return (c & 0x80) == 0 && is_control(static_cast<unsigned char>(c)); }, '?');
    const std::string start =
        is_journal ? "<" + std::to_string(static_cast<int>(level)) + ">" : program + ": ";
    return start + line + "\n";
}

/// A line about what was left out, if there is anything to tell.
std::string line_writer::make_count() const
{
    if (left_out == 0)
        return {};
    return make_line(std::to_string(left_out) + " lines were left out here", line_level::warning);
}

/// Writes as much as is taken now. Returns the number of bytes, or -1 as the system's calls do.
long line_writer::write_some(std::string_view bytes) const
{
    if (is_socket)
        return send(given_fd, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (own_fd)
        return write(own_fd.get(), bytes.data(), bytes.size());
    if (S_ISREG(read_about(given_fd).st_mode))
        return write(given_fd, bytes.data(), bytes.size());
    if (has_room(given_fd))
        return write(given_fd, bytes.data(), 1);
    errno = EAGAIN;
    return -1;
}

/// Line by line, because a pipe takes each in one piece beside those of other programs.
void line_writer::drain()
{
    while (!waiting.empty()) {
        const std::size_t line_bytes = waiting.find('\n') + 1;
        const long count = write_some(std::string_view{waiting}.substr(0, line_bytes));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && would_block(errno))
            return;
        if (count < 0)
            ++left_out;
        waiting.erase(0, count < 0 ? line_bytes : static_cast<std::size_t>(count));
    }
}

} // namespace tovrik
