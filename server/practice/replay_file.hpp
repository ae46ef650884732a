// replay_file.hpp - recorded transmissions: a text file of documents, one after another.
//
// A document begins with a line that starts with "<?xml" and ends before the next such line; white
// space at its end is dropped. Only white space may precede the first document.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

/// The documents of a replay file, or an error.
struct replay_documents {
    std::vector<std::string> documents; ///< at least one, unless `error` is set
    std::string error;                  ///< empty on success
};

/// Cuts the text of a replay file into its documents. It is an error if there is no document, if
/// something other than white space precedes the first, or if a document does not fit a packet or
/// contains a NUL.
replay_documents split_documents(std::string_view text);

/// Reads the file at `path` and cuts it. It is also an error if the file cannot be read or is
/// larger than max_replay_file_bytes. Error texts begin with the path.
replay_documents read_replay_file(const std::string& path);

} // namespace tovrik
