// order_preload.cpp - records the order in which a program says good-bye and saves its files.
//
// Loaded into the program under test with LD_PRELOAD. Appends a line to the file that
// TEST_ORDER_FILE names for each send ("send PORT", the peer's) and each rename ("rename NAME").
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

void note(const char* line)
{
    const char* name = std::getenv("TEST_ORDER_FILE");
    const int fd =
        name != nullptr ? open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600) : -1;
    if (fd < 0)
        return;
    if (write(fd, line, std::strlen(line)) < 0)
        std::abort();
    close(fd);
}

int peer_port(int socket)
{
    sockaddr_in peer = {};
    socklen_t length = sizeof peer;
    const bool is_known = getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &length) == 0;
    return is_known ? ntohs(peer.sin_port) : 0;
}

} // namespace

extern "C" {

ssize_t send(int socket, const void* bytes, size_t length, int flags)
{
    char line[32];
    std::snprintf(line, sizeof line, "send %d\n", peer_port(socket));
    note(line);
    using call = ssize_t (*)(int, const void*, size_t, int);
    const auto next = reinterpret_cast<call>(dlsym(RTLD_NEXT, "send"));
    return next(socket, bytes, length, flags);
}

int rename(const char* from, const char* to) noexcept
{
    char line[256];
    std::snprintf(line, sizeof line, "rename %s\n", to);
    note(line);
    using call = int (*)(const char*, const char*);
    const auto next = reinterpret_cast<call>(dlsym(RTLD_NEXT, "rename"));
    return next(from, to);
}

} // extern "C"
