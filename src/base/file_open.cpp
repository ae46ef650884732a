// file_open.cpp - see file_open.hpp.
#include "base/file_open.hpp"

#include "base/retry.hpp"

#include <fcntl.h>

static_assert(sizeof(off_t) >= 8, "files may be large");

namespace
{

constexpr mode_t new_file_mode = 0666; // less what the user's mask takes away

struct way_to_open {
    int flags;
    const char* stream_mode;
};

/// By file_use.
constexpr way_to_open ways[] = {
    {O_RDONLY, "rt"},
    {O_WRONLY | O_CREAT | O_TRUNC, "wt"},
    {O_WRONLY | O_CREAT | O_APPEND, "at"},
};

} // namespace

unique_file file_open(const char* name, file_use use)
{
    const way_to_open& way = ways[static_cast<std::size_t>(use)];
    unique_fd fd{retry_on_eintr(
        [&] { return open(name, way.flags | O_NONBLOCK | O_CLOEXEC, new_file_mode); })};
    unique_file file{fd ? fdopen(fd.get(), way.stream_mode) : nullptr};
    if (file)
        fd.release();
    return file;
}
