// replay_file.hpp - recorded transmissions, one document after the other in a text file.
//
// A document begins with a line that begins with "<?xml" and reaches to the next such line; white
// space at its end is dropped. Only white space may stand before the first document.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sim
{

/// The documents of a replay file, or what is wrong with it.
struct replay_documents {
    std::vector<std::string> documents; ///< at least one, unless `error` is set
    std::string error;                  ///< empty: all is well
};

/// Cuts the text of a replay file into its documents. A text without documents, one with something
/// else before the first, a document that does not fit a packet and one that holds a NUL are
/// errors.
replay_documents split_documents(std::string_view text);

/// Reads and cuts the file at `path`. A file that cannot be read or is larger than
/// max_replay_file_bytes is an error; error texts begin with the path.
replay_documents read_replay_file(const std::string& path);

} // namespace sim
