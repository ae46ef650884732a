// log_record.cpp - see log_record.hpp.
#include "net/log_record.hpp"

#include "data/retry.hpp"

#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// How many bytes of a record an open file has taken.
std::size_t bytes_write(int file, std::string_view bytes)
{
    std::size_t written = 0;
    while (written < bytes.size()) {
        const std::string_view rest = bytes.substr(written);
        const ssize_t count = uninterrupted([&] { return write(file, rest.data(), rest.size()); });
        if (count <= 0)
            break;
        written += static_cast<std::size_t>(count);
    }
    return written;
}

} // namespace

bool record_append(int log, std::string_view record, torn_record& torn)
{
    if (!record_take_back(log, torn))
        return false;
    const std::size_t written = bytes_write(log, record);
    if (written == record.size())
        return true;
    if (written > 0) {
        // Appending leaves the position behind the last byte, wherever the end was before.
        const off_t end = lseek(log, 0, SEEK_CUR);
        torn = {end - static_cast<off_t>(written), static_cast<std::uint32_t>(written)};
        record_take_back(log, torn);
    }
    return false;
}

bool record_take_back(int log, torn_record& torn)
{
    if (torn.bytes == 0)
        return true;
    struct stat status = {};
    if (fstat(log, &status) != 0)
        return false;
    const bool is_there =
        S_ISREG(status.st_mode) && status.st_size == torn.begin + static_cast<off_t>(torn.bytes);
    if (is_there && uninterrupted([&] { return ftruncate(log, torn.begin); }) != 0)
        return false;
    torn = {};
    return true;
}

bool is_deleted(int log)
{
    struct stat status = {};
    return fstat(log, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 0;
}
