// json_file.hpp - recorded or live JSON from a file, a pipe or standard input.
#pragma once

#include "base/owners.hpp"
#include "sim/json_lines.hpp"
#include "sim/transmission.hpp"

#include <string>
#include <vector>

namespace sim
{

/// A file's messages, or what to read them from while they come, or what is wrong.
struct json_file {
    std::vector<transmission> messages; ///< of a regular file: at least one
    unique_fd stream;                   ///< of a pipe, socket or terminal: that, open
    std::string error;                  ///< begins with the file's name; empty: all is well
};

/// Opens `path`, "-" being standard input. A regular file is read at once; broken lines of it are
/// complained of and left out. One that cannot be opened, has more than max_json_file_bytes or
/// holds no message is an error.
json_file open_json_file(const std::string& path, json_lines::complaint_taker complain);

} // namespace sim
