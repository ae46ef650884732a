// whole_file.hpp - reads small files at once.
#pragma once

#include <cstdio>
#include <string>

namespace tovrik
{

/// A file's content, or an error.
struct whole_file {
    std::string text;
    std::string error; ///< begins with the file's name; empty on success
};

/// Reads the file at `path`. It is an error if the file cannot be read or has more than `limit`
/// bytes.
whole_file read_whole_file(const std::string& path, std::size_t limit);

/// The same for an open stream, from its position on. `name` is the file's.
whole_file read_whole_stream(std::FILE* stream, const std::string& name, std::size_t limit);

} // namespace tovrik
