// fault_preload.cpp - makes system calls fail, or signals come before them, when a test says so;
// loaded into the program with LD_PRELOAD or linked to a test.
//
// A test says so in the file that TEST_FAULT_FILE names, or in what fault_layout_in_use() returns.
// Calls go straight to the kernel where possible: the next definition of a function may belong to a
// sanitizer that is not ready when the first call comes.
#include "support/fault_layout.hpp"
#include "support/long_times.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

fault_layout own_layout;
fault_layout* layout = &own_layout;
long own_id = 0;

__attribute__((constructor)) void attach()
{
    own_id = syscall(SYS_getpid);
    const char* name = std::getenv(fault_file_variable);
    const long fd = name == nullptr ? -1 : syscall(SYS_openat, AT_FDCWD, name, O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return;
    void* mapped = mmap(nullptr, sizeof(fault_layout), PROT_READ | PROT_WRITE, MAP_SHARED,
                        static_cast<int>(fd), 0);
    syscall(SYS_close, fd);
    if (mapped != MAP_FAILED)
        layout = static_cast<fault_layout*>(mapped);
}

bool is_named(const char* name, const char* path)
{
    return *name == '\0' || std::strstr(path, name) != nullptr;
}

bool is_named(const char* name, int fd)
{
    if (*name == '\0')
        return true;
    char link[32];
    char path[512] = {};
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    return syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof path - 1) > 0 &&
           is_named(name, path);
}

/// Whether the test wants a signal before this call.
bool is_signal_due(int step)
{
    const int first = layout->signal_at;
    const int every = layout->signal_every;
    return first != 0 &&
           (step == first || (step > first && every > 0 && (step - first) % every == 0));
}

/// Counts a call, and sends the process here what the test wants.
void count_step()
{
    if (layout->kill_at == 0 && layout->signal_at == 0)
        return;
    const long id = syscall(SYS_getpid);
    const int step = ++layout->steps;
    if (step == layout->kill_at)
        syscall(SYS_kill, id, SIGKILL);
    if (id == own_id && is_signal_due(step)) {
        ++layout->signals;
        syscall(SYS_kill, id, layout->signal_number.load());
    }
}

/// How this call fails: an errno, short_count or end_of_file; 0 if it succeeds. what: a path or a
/// descriptor; nothing for calls that act on no file.
template <typename... T> int take_fault(faulty_call call, T... what)
{
    count_step();
    for (fault_slot& slot : layout->faults) {
        if (slot.call != static_cast<int>(call) || !(is_named(slot.name, what) && ...))
            continue;
        if (slot.skipped.fetch_sub(1) > 0 || slot.failing.fetch_sub(1) <= 0)
            continue;
        ++slot.hits;
        return slot.error;
    }
    return 0;
}

/// How a wait fails; a wait for several descriptors goes by the first.
int take_wait_fault(const pollfd* watched, nfds_t count)
{
    return count > 0 ? take_fault(faulty_call::poll, watched->fd) : take_fault(faulty_call::pause);
}

int fail(int error)
{
    errno = error;
    return -1;
}

template <typename... T> int call_kernel(int fault, long number, T... arguments)
{
    return fault != 0 ? fail(fault) : static_cast<int>(syscall(number, arguments...));
}

/// A call that moves bytes; it may move fewer than asked for.
template <typename... T>
ssize_t move_bytes(int fault, long number, int fd, const void* bytes, size_t length, T... more)
{
    if (fault > 0)
        return fail(fault);
    if (fault == end_of_file)
        return 0;
    const size_t asked = fault == short_count ? std::min<size_t>(length, 1) : length;
    return syscall(number, fd, bytes, asked, more...);
}

template <typename T> T find_next(const char* name)
{
    return reinterpret_cast<T>(dlsym(RTLD_NEXT, name));
}

int read_status(int fd, struct stat* status)
{
    // On 32 bits, the system's record differs from the C library's.
    if constexpr (sizeof(long) < sizeof(status->st_size))
        return find_next<int (*)(int, struct stat*)>(long_times::fstat)(fd, status);
    else
        return static_cast<int>(syscall(SYS_fstat, fd, status));
}

/// For every name of fstat: the sanitizer's own comes between one of ours and another.
int read_status_or_fail(int fd, struct stat* status)
{
    const int fault = take_fault(faulty_call::status, fd);
    return fault != 0 ? fail(fault) : read_status(fd, status);
}

int set_length(int fd, off_t length)
{
    // On 32 bits, the length fills two of the system's words.
    if constexpr (sizeof(long) < sizeof length)
        return find_next<int (*)(int, off_t)>(long_times::ftruncate)(fd, length);
    else
        return static_cast<int>(syscall(SYS_ftruncate, fd, length));
}

} // namespace

extern "C" {

fault_layout* fault_layout_in_use()
{
    return layout;
}

int socket(int domain, int type, int protocol) noexcept
{
    return call_kernel(take_fault(faulty_call::socket), SYS_socket, domain, type, protocol);
}

int connect(int fd, const sockaddr* address, socklen_t length)
{
    const int fault = take_fault(faulty_call::connect);
    using call = int (*)(int, const sockaddr*, socklen_t);
    return fault != 0 ? fail(fault) : find_next<call>("connect")(fd, address, length);
}

int poll(pollfd* watched, nfds_t count, int limit_ms)
{
    const int fault = take_wait_fault(watched, count);
    using call = int (*)(pollfd*, nfds_t, int);
    return fault != 0 ? fail(fault) : find_next<call>("poll")(watched, count, limit_ms);
}

int __poll_chk(pollfd* watched, nfds_t count, int limit_ms, size_t)
{
    return poll(watched, count, limit_ms);
}

int ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask)
{
    const int fault = take_wait_fault(watched, count);
    if (count > 0 && limit != nullptr)
        layout->limit_us = limit->tv_sec * 1'000'000 + limit->tv_nsec / 1'000;
    using call = int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*);
    return fault != 0 ? fail(fault)
                      : find_next<call>(long_times::ppoll)(watched, count, limit, mask);
}

int __ppoll_chk(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask, size_t)
{
    return ppoll(watched, count, limit, mask);
}

ssize_t send(int fd, const void* bytes, size_t length, int flags)
{
    return move_bytes(take_fault(faulty_call::send), SYS_sendto, fd, bytes, length, flags, nullptr,
                      0);
}

int fstat(int fd, struct stat* status) noexcept
{
    return read_status_or_fail(fd, status);
}

// The thread sanitizer's fstat precedes ours and calls this one.
int __fxstat(int, int fd, struct stat* status) noexcept
{
    return read_status_or_fail(fd, status);
}

ssize_t read(int fd, void* bytes, size_t length)
{
    return move_bytes(take_fault(faulty_call::read, fd), SYS_read, fd, bytes, length);
}

ssize_t __read_chk(int fd, void* bytes, size_t length, size_t)
{
    return read(fd, bytes, length);
}

ssize_t write(int fd, const void* bytes, size_t length)
{
    const int fault = take_fault(faulty_call::write, fd);
    const auto piece = static_cast<size_t>(layout->piece.load());
    return move_bytes(fault, SYS_write, fd, bytes, piece > 0 ? std::min(piece, length) : length);
}

int openat(int folder, const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const unsigned mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, unsigned) : 0;
    va_end(more);
    return call_kernel(take_fault(faulty_call::open, path), SYS_openat, folder, path, flags, mode);
}

int open(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const unsigned mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, unsigned) : 0;
    va_end(more);
    return openat(AT_FDCWD, path, flags, mode);
}

int __open_2(const char* path, int flags)
{
    return openat(AT_FDCWD, path, flags, 0);
}

int __openat_2(int folder, const char* path, int flags)
{
    return openat(folder, path, flags, 0);
}

int __open64_2(const char* path, int flags)
{
    return openat(AT_FDCWD, path, flags, 0);
}

int __openat64_2(int folder, const char* path, int flags)
{
    return openat(folder, path, flags, 0);
}

int mkostemp(char* path, int flags)
{
    const int fault = take_fault(faulty_call::make_unique, static_cast<const char*>(path));
    return fault != 0 ? fail(fault)
                      : find_next<int (*)(char*, int)>(long_times::mkostemp)(path, flags);
}

// Under its own name the function would hide the struct of the same name.
int lock_call(int fd, int operation) noexcept __asm__("flock");

int lock_call(int fd, int operation) noexcept
{
    return call_kernel(take_fault(faulty_call::lock, fd), SYS_flock, fd, operation);
}

int fchown(int fd, uid_t owner, gid_t group) noexcept
{
    return call_kernel(take_fault(faulty_call::set_owner, fd), SYS_fchown, fd, owner, group);
}

int fchmod(int fd, mode_t mode) noexcept
{
    return call_kernel(take_fault(faulty_call::set_mode, fd), SYS_fchmod, fd, mode);
}

int ftruncate(int fd, off_t length) noexcept
{
    const int fault = take_fault(faulty_call::set_length, fd);
    return fault != 0 ? fail(fault) : set_length(fd, length);
}

int posix_fallocate(int fd, off_t offset, off_t length)
{
    const int fault = take_fault(faulty_call::set_length, fd);
    using call = int (*)(int, off_t, off_t);
    return fault != 0 ? fault : find_next<call>(long_times::posix_fallocate)(fd, offset, length);
}

int fsync(int fd)
{
    return call_kernel(take_fault(faulty_call::sync, fd), SYS_fsync, fd);
}

int close(int fd)
{
    const int fault = take_fault(faulty_call::close, fd);
    // The descriptor is gone whatever the result.
    const auto answer = static_cast<int>(syscall(SYS_close, fd));
    return fault != 0 ? fail(fault) : answer;
}

int rename(const char* from, const char* to) noexcept
{
    return call_kernel(take_fault(faulty_call::rename, to), SYS_renameat, AT_FDCWD, from, AT_FDCWD,
                       to);
}

int unlink(const char* path) noexcept
{
    return call_kernel(take_fault(faulty_call::remove, path), SYS_unlinkat, AT_FDCWD, path, 0);
}

int unlinkat(int folder, const char* path, int flags) noexcept
{
    return call_kernel(take_fault(faulty_call::remove, path), SYS_unlinkat, folder, path, flags);
}

pid_t fork() noexcept
{
    const int fault = take_fault(faulty_call::fork);
    return fault != 0 ? fail(fault) : find_next<pid_t (*)()>("fork")();
}

pid_t waitpid(pid_t child, int* status, int options)
{
    const int fault = take_fault(faulty_call::wait);
    using call = pid_t (*)(pid_t, int*, int);
    return fault != 0 ? fail(fault) : find_next<call>("waitpid")(child, status, options);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) noexcept
{
    const int fault = take_fault(faulty_call::thread);
    using call = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    return fault != 0 ? fault
                      : find_next<call>("pthread_create")(thread, attributes, run, argument);
}

int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** list)
{
    const bool is_number = hints != nullptr && (hints->ai_flags & AI_NUMERICHOST) != 0;
    const int fault = is_number ? 0 : take_fault(faulty_call::look_up);
    using call = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    return fault != 0 ? fault : find_next<call>("getaddrinfo")(host, service, hints, list);
}

} // extern "C"
