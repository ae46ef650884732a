// template_model.cpp - see template_model.hpp.
#include "models/template_model.hpp"

namespace
{

std::string replace_all(const std::string& text, const std::string& old, const std::string& fresh)
{
    std::string made;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(old, from)) != std::string::npos; from = at + old.size())
        made += text.substr(from, at - from) + fresh;
    return made + text.substr(from);
}

} // namespace

std::string template_model_fill(std::string text, std::size_t nodes,
                                const std::function<std::string(const std::string&)>& value_at)
{
    std::size_t visited = 0;
    std::size_t searched = 0;
    for (int count = 0; count < template_model_replacements; ++count) {
        const std::size_t first = text.find('%');
        if (first == std::string::npos)
            return text;
        const std::size_t second = text.find('%', first + 1);
        if (second == std::string::npos)
            return replace_all(text, "%", "#");
        visited += nodes * (1 + (second - first + 1) / template_model_bytes_of_a_visit);
        searched += text.size() - first;
        if (visited > template_model_visited_nodes || searched > template_model_searched_bytes)
            break;
        const std::string path = text.substr(first + 1, second - first - 1);
        const std::string filled = replace_all(text, '%' + path + '%', value_at(path));
        if (filled.size() > template_model_bytes)
            break;
        text = filled;
    }
    return replace_all(text, "%", "#");
}
