// log_record.cpp - see log_record.hpp.
#include "base/log_record.hpp"

#include "base/retry.hpp"
#include "base/write_all.hpp"

#include <sys/stat.h>
#include <unistd.h>

bool record_append(int log, std::string_view record, torn_record& torn)
{
    if (!undo_torn_record(log, torn))
        return false;
    const std::size_t written = write_all(log, record);
    if (written == record.size())
        return true;
    if (written > 0) {
        // After appending, the position is the end of the record, wherever the file ended before.
        const off_t end = lseek(log, 0, SEEK_CUR);
        torn = {end - static_cast<off_t>(written), static_cast<std::uint32_t>(written)};
        undo_torn_record(log, torn);
    }
    return false;
}

bool undo_torn_record(int log, torn_record& torn)
{
    if (torn.bytes == 0)
        return true;
    struct stat status = {};
    if (fstat(log, &status) != 0)
        return false;
    const bool is_there =
        S_ISREG(status.st_mode) && status.st_size == torn.begin + static_cast<off_t>(torn.bytes);
    if (is_there && retry_on_eintr([&] { return ftruncate(log, torn.begin); }) != 0)
        return false;
    torn = {};
    return true;
}

bool is_deleted(int log)
{
    struct stat status = {};
    return fstat(log, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 0;
}
