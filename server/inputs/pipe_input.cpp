// pipe_input.cpp - see pipe_input.hpp.
#include "server/inputs/pipe_input.hpp"

#include "server/base/sockets.hpp"
#include "server/base/system_text.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tovrik
{
namespace
{

constexpr const char* standard_input = "-";

bool is_named_pipe(int fd)
{
    struct stat about {
    };
    return fstat(fd, &about) == 0 && S_ISFIFO(about.st_mode);
}

unique_fd open_stream(const std::string& path)
{
    if (path == standard_input)
        return unique_fd{fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)};
    return unique_fd{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
}

} // namespace

pipe_input::pipe_input(input_options chosen, input_host& home)
    : input_source(std::move(chosen), home), lines(make_lines())
{
}

std::string pipe_input::open(time_point)
{
    unique_fd opened = open_stream(options.path);
    if (!opened)
        return system_text(options.path);
    if (options.path != standard_input && !is_named_pipe(opened.get()))
        return options.path + ": not a named pipe";
    if (!stream.open(host, *this, std::move(opened), EPOLLIN))
        return system_text(options.path + ": cannot wait for it");
    counters.is_connected = true;
    return {};
}

void pipe_input::on_event(int, time_point now)
{
    char block[65536];
    // Standard input may be a blocking one, but it is ready, so this does not wait.
    const ssize_t count = read(stream.get(), block, sizeof block);
    if (count > 0) {
        take_bytes(lines, {block, static_cast<std::size_t>(count)}, now);
    } else if (count == 0 || (errno != EINTR && !would_block(errno))) {
        on_end(now);
    }
}

/// After its last writer, a pipe is ready for ever. Opened anew, it waits for the next writer. The
/// former descriptor stays open until then, so what a quick writer has left is not lost.
void pipe_input::on_end(time_point now)
{
    take_rest(lines, now);
    tell("the stream has ended");
    if (options.path != standard_input) {
        watched_fd reopened;
        if (reopened.open(host, *this, open_stream(options.path), EPOLLIN)) {
            stream = std::move(reopened);
            return;
        }
        tell(system_text(options.path + ": cannot be opened again"));
        is_open = false;
    }
    stream.close();
    counters.is_connected = false;
}

} // namespace tovrik
