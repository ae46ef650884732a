// json_depth.cpp - see json_depth.hpp.
#include "server/inputs/json_depth.hpp"

namespace tovrik
{
namespace
{

/// The place of the quotation mark that ends a string; the end of the text if there is none.
std::size_t find_string_end(std::string_view text, std::size_t at)
{
    while (at < text.size() && text[at] != '"') {
        at += text[at] == '\\' ? 2 : 1;
    }
    return at;
}

} // namespace

bool is_too_deep(std::string_view text)
{
    std::size_t depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') {
            at = find_string_end(text, at + 1);
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if ((c == '}' || c == ']') && depth > 0) {
            --depth;
        }
        if (depth > max_json_depth)
            return true;
    }
    return false;
}

} // namespace tovrik
