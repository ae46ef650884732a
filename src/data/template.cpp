// template.cpp - see template.hpp.
#include "data/template.hpp"

#include "base/limits.hpp"
#include "base/owners.hpp"
#include "data/text.hpp"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

constexpr const char* head_lines =
    "\nACARS mode: %tovrik/ACARS/ACARSMode%  Aircraft reg: %tovrik/ACARS/AircraftReg% "
    "[%tovrik/Extended/Aircraft%]"
    "\nMessage label: %tovrik/ACARS/MessageLabel% Block id: %tovrik/ACARS/BlockID%  "
    "Message number: %tovrik/ACARS/MessageNumber%"
    "\nFlight number: %tovrik/ACARS/FlightNumber%  "
    "Flight: %tovrik/FlightRouting/From%-%tovrik/FlightRouting/To%"
    "\nOperator: %tovrik/Extended/Operator%";
constexpr const char* content_lines = "\nMessage content: -"
                                      "\n%tovrik/ACARS/Authorized/MessageContent%";
constexpr const char* date_line =
    "\n-------------------------------------------------"
    "[ %tovrik/ACARS/MessageDate/Day%/%tovrik/ACARS/MessageDate/Month%"
    "/%tovrik/ACARS/MessageDate/Year% "
    "%tovrik/ACARS/MessageDate/Hour%:%tovrik/ACARS/MessageDate/Minute% ]-";

/// Puts "#" in place of every "%" of a text.
void neutralise_percents(char* text)
{
    for (char* percent = text; (percent = std::strchr(percent, '%')) != nullptr;)
        *percent = '#';
}

/// A document that placeholders are looked up in, and how much work that may still take.
struct lookup {
    const xml_node* document;
    std::size_t nodes;
    std::size_t visits_left = template_max_visited_nodes;
    std::size_t bytes_left = template_max_searched_bytes;
};

std::size_t count_nodes(const xml_node* document)
{
    std::size_t count = 0;
    for (const xml_node* node = document; node != nullptr; node = node->next)
        ++count;
    return count;
}

/// Whether one more placeholder may be looked up, and looked for in `bytes` bytes.
bool has_work_left(lookup& values, std::size_t length, std::size_t bytes)
{
    const std::size_t visits = values.nodes * (1 + length / template_bytes_of_a_visit);
    if (visits > values.visits_left || bytes > values.bytes_left)
        return false;
    values.visits_left -= visits;
    values.bytes_left -= bytes;
    return true;
}

/// The value that a placeholder stands for; empty if there is none.
std::string_view find_value(const xml_node* document, char* placeholder, std::size_t length)
{
    placeholder[length - 1] = '\0';
    const char* value = xml_get(document, placeholder + 1, false, false);
    placeholder[length - 1] = '%';
    return value != nullptr ? value : std::string_view{};
}

/// What stands in the text from the next placeholder on; empty if there is none.
std::string_view find_next(std::string_view text, std::string_view placeholder)
{
    const void* found = memmem(text.data(), text.size(), placeholder.data(), placeholder.size());
    return found != nullptr ? text.substr(static_cast<std::size_t>(static_cast<const char*>(found) -
                                                                   text.data()))
                            : std::string_view{};
}

/// How often a placeholder stands in a text that begins with it.
std::size_t count_placeholders(std::string_view text, std::string_view placeholder)
{
    std::size_t count = 0;
    for (; !text.empty(); text = find_next(text.substr(placeholder.size()), placeholder))
        ++count;
    return count;
}

/// Writes a text that begins with a placeholder to `to`, with the value in place of `count` of
/// them. The text may lie behind `to`, with space for what is added.
void write_values(char* to, std::string_view text, std::string_view placeholder,
                  std::string_view value, std::size_t count)
{
    for (; count > 0; --count) {
        text.remove_prefix(placeholder.size());
        to += value.copy(to, value.size());
        const std::string_view next = count > 1 ? find_next(text, placeholder) : std::string_view{};
        const std::size_t between = text.size() - next.size();
        std::memmove(to, text.data(), between);
        to += between;
        text.remove_prefix(between);
    }
    *to = '\0';
}

/// Replaces one placeholder by its value, wherever in the text it stands. If that made the text too
/// long or were too much work, every "%" becomes "#" instead. done: the bytes before the "%" that
/// it begins with. length: its bytes, with the "%" that it ends with.
char* fill_placeholder(char* text, std::size_t done, std::size_t length, lookup& values)
{
    const heap_text copy{strndup(text + done, length)};
    if (!copy)
        return text;
    const std::string_view placeholder{copy.get(), length};
    const std::size_t rest = std::strlen(text + done);
    if (!has_work_left(values, length, rest)) {
        neutralise_percents(text + done);
        return text;
    }
    const std::string_view value = find_value(values.document, copy.get(), length);
    const std::size_t count = count_placeholders({text + done, rest}, placeholder);
    const std::size_t filled = rest - count * length + count * value.size();
    if (done + filled > template_max_bytes) {
        neutralise_percents(text + done);
        return text;
    }
    const std::size_t added = filled > rest ? filled - rest : 0;
    if (added > 0) {
        auto* grown = static_cast<char*>(std::realloc(text, done + filled + 1));
        if (grown == nullptr)
            return text;
        text = grown;
        std::memmove(text + done + added, text + done, rest);
    }
    write_values(text + done, {text + done + added, rest}, placeholder, value, count);
    return text;
}

} // namespace

char* template_make(const xml_node* document)
{
    // Kept on purpose: only here the element is looked for by its name alone; logs have always had
    // the two lines wherever a server names a message text. Test:
    // transmission.looks_for_a_message_text_by_name_and_shows_the_one_at_its_path.
    const heap_text content{xml_get(document, "MessageContent", true, true)};
    char* text = str_dup(head_lines);
    if (content)
        text = str_append(text, content_lines);
    return str_append(text, date_line);
}

char* fill_template(char* text, const xml_node* document)
{
    lookup values{document, count_nodes(document)};
    std::size_t done = 0; // bytes without a "%"
    for (int replaced = 0; text != nullptr; ++replaced) {
        // Kept on purpose: the search begins at the value that was filled in, so a value may name
        // placeholders too; servers may count on that. Test:
        // fill_template.replaces_placeholders_with_the_values_at_their_paths.
        char* marker = std::strchr(text + done, '%');
        if (marker == nullptr)
            return text;
        if (replaced >= template_max_replacements) {
            neutralise_percents(marker);
            return text;
        }
        done = static_cast<std::size_t>(marker - text);
        const char* end = std::strchr(marker + 1, '%');
        if (end == nullptr)
            *marker = '#';
        else
            text = fill_placeholder(text, done, static_cast<std::size_t>(end + 1 - marker), values);
    }
    return text;
}
