// xml_compare.hpp - compares a document that the client has read with its model.
#pragma once

#include "data/xml.hpp"
#include "data/xml_index.hpp"
#include "models/xml_model.hpp"

#include <algorithm>

/// A text that may be missing.
inline std::optional<std::string> xml_text_copy(const char* text)
{
    return text != nullptr ? std::optional<std::string>{text} : std::nullopt;
}

/// The document as a model.
inline xml_model xml_model_copy(const xml_node* node)
{
    xml_model copy;
    for (; node != nullptr; node = node->next)
        copy.push_back(
            {xml_text_copy(node->path), xml_text_copy(node->name), xml_text_copy(node->value)});
    return copy;
}

/// The model of a text. is_cut: its document ended early, as only a costly one may; the model then
/// ends there too, and its last element lacks what the document's does.
inline xml_model xml_model_beside(const xml_node* document, bool is_cut, const std::string& text)
{
    xml_model_reading expected = xml_model_read(text);
    const bool is_costly =
        expected.memory > xml_memory_base / 2 || expected.comparisons > xml_comparisons_base;
    if (!is_cut || !is_costly)
        return expected.document;
    const xml_model copy = xml_model_copy(document);
    expected.document.resize(std::min(copy.size(), expected.document.size()));
    if (!copy.back().name)
        expected.document.back() = {};
    else if (!copy.back().value)
        expected.document.back().value.reset();
    return expected.document;
}

/// Looks a key up in all ways. Returns what should hold and does not, or else null.
inline const char* xml_look_up_broken(const xml_node* document, const xml_index& index,
                                      const xml_model& expected, const std::string& key)
{
    const char* borrowed = xml_get(document, key.c_str(), false, false);
    const heap_text copy{xml_get(document, key.c_str(), false, true)};
    const heap_text named{xml_get(document, key.c_str(), true, false)};
    const heap_text named_copy{xml_get(document, key.c_str(), true, true)};
    if (xml_text_copy(borrowed) != xml_model_at(expected, key))
        return "a path leads to its first element";
    if (xml_text_copy(copy.get()) != xml_text_copy(borrowed))
        return "a copy is like the original";
    if (copy != nullptr && copy.get() == borrowed)
        return "a copy is a text of its own";
    if (xml_text_copy(named.get()) != xml_model_named(expected, key) ||
        xml_text_copy(named_copy.get()) != xml_model_named(expected, key))
        return "a name leads to its first element";
    if (xml_index_value(index, key.c_str()) != borrowed)
        return "the index finds what a walk finds";
    return nullptr;
}
