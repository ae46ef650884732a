// directory_target.cpp - a directory's answer, beside plain splitting at line feeds and tabs.
#include "base/owners.hpp"
#include "data/server_registry.hpp"
#include "data/text.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "net/directory_lines.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>
#include <vector>

namespace
{

constexpr std::size_t field_count = 9;

using owned_servers = std::unique_ptr<collection, releaser<collection_destroy>>;
using texts = std::vector<std::string>;
using known_servers = std::set<std::pair<std::string, std::int32_t>>;

/// The parts that each end at `end`; `keep_last` tells whether the rest after the last one counts.
texts split(const std::string& text, char end, bool keep_last)
{
    texts parts;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(end, from)) != std::string::npos; from = at + 1)
        parts.push_back(text.substr(from, at - from));
    if (keep_last)
        parts.push_back(text.substr(from));
    return parts;
}

std::int32_t parse_port(const std::string& field)
{
    const long number = std::strtol(field.c_str(), nullptr, 10);
    if (number == 0)
        return DEFAULT_SERVER_PORT;
    if (number > std::numeric_limits<std::int32_t>::max())
        return std::numeric_limits<std::int32_t>::max();
    if (number < std::numeric_limits<std::int32_t>::min())
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(number);
}

std::string blank_unsafe(std::string text)
{
    const auto is_unsafe = [](unsigned char byte) {
        return byte == '<' || byte == '>' || byte < ' ' || (byte >= 127 && byte <= 159);
    };
    std::replace_if(text.begin(), text.end(), is_unsafe, ' ');
    return text;
}

void compare_field(const char* text, const std::string& expected)
{
    require(expected.empty() ? text == nullptr : text != nullptr && blank_unsafe(expected) == text,
            "a field has blanks for markup and control characters; an empty one is none");
}

void compare_entry(const server_entry& entry, const texts& fields)
{
    compare_field(entry.ServerName, fields[0]);
    require(entry.ServerPort == parse_port(fields[1]), "a port is a number, or the usual one");
    compare_field(entry.Location, fields[3]);
    compare_field(entry.Info, fields[4]);
    compare_field(entry.ServerAlias, fields[6]);
}

void take_line(char* line, const std::string& expected, collection* servers, known_servers& known)
{
    require(expected == line, "a line ends at its feed");
    const texts fields = split(expected, '\t', true);
    server_entry* entry = directory_entry_new(line);
    const bool is_server = fields.size() == field_count;
    require((entry != nullptr) == is_server, "only a line of nine fields is a server");
    if (entry == nullptr)
        return;
    compare_entry(*entry, fields);
    const bool is_new =
        !fields[0].empty() && known.emplace(blank_unsafe(fields[0]), entry->ServerPort).second;
    const std::int32_t added = server_add(servers, entry);
    require((added == -1) == is_new, "a server is added once, and only with a name");
    if (added != -1)
        server_entry_free(entry);
}

void check_servers(const collection* servers, const known_servers& known)
{
    require(servers->count == static_cast<std::int32_t>(known.size()), "the count is right");
    for (std::int32_t index = 1; index < servers->count; ++index)
        require(server_compare(server_at(servers, index - 1), server_at(servers, index)) < 0,
                "the list stays sorted");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string answer = fuzz_input{data, size}.text();
    const heap_text response{str_dup(answer.c_str())};
    const std::size_t header_end = answer.find("\r\n\r\n");
    char* lines = directory_body(response.get());
    require((lines != nullptr) == (header_end != std::string::npos), "a body follows a header");
    if (lines == nullptr)
        return 0;
    const owned_servers servers{server_collection_new()};
    known_servers known;
    for (const std::string& expected : split(answer.substr(header_end + 4), '\n', false)) {
        char* line = directory_line_next(lines);
        require(line != nullptr, "every line is given");
        take_line(line, expected, servers.get(), known);
    }
    require(directory_line_next(lines) == nullptr, "a last line without a feed is none");
    check_servers(servers.get(), known);
    return 0;
}
