// path.cpp - see path.hpp.
#include "base/path.hpp"

#include "base/retry.hpp"

#include <fcntl.h>

heap_text path_concatenate(std::string_view first, std::string_view second)
{
    heap_text path{static_cast<char*>(std::malloc(first.size() + second.size() + 1))};
    if (path) {
        char* end = path.get();
        end += first.copy(end, first.size());
        end += second.copy(end, second.size());
        *end = '\0';
    }
    return path;
}

std::string_view path_folder(std::string_view path)
{
    return path.substr(0, path.rfind('/') + 1);
}

unique_fd path_folder_open(const char* path)
{
    const std::string_view folder = path_folder(path);
    const heap_text name = path_concatenate(folder.empty() ? "." : folder);
    if (!name)
        return unique_fd{};
    return unique_fd{
        retry_on_eintr([&] { return open(name.get(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })};
}
