// terminal_output.cpp - see terminal_output.hpp.
#include "ui/terminal_output.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace
{

/// How long an update may take before the terminal counts as behind.
constexpr int update_limit_ms = 50;

/// How long the end waits for a terminal that takes nothing, and for one that is slow.
constexpr int standstill_ms = 500;
constexpr int finish_limit_ms = 5'000;

/// A serial line is said to be ready only when it is almost empty, and takes bytes long before.
constexpr int look_again_ms = 20;

/// What may collect for a terminal that is behind, apart from the last thing that was written.
constexpr off_t max_backlog_bytes = 256LL * 1024;

/// A store that was larger gives its memory back.
constexpr off_t max_idle_store_bytes = 64LL * 1024;

/// More than an update of any screen. A limit for the size of files below this could cut one. Out
/// of memory, curses may write without end; the store takes no more than this.
constexpr off_t max_store_bytes = 16LL * 1024 * 1024;

constexpr std::size_t piece_bytes = 4096;

bool has_room_for_store()
{
    rlimit limit = {};
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 ||
           limit.rlim_cur >= static_cast<rlim_t>(max_store_bytes);
}

/// Takes a descriptor over to one above the standard ones, any of which may have been closed.
unique_fd move_above_standard(int fd)
{
    const unique_fd low{fd};
    return unique_fd{low ? fcntl(low.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1};
}

/// Makes an empty store that cannot grow beyond its bound. None if the system has none to give.
unique_fd make_store()
{
    unique_fd store = move_above_standard(memfd_create("screen", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    const bool is_bounded = store && ftruncate(store.get(), max_store_bytes) == 0 &&
                            fcntl(store.get(), F_ADD_SEALS, F_SEAL_GROW) == 0;
    return is_bounded ? std::move(store) : unique_fd{};
}

/// Opens the terminal of the standard output once more. To write without waiting is a property of
/// an opened file, and others, such as the shell, share the one that the program was given.
unique_fd open_line()
{
    std::array<char, 256> name = {"/dev/tty"};
    const bool is_own = tcgetsid(STDOUT_FILENO) == getsid(0);
    if (!is_own && ttyname_r(STDOUT_FILENO, name.data(), name.size()) != 0)
        return unique_fd{};
    return move_above_standard(open(name.data(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
}

/// Whether the terminal takes a byte. It may take no more than that.
bool is_ready(int limit_ms)
{
    pollfd line = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&line, 1, limit_ms) > 0;
}

void wait_for_line()
{
    static_cast<void>(is_ready(look_again_ms));
}

/// Writes what the terminal takes now. Below 0 with EAGAIN if it takes nothing.
ssize_t write_at_once(const char* bytes, std::size_t length)
{
    const int line_fd = app_state.output.line_fd;
    if (line_fd >= 0)
        return write(line_fd, bytes, length);
    std::size_t written = 0;
    errno = EAGAIN;
    while (written < length && is_ready(0) && write(STDOUT_FILENO, bytes + written, 1) == 1)
        ++written;
    return written > 0 ? static_cast<ssize_t>(written) : -1;
}

/// Hands the terminal a piece of the store. False if it takes nothing now.
bool pass_piece(off_t stored)
{
    terminal_output& output = app_state.output;
    std::array<char, piece_bytes> piece;
    const std::size_t wanted =
        std::min(piece.size(), static_cast<std::size_t>(stored - output.taken));
    const ssize_t length = pread(output.store_fd, piece.data(), wanted, output.taken);
    const ssize_t written =
        length > 0 ? write_at_once(piece.data(), static_cast<std::size_t>(length)) : length;
    if (written > 0)
        output.taken += written;
    else if (length > 0 && written < 0 && (errno == EAGAIN || errno == EINTR))
        return errno == EINTR;
    else // The terminal is gone, and there is nothing to wait for.
        output.taken = stored;
    return true;
}

void clear_store(off_t stored)
{
    terminal_output& output = app_state.output;
    if (stored >= max_store_bytes)
        output.has_lost = true;
    if (stored > max_idle_store_bytes)
        fallocate(output.store_fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, max_store_bytes);
    lseek(output.store_fd, 0, SEEK_SET);
    output.taken = 0;
    output.kept = 0;
}

/// A terminal that is behind for long does not get all that was rung and resized meanwhile. Only
/// what came last goes, so that no sequence is cut.
void bound_store(off_t stored)
{
    terminal_output& output = app_state.output;
    if (output.taken >= output.kept || stored - output.taken <= max_backlog_bytes) {
        output.kept = stored;
        return;
    }
    lseek(output.store_fd, output.kept, SEEK_SET);
    output.has_lost = true;
}

std::int64_t read_clock_ms()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000 + now.tv_nsec / 1'000'000;
}

/// Gives the terminal everything, within both limits. True if nothing is left.
bool pass_within(int limit_ms, int limit_at_standstill_ms)
{
    const std::int64_t begin_ms = read_clock_ms();
    std::int64_t moved_ms = begin_ms;
    off_t taken = app_state.output.taken;
    while (!terminal_output_carry()) {
        const std::int64_t now_ms = read_clock_ms();
        if (std::exchange(taken, app_state.output.taken) != taken)
            moved_ms = now_ms;
        if (now_ms - moved_ms > limit_at_standstill_ms || now_ms - begin_ms > limit_ms)
            return false;
        wait_for_line();
    }
    return true;
}

} // namespace

std::FILE* terminal_output_open()
{
    if (isatty(STDOUT_FILENO) == 0)
        return stdout;
    terminal_output& output = app_state.output;
    unique_fd store = make_store();
    unique_fd terminal{store ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1};
    std::FILE* stream = terminal ? fdopen(terminal.get(), "w") : nullptr;
    if (stream == nullptr)
        return stdout;
    output.curses_fd = terminal.release();
    output.store_fd = store.release();
    output.line_fd = open_line().release();
    return stream;
}

void terminal_output_close(std::FILE* stream)
{
    if (stream == stdout)
        return;
    std::fclose(stream);
    const unique_fd store{app_state.output.store_fd};
    const unique_fd line{app_state.output.line_fd};
    app_state.output = {};
}

void terminal_output_choose()
{
    terminal_output& output = app_state.output;
    const bool is_wanted = output.store_fd >= 0 && has_room_for_store();
    if (is_wanted == output.is_stored || !terminal_output_carry())
        return;
    const int chosen = is_wanted ? output.store_fd : STDOUT_FILENO;
    if (dup3(chosen, output.curses_fd, O_CLOEXEC) >= 0)
        output.is_stored = is_wanted;
}

bool terminal_output_carry()
{
    const terminal_output& output = app_state.output;
    const off_t stored = output.is_stored ? lseek(output.store_fd, 0, SEEK_CUR) : 0;
    if (stored <= 0)
        return true;
    while (output.taken < stored && pass_piece(stored)) {
    }
    const bool is_all = output.taken >= stored;
    if (is_all)
        clear_store(stored);
    else
        bound_store(stored);
    return is_all;
}

bool terminal_output_finish()
{
    const bool is_all = pass_within(finish_limit_ms, standstill_ms);
    if (!is_all) {
        clear_store(max_backlog_bytes);
        // What the system holds for the terminal as well, which has no space for more otherwise.
        tcflush(STDOUT_FILENO, TCOFLUSH);
    }
    return is_all && !app_state.output.has_lost;
}

void terminal_output_hurry()
{
    pass_within(update_limit_ms, update_limit_ms);
}

bool terminal_output_take_loss()
{
    return std::exchange(app_state.output.has_lost, false);
}

void terminal_output_write(const char* bytes, std::size_t length)
{
    const std::int64_t begin_ms = read_clock_ms();
    while (length > 0) {
        const ssize_t written = write_at_once(bytes, length);
        if (written > 0) {
            bytes += written;
            length -= static_cast<std::size_t>(written);
            continue;
        }
        if (written == 0 || errno != EAGAIN || read_clock_ms() - begin_ms > standstill_ms)
            return;
        wait_for_line();
    }
}
