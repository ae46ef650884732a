// file_mistakes.hpp - what is wrong in a file that somebody wrote, as lines to tell.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tovrik
{

/// Something that is wrong in a file. The text may hold whatever the file did.
struct mistake {
    unsigned line;
    std::string what = {};
};

/// Lines "FILE:LINE: what", in the order of the lines of the file, without control characters. The
/// first max_told_mistakes are told; if there are more, a last line says how many. `left_out`: how
/// many there are besides `mistakes`.
std::vector<std::string> mistake_lines(const std::string& file, std::vector<mistake> mistakes,
                                       std::size_t left_out = 0);

} // namespace tovrik
