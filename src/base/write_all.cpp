// write_all.cpp - see write_all.hpp.
#include "base/write_all.hpp"

#include "base/retry.hpp"

#include <unistd.h>

std::size_t write_all(int file, std::string_view bytes)
{
    std::size_t written = 0;
    while (written < bytes.size()) {
        const std::string_view rest = bytes.substr(written);
        const ssize_t count = retry_on_eintr([&] { return write(file, rest.data(), rest.size()); });
        if (count <= 0)
            break;
        written += static_cast<std::size_t>(count);
    }
    return written;
}
