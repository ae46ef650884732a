// json_file.hpp - recorded or live JSON from a file, a pipe or standard input.
#pragma once

#include "base/owners.hpp"
#include "server/inputs/json_lines.hpp"
#include "server/messages/transmission.hpp"

#include <string>
#include <vector>

namespace tovrik
{

/// A file's messages, or a stream to read them from as they come, or an error.
struct json_file {
    std::vector<transmission> messages; ///< of a regular file; at least one
    unique_fd stream;                   ///< a pipe, socket or terminal, open for reading
    std::string error;                  ///< begins with the file's name; empty on success
};

/// Opens `path`; "-" stands for standard input. A regular file is read at once; `complain` gets its
/// broken lines, which are left out. A file that cannot be opened, has more than
/// max_json_file_bytes or contains no message is an error.
json_file open_json_file(const std::string& path, json_lines::complaint_taker complain);

} // namespace tovrik
