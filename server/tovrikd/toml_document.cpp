// toml_document.cpp - see toml_document.hpp.
#include "server/tovrikd/toml_document.hpp"

#include "server/base/text_fields.hpp"
#include "server/tovrikd/toml_characters.hpp"

#include <algorithm>
#include <new>
#include <utility>

// Without exceptions the library reads on after some mistakes, and trips over them. Its built part
// is not needed for one file.
#define TOML_EXCEPTIONS 1
#define TOML_HEADER_ONLY 1
// Its assertions end the program over some texts of which it then tells what is wrong.
#define TOML_ASSERT(expression) static_cast<void>(0)
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

namespace tovrik
{
namespace
{

toml_value copy_value(const toml::node& node);

void copy_entries(const toml::table& table, toml_value& to)
{
    to.type = toml_type::table;
    for (const auto& [key, value] : table)
        to.entries.push_back({std::string{key.str()}, key.source().begin.line, copy_value(value)});
}

void copy_items(const toml::array& list, toml_value& to)
{
    to.type = toml_type::list;
    for (const toml::node& item : list)
        to.items.push_back(copy_value(item));
}

void copy_plain_value(const toml::node& node, toml_value& to)
{
    if (const auto* const text = node.as_string()) {
        to.type = toml_type::text;
        to.text = text->get();
    } else if (const auto* const number = node.as_integer()) {
        to.type = toml_type::whole_number;
        to.number = number->get();
    } else if (const auto* const truth = node.as_boolean()) {
        to.type = toml_type::truth;
        to.truth = truth->get();
    }
}

toml_value copy_value(const toml::node& node)
{
    toml_value value;
    value.line = node.source().begin.line;
    if (const auto* const table = node.as_table()) {
        copy_entries(*table, value);
    } else if (const auto* const list = node.as_array()) {
        copy_items(*list, value);
    } else {
        copy_plain_value(node, value);
    }
    return value;
}

/// What the library says, in the form of this program's lines.
std::string format_error(std::string_view description)
{
    constexpr std::string_view beginning = "Error while parsing ";
    if (description.starts_with(beginning))
        description.remove_prefix(beginning.size());
    std::string text = "this is not TOML: ";
    text += description;
    std::ranges::replace_if(
        text, [](char c) { return is_control(static_cast<unsigned char>(c)) && c >= 0; }, '?');
    return text;
}

constexpr std::string_view foreign_character =
    "a character that is not ASCII is neither in quotes nor in a comment";

toml_document make_broken(std::string error, unsigned line)
{
    toml_document document;
    document.error = std::move(error);
    document.error_line = line;
    return document;
}

} // namespace

toml_document toml_document_read(std::string_view text)
{
    if (const unsigned line = toml_foreign_line(text); line > 0)
        return make_broken(format_error(foreign_character), line);
    try {
        toml_document document;
        copy_entries(toml::parse(text), document.root);
        return document;
    } catch (const toml::parse_error& mistake) {
        return make_broken(format_error(mistake.description()), mistake.source().begin.line);
    } catch (const std::bad_alloc&) {
        return make_broken("out of memory", 1);
    }
}

const toml_entry* toml_entry_of(const toml_value& table, std::string_view key)
{
    const auto found = std::ranges::find(table.entries, key, &toml_entry::key);
    return found == table.entries.end() ? nullptr : &*found;
}

} // namespace tovrik
