// folder.cpp - see folder.hpp.
#include "data/folder.hpp"

#include "data/retry.hpp"
#include "data/text.hpp"

#include <cstring>
#include <fcntl.h>

heap_text folder_of(const char* path)
{
    heap_text folder{str_dup(path)};
    if (folder) {
        char* slash = std::strrchr(folder.get(), '/');
        *(slash != nullptr ? slash + 1 : folder.get()) = '\0';
    }
    return folder;
}

unique_fd folder_open(const char* path)
{
    const heap_text folder = folder_of(path);
    if (!folder)
        return unique_fd{};
    const char* name = folder.get()[0] != '\0' ? folder.get() : ".";
    return unique_fd{uninterrupted([&] { return open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC); })};
}
