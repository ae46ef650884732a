// xml_target.cpp - the XML reader and its look-ups beside a reader that works byte by byte.
#include "data/xml.hpp"
#include "data/xml_index.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <vector>

namespace
{

constexpr std::size_t max_keys = 8;

using optional_text = std::optional<std::string>;

struct plain_node {
    optional_text path{};
    optional_text name{};
    optional_text value{};
};
using plain_document = std::vector<plain_node>;

/// Appends a byte to a working text of at most `limit` bytes, including its terminator.
void append_within(std::string& text, std::size_t limit, char byte)
{
    if (text.size() + 1 < limit)
        text += byte;
}

struct plain_reader {
    plain_document document{1};
    bool in_tag = false;
    std::string tag{};
    std::string text{};
    std::string path{};
    std::size_t memory = 0;      // bytes of the nodes and their texts
    std::size_t comparisons = 0; // of end tags with places in the path, at most

    void tag_begin()
    {
        in_tag = true;
        tag.clear();
        if (document.back().name.has_value()) {
            if (!text.empty())
                document.back().value = text;
            memory +=
                sizeof(xml_node) + document.back().path->size() + xml_name_limit + text.size();
            document.emplace_back();
        }
        text.clear();
    }
    void element_leave(const std::string& name)
    {
        const std::size_t found = path.find(name);
        comparisons += std::min(found, path.size());
        if (found != std::string::npos)
            path.erase(found > 0 && path[found - 1] == '/' ? found - 1 : found);
    }
    void element_enter(const std::string& name)
    {
        if (!path.empty())
            append_within(path, xml_path_limit, '/');
        for (const char byte : name)
            append_within(path, xml_path_limit, byte);
        if (!document.back().name.has_value())
            document.back() = {path, name, {}};
    }
    void tag_end()
    {
        in_tag = false;
        const std::string uncut = tag.substr(0, tag.find(' '));
        if (uncut.starts_with('/'))
            element_leave(uncut.substr(1, xml_name_limit - 1));
        else
            element_enter(uncut.substr(0, xml_name_limit - 1));
    }
    /// Whether the real reader may have had to end its document early.
    bool is_costly() const
    {
        return memory > xml_memory_base / 2 || comparisons > xml_comparisons_base;
    }
    void take(char byte)
    {
        if (byte == '<')
            tag_begin();
        else if (byte == '>')
            tag_end();
        else if (in_tag)
            tag += byte;
        else
            append_within(text, xml_text_limit, byte);
    }
};

plain_reader read_plainly(const std::string& text)
{
    plain_reader reader;
    const std::size_t declared = text.find("?>");
    for (std::size_t at = declared; declared != std::string::npos && ++at < text.size();)
        reader.take(text[at]);
    return reader;
}

bool is_same(const char* text, const optional_text& expected)
{
    return expected.has_value() ? text != nullptr && *expected == text : text == nullptr;
}

/// Ends the expected document where the reader's own ended early. The last element may lack what
/// was to come.
void cut_like(const xml_node* node, plain_document& expected)
{
    std::size_t count = 0;
    const xml_node* last = nullptr;
    for (; node != nullptr; last = node, node = node->next)
        ++count;
    require(last != nullptr && count <= expected.size(), "a document only ends early");
    expected.resize(count);
    if (last->name == nullptr)
        expected.back() = {};
    else if (last->value == nullptr)
        expected.back().value.reset();
}

void compare_nodes(const xml_node* node, const plain_document& expected)
{
    for (const plain_node& other : expected) {
        require(node != nullptr, "there are as many elements as start tags");
        require(is_same(node->path, other.path), "an element has the path of its open elements");
        require(is_same(node->name, other.name), "an element has its tag's name");
        require(is_same(node->value, other.value), "an element has the text after its tag");
        node = node->next;
    }
    require(node == nullptr, "there are no more elements than start tags");
}

optional_text find_first_value(const plain_document& document, const std::string& key,
                               optional_text plain_node::*field)
{
    for (const plain_node& node : document) {
        if (node.*field == key)
            return node.value;
    }
    return {};
}

void look_up(const xml_node* document, const xml_index& index, const plain_document& expected,
             const std::string& key)
{
    const optional_text by_path = find_first_value(expected, key, &plain_node::path);
    const char* borrowed = xml_get(document, key.c_str(), false, false);
    const heap_text copy{xml_get(document, key.c_str(), false, true)};
    const heap_text named{xml_get(document, key.c_str(), true, false)};
    require(is_same(borrowed, by_path), "a path leads to its first element");
    require(is_same(copy.get(), by_path), "a copy is like the original");
    require(copy == nullptr || copy.get() != borrowed, "a copy is a text of its own");
    require(xml_index_value(index, key.c_str()) == borrowed, "the index finds what a walk finds");
    require(is_same(named.get(), find_first_value(expected, key, &plain_node::name)),
            "a name leads to its first element");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_input input{data, size};
    const std::string text = input.text();
    errno = 0;
    const xml_document document{xml_parse(text.c_str())};
    const bool is_cut = errno == ENOMEM;
    plain_reader plain = read_plainly(text);
    require(!is_cut || plain.is_costly(), "only a costly document ends early");
    plain_document& expected = plain.document;
    if (is_cut)
        cut_like(document.get(), expected);
    compare_nodes(document.get(), expected);
    const xml_index index = xml_index_build(document.get());
    for (std::size_t count = 0; count < max_keys && !input.is_empty(); ++count)
        look_up(document.get(), index, expected, input.text());
    for (std::size_t place = 0; place < expected.size() && place < max_keys; ++place) {
        look_up(document.get(), index, expected, expected[place].path.value_or(""));
        look_up(document.get(), index, expected, expected[place].name.value_or(""));
    }
    return 0;
}
