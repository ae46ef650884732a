// regular_file.hpp - opens a file that must be an ordinary one.
#pragma once

#include "base/owners.hpp"

#include <string>
#include <sys/stat.h>

namespace tovrik
{

/// An open file and what the system says about it, or an error.
struct regular_file {
    unique_file stream;
    struct stat status = {};
    std::string error; ///< begins with the file's name; empty on success
};

/// Opens a file for reading; never waits for the other end of a pipe. It is an error if it cannot
/// be opened, or is a folder, a pipe or a device.
regular_file regular_file_open(const std::string& path);

/// `path` as it is meant in a file of the folder `folder`, which ends in a slash or is empty: an
/// absolute path and an empty one stay as they are.
std::string path_in_folder(const std::string& folder, const std::string& path);

} // namespace tovrik
