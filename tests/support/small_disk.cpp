// small_disk.cpp - see small_disk.hpp.
#include "support/small_disk.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>
#include <vector>

namespace
{

/// Keeps mounts made from here on invisible to other processes.
bool set_mounts_apart()
{
    static const bool is_apart =
        unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return is_apart;
}

std::string make_filler_path(const std::string& folder)
{
    return folder + "/filler";
}

} // namespace

small_disk::small_disk(const std::string& folder_, std::size_t bytes) : folder(folder_)
{
    const std::string options = "size=" + std::to_string(bytes) + ",mode=0700";
    mounted = set_mounts_apart() &&
              mount("none", folder.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, options.c_str()) == 0;
}

small_disk::~small_disk()
{
    if (mounted)
        umount2(folder.c_str(), MNT_DETACH);
}

bool small_disk::fill() const
{
    const int fd =
        open(make_filler_path(folder).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    const std::vector<char> block(512, '.');
    ssize_t written = 0;
    while (written >= 0)
        written = write(fd, block.data(), block.size());
    const bool is_full = errno == ENOSPC;
    close(fd);
    return is_full;
}

void small_disk::empty() const
{
    unlink(make_filler_path(folder).c_str());
}

file_size_limit::file_size_limit(rlim_t bytes) : handler_before(std::signal(SIGXFSZ, SIG_IGN))
{
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{.rlim_cur = bytes, .rlim_max = before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
}

file_size_limit::~file_size_limit()
{
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler_before);
}
