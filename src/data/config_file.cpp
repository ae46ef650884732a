// config_file.cpp - see config_file.hpp.
#include "data/config_file.hpp"

#include "base/limits.hpp"
#include "base/retry.hpp"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace
{

/// The size of a file; -1 if the system does not tell.
std::int64_t size_of(const unique_fd& file)
{
    struct stat status = {};
    return fstat(file.get(), &status) == 0 ? std::int64_t{status.st_size} : -1;
}

/// Reads up to `capacity` bytes. How many there were.
std::size_t read_bytes(const unique_fd& file, char* bytes, std::size_t capacity)
{
    std::size_t length = 0;
    ssize_t count = 1;
    while (length < capacity && count > 0) {
        count = retry_on_eintr([&] { return read(file.get(), bytes + length, capacity - length); });
        length += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return length;
}

} // namespace

unique_fd config_open()
{
    // If the name is a fifo's, the program must not wait for a writer.
    return unique_fd{
        retry_on_eintr([] { return open(config_name, O_RDONLY | O_NONBLOCK | O_CLOEXEC); })};
}

bool is_config_too_large(const unique_fd& file)
{
    return std::cmp_greater(size_of(file), config_max_bytes);
}

config_content config_read(const unique_fd& file)
{
    const std::int64_t size = size_of(file);
    const auto capacity =
        static_cast<std::size_t>(std::clamp<std::int64_t>(size, 0, config_max_bytes));
    heap_text text{static_cast<char*>(std::calloc(capacity + 1, 1))};
    const std::size_t length = text ? read_bytes(file, text.get(), capacity) : 0;
    return {std::move(text), std::cmp_equal(length, size)};
}
