// regular_file.cpp - see regular_file.hpp.
#include "server/tovrikd/regular_file.hpp"

#include "base/file_open.hpp"
#include "server/base/system_text.hpp"

#include <cerrno>

namespace tovrik
{

regular_file regular_file_open(const std::string& path)
{
    regular_file file;
    file.stream = file_open(path.c_str(), file_use::reading);
    if (!file.stream || fstat(fileno(file.stream.get()), &file.status) != 0) {
        file.error = system_text(path);
    } else if (S_ISDIR(file.status.st_mode)) {
        errno = EISDIR;
        file.error = system_text(path);
    } else if (!S_ISREG(file.status.st_mode)) {
        file.error = path + ": not an ordinary file";
    }
    return file;
}

std::string path_in_folder(const std::string& folder, const std::string& path)
{
    return path.empty() || path.starts_with('/') ? path : folder + path;
}

} // namespace tovrik
