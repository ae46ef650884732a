// whole_file.hpp - small files, read at once.
#pragma once

#include <cstdio>
#include <string>

namespace sim
{

/// A file's content, or what is wrong with it.
struct whole_file {
    std::string text;
    std::string error; ///< begins with the file's name; empty: all is well
};

/// Reads the file at `path`. One that cannot be read or has more than `limit` bytes is an error.
whole_file read_whole_file(const std::string& path, std::size_t limit);

/// The same of a stream that is open already, from where it stands.
whole_file read_whole_stream(std::FILE* stream, const std::string& name, std::size_t limit);

} // namespace sim
