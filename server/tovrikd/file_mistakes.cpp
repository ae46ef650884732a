// file_mistakes.cpp - see file_mistakes.hpp.
#include "server/tovrikd/file_mistakes.hpp"

#include "server/tovrikd/configuration_limits.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

constexpr std::size_t max_line_bytes = 500;

/// A line that a terminal or a journal can show as it is.
std::string make_line(const std::string& file, const mistake& one)
{
    std::string line = file + ":" + std::to_string(one.line) + ": " + one.what;
    if (line.size() > file.size() + max_line_bytes)
        line.resize(file.size() + max_line_bytes);
    std::ranges::replace_if(
        line, [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }, '?');
    return line;
}

} // namespace

std::vector<std::string> mistake_lines(const std::string& file, std::vector<mistake> mistakes,
                                       std::size_t left_out)
{
    std::ranges::stable_sort(mistakes, {}, &mistake::line);
    if (mistakes.size() > max_told_mistakes) {
        left_out += mistakes.size() - max_told_mistakes;
        mistakes.resize(max_told_mistakes);
    }
    std::vector<std::string> lines;
    lines.reserve(mistakes.size() + 1);
    for (const mistake& one : mistakes)
        lines.push_back(make_line(file, one));
    if (left_out > 0)
        lines.push_back(file + ": there are " + std::to_string(left_out) + " more mistakes");
    return lines;
}

} // namespace tovrik
