// xml.cpp - one pass over the text, run by run between the angle brackets.
#include "data/xml.hpp"

#include "data/text.hpp"

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

namespace
{

/// A text of at most `size` - 1 bytes; what does not fit is dropped.
template <std::size_t size> struct bounded_text {
    char bytes[size];
    std::size_t length = 0;

    std::string_view view() const
    {
        return {bytes, length};
    }
    void append(std::string_view added)
    {
        length += added.copy(bytes + length, size - 1 - length);
    }
};

struct reader {
    xml_node* current = nullptr;       // the latest node; nameless while it waits for a start tag
    bool in_tag = false;               // whether a "<" still waits for its ">"
    std::string_view tag;              // the latest tag, without brackets
    bounded_text<xml_text_limit> text; // what stood outside tags since the latest "<"
    bounded_text<xml_path_limit> path; // names of the open elements
};

xml_node* new_node()
{
    return static_cast<xml_node*>(std::calloc(1, sizeof(xml_node)));
}

char* copy_of(std::string_view bytes)
{
    auto* copy = static_cast<char*>(std::malloc(bytes.size() + 1));
    if (copy != nullptr)
        copy[bytes.copy(copy, bytes.size())] = '\0';
    return copy;
}

/// Gives the waiting node the newly opened element's name and path. False, and neither given,
/// without memory: a node with a path always has a name.
bool name_node(xml_node& node, std::string_view name, std::string_view path)
{
    node.name = copy_of(name);
    node.path = copy_of(path);
    if (node.name != nullptr && node.path != nullptr)
        return true;
    std::free(std::exchange(node.name, nullptr));
    std::free(std::exchange(node.path, nullptr));
    return false;
}

/// At a "<": stores the text so far and lets a fresh node wait for the next start tag. False
/// without memory.
bool begin_tag(reader& state)
{
    state.in_tag = true;
    const std::string_view text = state.text.view();
    state.text.length = 0;
    xml_node& node = *state.current;
    if (node.name == nullptr)
        return true;
    if (!text.empty()) {
        node.value = copy_of(text);
        if (node.value == nullptr)
            return false;
    }
    node.next = new_node();
    if (node.next == nullptr)
        return false;
    state.current = node.next;
    return true;
}

/// Leaves the element `name`, looked for as a mere part of the path: its first occurrence counts,
/// even within a longer name, and a name that does not occur changes nothing.
void leave_element(reader& state, std::string_view name)
{
    const std::size_t found = state.path.view().find(name);
    if (found == std::string_view::npos)
        return;
    const bool after_slash = found > 0 && state.path.bytes[found - 1] == '/';
    state.path.length = after_slash ? found - 1 : found;
}

/// At a ">": opens or closes the element that the latest tag names. False without memory.
bool end_tag(reader& state)
{
    state.in_tag = false;
    const bool closes = state.tag.starts_with('/');
    std::string_view name = state.tag.substr(closes ? 1 : 0);
    name = name.substr(0, name.find(' ')).substr(0, xml_name_limit - 1);
    if (closes) {
        leave_element(state, name);
        return true;
    }
    if (state.path.length > 0)
        state.path.append("/");
    state.path.append(name);
    if (state.current->name != nullptr)
        return true;
    return name_node(*state.current, name, state.path.view());
}

} // namespace

xml_node* xml_parse(const char* text)
{
    xml_node* document = new_node();
    const char* at = std::strstr(text, "?>");
    if (document == nullptr || at == nullptr)
        return document;

    reader state;
    state.current = document;
    // The first byte read is the declaration's ">", which ends an empty tag: so arises the first
    // node.
    for (++at; *at != '\0'; ++at) {
        const std::string_view run(at, std::strcspn(at, "<>"));
        if (state.in_tag)
            state.tag = run;
        else
            state.text.append(run);
        at += run.size();
        if (*at == '\0' || !(*at == '<' ? begin_tag(state) : end_tag(state)))
            break;
    }
    return document;
}

char* xml_get(const xml_node* document, const char* key, bool by_name, bool want_copy)
{
    for (const xml_node* node = document; node != nullptr; node = node->next) {
        const char* compared = by_name ? node->name : node->path;
        if (compared != nullptr && std::strcmp(compared, key) == 0)
            return by_name || want_copy ? str_dup(node->value) : node->value;
    }
    return nullptr;
}

void xml_free(xml_node* document)
{
    if (document == nullptr)
        return;
    // Taking out the node behind the first one again and again leaves the first for the end.
    while (true) {
        xml_node* node = document->next != nullptr ? document->next : document;
        document->next = node->next;
        std::free(node->name);
        std::free(node->path);
        std::free(node->value);
        std::free(node);
        if (node == document)
            return;
    }
}
