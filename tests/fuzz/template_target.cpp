// template_target.cpp - filling a template, beside filling it placeholder by placeholder in
// std::string.
#include "base/limits.hpp"
#include "data/text.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "net/transmission.hpp"

#include <algorithm>

namespace
{

/// Replaces all occurrences of a placeholder at once.
std::string replace_all(const std::string& text, const std::string& placeholder, const char* value)
{
    std::string made;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(placeholder, from)) != std::string::npos;
         from = at + placeholder.size())
        made.append(text, from, at - from).append(value);
    return made.append(text, from);
}

std::string neutralise(std::string text)
{
    std::replace(text.begin(), text.end(), '%', '#');
    return text;
}

std::size_t count_nodes(const xml_node* node)
{
    std::size_t count = 0;
    for (; node != nullptr; node = node->next)
        ++count;
    return count;
}

std::string fill(std::string text, const xml_node* document)
{
    const std::size_t nodes = count_nodes(document);
    std::size_t visited = 0;
    std::size_t searched = 0;
    for (int count = 0;; ++count) {
        const std::size_t start = text.find('%');
        if (start == std::string::npos)
            return text;
        if (count >= template_max_replacements)
            return neutralise(text);
        const std::size_t end = text.find('%', start + 1);
        if (end == std::string::npos) {
            text[start] = '#';
            continue;
        }
        const std::string placeholder = text.substr(start, end - start + 1);
        visited += nodes * (1 + placeholder.size() / template_bytes_of_a_visit);
        searched += text.size() - start;
        if (visited > template_max_visited_nodes || searched > template_max_searched_bytes)
            return neutralise(text);
        const std::string path = placeholder.substr(1, placeholder.size() - 2);
        const char* value = xml_get(document, path.c_str(), false, false);
        const std::string filled = replace_all(text, placeholder, value != nullptr ? value : "");
        if (filled.size() > template_max_bytes)
            return neutralise(text);
        text = filled;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_input input{data, size};
    const std::string text = input.text();
    const xml_document document{xml_parse(input.text().c_str())};
    const heap_text made{fill_template(str_dup(text.c_str()), document.get())};
    require(made != nullptr, "a template gives a text");
    const std::string result = made.get();
    require(result.find('%') == std::string::npos, "no placeholder is left");
    require(result.size() <= std::max(text.size(), template_max_bytes), "the bound holds");
    require(result == fill(text, document.get()), "every placeholder has its value");
    return 0;
}
