// held_size_preload.cpp - holds a program where it asks for its terminal's size; loaded into it
// with LD_PRELOAD.
//
// While the file "hold" exists in the folder that HELD_SIZE_FOLDER names, a query creates the file
// "held" there and waits until "hold" is gone. The first queries after "hold" was made are answered
// at once, as many as it has bytes. Without the variable nothing changes.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

constexpr long round_ns = 5'000'000;

void wait_while_held(const std::string& folder)
{
    const std::string hold = folder + "/hold";
    static off_t answered = 0;
    struct stat status = {};
    if (stat(hold.c_str(), &status) != 0) {
        answered = 0;
        return;
    }
    if (answered++ < status.st_size)
        return;
    close(open((folder + "/held").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    while (access(hold.c_str(), F_OK) == 0) {
        const timespec round = {0, round_ns};
        nanosleep(&round, nullptr);
    }
}

} // namespace

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    const char* folder = std::getenv("HELD_SIZE_FOLDER");
    if (request == TIOCGWINSZ && folder != nullptr)
        wait_while_held(folder);
    return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}
