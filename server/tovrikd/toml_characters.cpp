// toml_characters.cpp - see toml_characters.hpp.
#include "server/tovrikd/toml_characters.hpp"

#include <algorithm>
#include <cstddef>

namespace tovrik
{
namespace
{

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

/// What lies between quotes, from behind the opening ones to behind the closing ones.
std::size_t find_end_of_quotes(std::string_view text, std::size_t at, std::string_view quotes)
{
    const bool multi_line = quotes.size() == 3;
    while (at < text.size() && !text.substr(at).starts_with(quotes)) {
        if (!multi_line && text[at] == '\n')
            return at;
        at += quotes.front() == '"' && text[at] == '\\' ? 2 : 1;
    }
    at += quotes.size();
    // Up to two quotes more belong to the text.
    for (int more = 0; multi_line && more < 2 && at < text.size() && text[at] == quotes.front();
         ++more)
        ++at;
    return std::min(at, text.size());
}

/// Where what begins at `at` ends: a text in quotes, a comment, or else one byte.
std::size_t find_end(std::string_view text, std::size_t at)
{
    if (text[at] == '#')
        return std::min(text.find('\n', at), text.size());
    if (text[at] != '"' && text[at] != '\'')
        return at + 1;
    const std::string_view three = text[at] == '"' ? R"(""")" : "'''";
    const std::string_view quotes = text.substr(at).starts_with(three) ? three : three.substr(0, 1);
    return find_end_of_quotes(text, at + quotes.size(), quotes);
}

} // namespace

unsigned toml_foreign_line(std::string_view text)
{
    for (std::size_t at = text.starts_with(byte_order_mark) ? byte_order_mark.size() : 0;
         at < text.size(); at = find_end(text, at)) {
        if (static_cast<unsigned char>(text[at]) > 0x7F)
            return 1 + static_cast<unsigned>(std::ranges::count(text.substr(0, at), '\n'));
    }
    return 0;
}

} // namespace tovrik
