// redirect_preload.cpp - redirects a program's directory to a test's port; loaded with LD_PRELOAD.
//
// Connections to port 80 of this machine go to the port that TEST_DIRECTORY_PORT names. Looking up
// "localhost" takes TEST_RESOLVE_DELAY_MS milliseconds longer, and fails while
// TEST_RESOLVE_FAILS is set. Without the variables nothing changes.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

constexpr std::uint16_t directory_port = 80;
constexpr const char* directory_name = "localhost";

long read_number(const char* variable)
{
    const char* text = std::getenv(variable);
    return text != nullptr ? std::strtol(text, nullptr, 10) : 0;
}

bool is_directory(const sockaddr* address, socklen_t length)
{
    sockaddr_in internet{};
    if (length < sizeof internet || address->sa_family != AF_INET)
        return false;
    std::memcpy(&internet, address, sizeof internet);
    return internet.sin_addr.s_addr == htonl(INADDR_LOOPBACK) &&
           internet.sin_port == htons(directory_port);
}

void wait_for_ms(long milliseconds)
{
    const timespec length{.tv_sec = milliseconds / 1000,
                          .tv_nsec = milliseconds % 1000 * 1'000'000};
    nanosleep(&length, nullptr);
}

bool wants_number(const addrinfo* hints)
{
    return hints != nullptr && (hints->ai_flags & AI_NUMERICHOST) != 0;
}

} // namespace

extern "C" {

// Goes straight to the kernel: the next definition of this function may be a sanitizer's.
int connect(int fd, const sockaddr* address, socklen_t length)
{
    const long port = read_number("TEST_DIRECTORY_PORT");
    if (port == 0 || !is_directory(address, length))
        return static_cast<int>(syscall(SYS_connect, fd, address, length));
    sockaddr_in redirected{};
    redirected.sin_family = AF_INET;
    redirected.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    redirected.sin_port = htons(static_cast<std::uint16_t>(port));
    return static_cast<int>(syscall(SYS_connect, fd, &redirected, sizeof redirected));
}

int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** result)
{
    if (host != nullptr && std::strcmp(host, directory_name) == 0 && !wants_number(hints)) {
        wait_for_ms(read_number("TEST_RESOLVE_DELAY_MS"));
        if (std::getenv("TEST_RESOLVE_FAILS") != nullptr)
            return EAI_NONAME;
        // A bare system cannot resolve even this name.
        host = "127.0.0.1";
    }
    using look_up = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    const auto next = reinterpret_cast<look_up>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return next != nullptr ? next(host, service, hints, result) : EAI_SYSTEM;
}

} // extern "C"
