// server_box.cpp - see server_box.hpp.
#include "net/server_box.hpp"

#include "base/elapsed.hpp"
#include "ui/prompt.hpp"

namespace
{

/// Control characters, the blank, and the blank that does not break.
constexpr bool is_blank(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte <= 0x20 || (byte >= 0x7F && byte <= 0xA0);
}

std::string_view trim(std::string_view name)
{
    while (!name.empty() && is_blank(name.front()))
        name.remove_prefix(1);
    while (!name.empty() && is_blank(name.back()))
        name.remove_suffix(1);
    return name;
}

} // namespace

bool server_box_may_open(server_entry& server, std::time_t now)
{
    return server.boxes_missed < server_box_max_unanswered ||
           elapsed_since(server.box_closed_time, now) >= server_box_quiet_s;
}

void server_box_closed(server_entry& server, bool was_answered, std::time_t now)
{
    server.boxes_missed = was_answered ? 0 : server.boxes_missed + 1;
    server.box_closed_time = now;
}

void server_box_expect(server_entry& server)
{
    server.boxes_missed = 0;
}

std::string_view server_box_name(const server_entry& server)
{
    const std::string_view name = trim(server_display_name(server));
    return name.empty() ? trim(server.ServerName) : name;
}

char* server_box_prompt(server_entry& server, int size, const char* question, const char* preset)
{
    if (!server_box_may_open(server, std::time(nullptr)))
        return nullptr;
    prompt_asker asker{server_box_name(server)};
    char* answer = prompt_input(size, question, hint_or_cancel, preset, &asker);
    server_box_closed(server, !asker.was_left_alone, std::time(nullptr));
    return answer;
}
