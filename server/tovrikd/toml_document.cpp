// toml_document.cpp - see toml_document.hpp.
#include "server/tovrikd/toml_document.hpp"

#include "server/base/text_fields.hpp"
#include "server/base/utf8_text.hpp"
#include "server/tovrikd/ascii_form.hpp"

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

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

toml_value copy_value(const toml::node& node, const ascii_form& form);

void copy_entries(const toml::table& table, const ascii_form& form, toml_value& to)
{
    to.type = toml_type::table;
    for (const auto& [key, value] : table)
        to.entries.push_back({ascii_form_original(form, key.str()), key.source().begin.line,
                              copy_value(value, form)});
}

void copy_items(const toml::array& list, const ascii_form& form, toml_value& to)
{
    to.type = toml_type::list;
    for (const toml::node& item : list)
        to.items.push_back(copy_value(item, form));
}

void copy_plain_value(const toml::node& node, const ascii_form& form, toml_value& to)
{
    if (const auto* const text = node.as_string()) {
        to.type = toml_type::text;
        to.text = ascii_form_original(form, text->get());
    } else if (const auto* const number = node.as_integer()) {
        to.type = toml_type::whole_number;
        to.number = number->get();
    } else if (const auto* const truth = node.as_boolean()) {
        to.type = toml_type::truth;
        to.truth = truth->get();
    }
}

toml_value copy_value(const toml::node& node, const ascii_form& form)
{
    toml_value value;
    value.line = node.source().begin.line;
    if (const auto* const table = node.as_table()) {
        copy_entries(*table, form, value);
    } else if (const auto* const list = node.as_array()) {
        copy_items(*list, form, value);
    } else {
        copy_plain_value(node, form, value);
    }
    return value;
}

unsigned find_line(std::string_view text, std::size_t position)
{
    return 1 + static_cast<unsigned>(std::ranges::count(text.substr(0, position), '\n'));
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
    if (text.starts_with(byte_order_mark))
        text.remove_prefix(byte_order_mark.size());
    if (const std::size_t valid = utf8_valid_length(text); valid < text.size())
        return make_broken("this is not UTF-8", find_line(text, valid));
    // The library looks up other characters than ASCII's in tables that do not have all of them.
    const ascii_form form = ascii_form_make(text);
    try {
        toml_document document;
        copy_entries(toml::parse(form.text), form, document.root);
        return document;
    } catch (const toml::parse_error& mistake) {
        return make_broken(ascii_form_original(form, format_error(mistake.description())),
                           mistake.source().begin.line);
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
