// json_file.cpp - see json_file.hpp.
#include "server/inputs/json_file.hpp"

#include "server/base/limits.hpp"
#include "server/base/system_text.hpp"
#include "server/base/whole_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace tovrik
{
namespace
{

/// A named pipe is opened for writing too. So opening it does not wait for a writer, and it does
/// not end when a writer closes it.
int choose_open_flags(const std::string& path)
{
    struct stat about {
    };
    const bool pipe = stat(path.c_str(), &about) == 0 && S_ISFIFO(about.st_mode);
    return (pipe ? O_RDWR : O_RDONLY) | O_CLOEXEC;
}

unique_fd open_input(const std::string& path)
{
    return unique_fd{path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                 : open(path.c_str(), choose_open_flags(path))};
}

/// Whether more may come, for which one can wait.
bool is_live(int fd)
{
    struct stat about {
    };
    return fstat(fd, &about) == 0 &&
           (S_ISFIFO(about.st_mode) || S_ISSOCK(about.st_mode) || isatty(fd) != 0);
}

json_file read_messages(unique_fd fd, const std::string& path, json_lines::complaint_taker complain)
{
    const unique_file stream{fdopen(fd.get(), "r")};
    if (!stream)
        return {{}, unique_fd{}, system_text(path)};
    fd.release();
    whole_file file = read_whole_stream(stream.get(), path, max_json_file_bytes);
    json_file result;
    result.error = std::move(file.error);
    if (!result.error.empty())
        return result;
    json_lines lines{std::move(complain)};
    result.messages = lines.take(file.text);
    append_messages(result.messages, lines.take_rest());
    if (result.messages.empty())
        result.error = path + ": holds no message";
    return result;
}

} // namespace

json_file open_json_file(const std::string& path, json_lines::complaint_taker complain)
{
    unique_fd fd = open_input(path);
    if (!fd)
        return {{}, unique_fd{}, system_text(path)};
    if (is_live(fd.get()))
        return {{}, std::move(fd), {}};
    return read_messages(std::move(fd), path, std::move(complain));
}

} // namespace tovrik
