// small_disk.hpp - limits that make writing fail: a full disk, files that may not grow.
#pragma once

#include <cstddef>
#include <string>
#include <sys/resource.h>

/// A file system of a few kilobytes on a folder, visible to this process and the programs that it
/// starts. It hides everything in the folder.
class small_disk
{
public:
    /// Mounts it on an existing folder, if this process may do that.
    small_disk(const std::string& folder, std::size_t bytes);
    ~small_disk();
    small_disk(const small_disk&) = delete;
    small_disk& operator=(const small_disk&) = delete;

    /// False where nothing may be mounted; a test that needs the disk must then be skipped.
    bool is_there() const
    {
        return mounted;
    }
    /// Takes all space that is left; false if some is left even so.
    bool fill() const;
    /// Frees the space that fill took.
    void empty() const;

private:
    std::string folder;
    bool mounted = false;
};

/// While it lives, no file that this process writes may grow beyond a size; writes fail then.
class file_size_limit
{
public:
    explicit file_size_limit(rlim_t bytes);
    ~file_size_limit();
    file_size_limit(const file_size_limit&) = delete;
    file_size_limit& operator=(const file_size_limit&) = delete;

private:
    rlimit before = {};
    void (*handler_before)(int);
};
