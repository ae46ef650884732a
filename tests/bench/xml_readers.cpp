// xml_readers.cpp - see xml_readers.hpp.
//
// Each library is used in the way that is fastest for this job: text is taken unchanged where that
// is an option, values are copied once, and a reusable parser is reused.
#include "bench/xml_readers.hpp"

#include "data/text.hpp"
#include "data/xml.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <expat.h>
#include <libxml/parser.h>
#include <pugixml.hpp>
#include <rapidxml/rapidxml.hpp>
#include <string_view>
#include <tinyxml2.h>
#include <vector>

namespace
{

/// Calls `step` with each name of a path.
template <typename function> void walk_path(const char* path, function step)
{
    std::string_view rest{path};
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('/'), rest.size());
        step(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

heap_text copy_text(const char* text, std::size_t length)
{
    return heap_text{length > 0 ? strndup(text, length) : nullptr};
}

bool read_with_ours(const std::string& document, template_values& values)
{
    const xml_document parsed{xml_parse(document.c_str())};
    for (std::size_t index = 0; index < template_path_count; ++index)
        values[index].reset(xml_get(parsed.get(), template_paths[index], false, true));
    return parsed != nullptr;
}

bool read_with_pugixml(const std::string& document, template_values& values)
{
    pugi::xml_document parsed;
    if (!parsed.load_buffer(document.data(), document.size(), pugi::parse_minimal,
                            pugi::encoding_utf8))
        return false;
    for (std::size_t index = 0; index < template_path_count; ++index)
        values[index].reset(
            str_dup(parsed.first_element_by_path(template_paths[index]).child_value()));
    return true;
}

bool read_with_rapidxml(const std::string& document, template_values& values)
{
    // This library modifies the text that it reads.
    std::vector<char> text(document.c_str(), document.c_str() + document.size() + 1);
    rapidxml::xml_document<> parsed;
    parsed.parse<rapidxml::parse_fastest>(text.data());
    for (std::size_t index = 0; index < template_path_count; ++index) {
        const rapidxml::xml_node<>* node = &parsed;
        walk_path(template_paths[index], [&](std::string_view name) {
            node = node != nullptr ? node->first_node(name.data(), name.size()) : nullptr;
        });
        if (node != nullptr)
            values[index] = copy_text(node->value(), node->value_size());
    }
    return true;
}

bool read_with_tinyxml2(const std::string& document, template_values& values)
{
    tinyxml2::XMLDocument parsed(false, tinyxml2::PRESERVE_WHITESPACE);
    if (parsed.Parse(document.data(), document.size()) != tinyxml2::XML_SUCCESS)
        return false;
    for (std::size_t index = 0; index < template_path_count; ++index) {
        const tinyxml2::XMLNode* node = &parsed;
        walk_path(template_paths[index], [&](std::string_view name) {
            // Names end at a NUL for this library.
            char wanted[64] = {};
            name.copy(wanted, sizeof wanted - 1);
            node = node != nullptr ? node->FirstChildElement(wanted) : nullptr;
        });
        values[index].reset(
            str_dup(node != nullptr && node->ToElement() ? node->ToElement()->GetText() : nullptr));
    }
    return true;
}

using libxml_document = std::unique_ptr<xmlDoc, releaser<xmlFreeDoc>>;

const xmlNode* find_libxml_child(const xmlNode* parent, std::string_view name)
{
    const xmlNode* node = parent->children;
    while (node != nullptr && name != reinterpret_cast<const char*>(node->name))
        node = node->next;
    return node;
}

bool read_with_libxml2(const std::string& document, template_values& values)
{
    const libxml_document parsed{xmlReadMemory(document.data(), static_cast<int>(document.size()),
                                               nullptr, nullptr,
                                               XML_PARSE_NOERROR | XML_PARSE_NONET)};
    if (!parsed)
        return false;
    for (std::size_t index = 0; index < template_path_count; ++index) {
        const auto* node = reinterpret_cast<const xmlNode*>(parsed.get());
        walk_path(template_paths[index], [&](std::string_view name) {
            node = node != nullptr ? find_libxml_child(node, name) : nullptr;
        });
        const xmlNode* text = node != nullptr ? node->children : nullptr;
        if (text != nullptr && text->type == XML_TEXT_NODE)
            values[index].reset(str_dup(reinterpret_cast<const char*>(text->content)));
    }
    return true;
}

/// A walk through a document by events: the path so far, and the value being collected.
struct event_walk {
    template_values* values = nullptr;
    std::string path;
    heap_text* wanted = nullptr; // the slot for the current element's text
    std::string text;
};

void store_text(event_walk& walk)
{
    if (walk.wanted != nullptr && !walk.text.empty())
        *walk.wanted = copy_text(walk.text.data(), walk.text.size());
    walk.wanted = nullptr;
}

void on_start(void* context, const char* name, const char**)
{
    event_walk& walk = *static_cast<event_walk*>(context);
    store_text(walk);
    if (!walk.path.empty())
        walk.path += '/';
    walk.path += name;
    const auto* found = std::ranges::find(template_paths, std::string_view{walk.path});
    walk.text.clear();
    if (found != template_paths.end())
        walk.wanted = &(*walk.values)[static_cast<std::size_t>(found - template_paths.begin())];
}

void on_end(void* context, const char*)
{
    event_walk& walk = *static_cast<event_walk*>(context);
    store_text(walk);
    const std::size_t slash = walk.path.rfind('/');
    walk.path.resize(slash == std::string::npos ? 0 : slash);
}

void on_text(void* context, const char* text, int length)
{
    event_walk& walk = *static_cast<event_walk*>(context);
    if (walk.wanted != nullptr)
        walk.text.append(text, static_cast<std::size_t>(length));
}

using expat_parser = std::unique_ptr<XML_ParserStruct, releaser<XML_ParserFree>>;

bool read_with_expat(const std::string& document, template_values& values)
{
    static const expat_parser parser{XML_ParserCreate(nullptr)};
    XML_ParserReset(parser.get(), nullptr);
    event_walk walk;
    walk.values = &values;
    XML_SetUserData(parser.get(), &walk);
    XML_SetElementHandler(parser.get(), on_start, on_end);
    XML_SetCharacterDataHandler(parser.get(), on_text);
    return XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), 1) ==
           XML_STATUS_OK;
}

constexpr xml_reader readers[] = {
    {"ours", read_with_ours},       {"rapidxml", read_with_rapidxml},
    {"pugixml", read_with_pugixml}, {"tinyxml2", read_with_tinyxml2},
    {"libxml2", read_with_libxml2}, {"expat", read_with_expat},
};

bool are_values_equal(const template_values& a, const template_values& b)
{
    return std::ranges::equal(a, b, [](const heap_text& one, const heap_text& other) {
        return one && other ? std::strcmp(one.get(), other.get()) == 0 : one == other;
    });
}

} // namespace

const std::array<const char*, template_path_count> template_paths = {
    "tovrik/ACARS/ACARSMode",
    "tovrik/ACARS/AircraftReg",
    "tovrik/Extended/Aircraft",
    "tovrik/ACARS/MessageLabel",
    "tovrik/ACARS/BlockID",
    "tovrik/ACARS/MessageNumber",
    "tovrik/ACARS/FlightNumber",
    "tovrik/FlightRouting/From",
    "tovrik/FlightRouting/To",
    "tovrik/Extended/Operator",
    "tovrik/ACARS/Authorized/MessageContent",
    "tovrik/ACARS/MessageDate/Day",
    "tovrik/ACARS/MessageDate/Month",
    "tovrik/ACARS/MessageDate/Year",
    "tovrik/ACARS/MessageDate/Hour",
    "tovrik/ACARS/MessageDate/Minute",
};

std::span<const xml_reader> xml_readers()
{
    return readers;
}

bool xml_readers_agree(const std::string& document)
{
    template_values expected;
    bool all_agree = readers[0].read(document, expected) && expected[0] != nullptr;
    for (const xml_reader& reader : readers) {
        template_values values;
        if (reader.read(document, values) && are_values_equal(values, expected))
            continue;
        std::fprintf(stderr, "%s reads a document differently\n", reader.name);
        all_agree = false;
    }
    return all_agree;
}
