// xml_model.cpp - see xml_model.hpp.
#include "models/xml_model.hpp"

#include <algorithm>

namespace
{

struct model_reader {
    xml_model document{xml_model_node{}};
    bool is_in_tag = false;
    std::string tag{};
    std::string text{};
    std::string path{};
    std::size_t memory = 0;
    std::size_t comparisons = 0;

    void begin_tag()
    {
        is_in_tag = true;
        tag.clear();
        if (document.back().name) {
            if (!text.empty())
                document.back().value = text.substr(0, xml_model_text_bytes);
            count_memory(document.back());
            document.push_back({});
        }
        text.clear();
    }
    void count_memory(const xml_model_node& node)
    {
        constexpr std::size_t node_bytes = 48;
        memory += node_bytes + node.path->size() + node.name->size() + 3;
        memory += node.value.value_or("").size();
    }
    void leave_element(const std::string& name)
    {
        const std::size_t found = path.find(name);
        comparisons += std::min(found, path.size());
        if (found == std::string::npos)
            return;
        path.resize(found);
        if (path.ends_with('/'))
            path.pop_back();
    }
    void enter_element(const std::string& name)
    {
        path = (path.empty() ? name : path + '/' + name).substr(0, xml_model_path_bytes);
        if (!document.back().name)
            document.back() = {.path = path, .name = name};
    }
    void end_tag()
    {
        is_in_tag = false;
        const std::string name = tag.substr(0, tag.find(' '));
        if (name.starts_with('/'))
            leave_element(name.substr(1, xml_model_name_bytes));
        else
            enter_element(name.substr(0, xml_model_name_bytes));
    }
};

} // namespace

xml_model_reading xml_model_read(const std::string& text)
{
    model_reader reader;
    const std::string read = text.substr(0, text.find('\0'));
    const std::size_t declaration = read.find("?>");
    if (declaration == std::string::npos)
        return {reader.document};
    for (const char byte : read.substr(declaration + 1)) {
        if (byte == '<')
            reader.begin_tag();
        else if (byte == '>')
            reader.end_tag();
        else
            (reader.is_in_tag ? reader.tag : reader.text) += byte;
    }
    return {reader.document, reader.memory, reader.comparisons};
}

std::optional<std::string> xml_model_at(const xml_model& document, const std::string& path)
{
    for (const xml_model_node& node : document) {
        if (node.path == path)
            return node.value;
    }
    return {};
}

std::optional<std::string> xml_model_named(const xml_model& document, const std::string& name)
{
    for (const xml_model_node& node : document) {
        if (node.name == name)
            return node.value;
    }
    return {};
}
