// directory_lines.cpp - see directory_lines.hpp.
#include "net/directory_lines.hpp"

#include "data/number.hpp"
#include "data/text.hpp"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace
{

constexpr int field_count = 9;

// Which field of a line holds what.
constexpr int field_host = 0;
constexpr int field_port = 1;
constexpr int field_location = 3;
constexpr int field_info = 4;
constexpr int field_alias = 6;

/// Whether a byte is one that the configuration's reader takes for markup, or a control character.
bool is_unsafe(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte == '<' || byte == '>' || byte < 0x20 || (byte >= 0x7F && byte < 0xA0);
}

/// Copies a field with blanks for its unsafe bytes: all of it comes from strangers, and is shown
/// and saved.
char* copy_field(const char* field)
{
    char* copy = field[0] != '\0' ? str_dup(field) : nullptr;
    for (char* at = copy; at != nullptr && *at != '\0'; ++at) {
        if (is_unsafe(*at))
            *at = ' ';
    }
    return copy;
}

std::int32_t read_port(const char* field)
{
    const std::int32_t port = number_clamped(field);
    return port != 0 ? port : DEFAULT_SERVER_PORT;
}

} // namespace

char* directory_body(char* response)
{
    char* header_end = std::strstr(response, "\r\n\r\n");
    return header_end != nullptr ? header_end + 4 : nullptr;
}

char* directory_line_next(char*& lines)
{
    char* feed = std::strchr(lines, '\n');
    if (feed == nullptr)
        return nullptr;
    *feed = '\0';
    return std::exchange(lines, feed + 1);
}

server_entry* directory_entry_new(char* line)
{
    char* fields[field_count] = {};
    if (str_split(line, fields, field_count, "\t") != field_count)
        return nullptr;
    auto* entry = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    if (entry == nullptr)
        return nullptr;
    entry->ServerName = copy_field(fields[field_host]);
    entry->ServerPort = read_port(fields[field_port]);
    entry->Location = copy_field(fields[field_location]);
    entry->Info = copy_field(fields[field_info]);
    entry->ServerAlias = copy_field(fields[field_alias]);
    return entry;
}
