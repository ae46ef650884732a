// xml.hpp - a deliberately small XML reader for packets and the configuration file.
//
// It turns a text into a flat list of elements in document order, each with its full path, and
// finds elements by name or path. It knows start tags, end tags and text, and nothing else: it
// does not decode "&amp;", and takes comments, CDATA and empty-element tags for start tags. It
// validates and writes nothing. It skips everything before the "?>" of the declaration; a text
// without a declaration has no elements.
#pragma once

#include "base/owners.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>

// Working limits in bytes, the terminating NUL included; what is longer is cut.
constexpr std::size_t xml_name_limit = 64;
constexpr std::size_t xml_text_limit = 512;
constexpr std::size_t xml_path_limit = 1024;

/// A document takes at most this many bytes of memory for each byte of its text, and some besides.
constexpr std::size_t xml_memory_factor = 32;
constexpr std::size_t xml_memory_base = 64UL * 1024;

/// How often end tags may be compared with a place in the path that is not theirs: once for each
/// byte of the text, and some times besides.
constexpr std::size_t xml_comparisons_base = 64UL * 1024;

/// One element. The first node of a document with a declaration stands for the declaration itself,
/// with empty name and path. A node without a name is the last one, and all its fields are null.
/// Nodes and texts belong to the document and are freed with it.
struct xml_node {
    char* path;     // names from the root down to this element, joined by "/"
    char* name;     // without attributes
    char* value;    // the text from the start tag to the next tag, null when empty
    xml_node* next; // in the order of the start tags; null at the end

    std::uint32_t path_hash; // a look-up compares a text only if its hash matches
    std::uint32_t name_hash;
};

/// Reads `text` (never null), which is not kept.
/// Returns the document's first node, which the caller releases with xml_free. When out of memory,
/// and before it would take more memory or comparisons than its text allows, the document ends
/// early and errno is ENOMEM; null only if not even the first node was allocated.
xml_node* xml_parse(const char* text);

/// The value of the first node in document order whose name (`by_name`) or path equals `key`.
/// By name, and by path with `want_copy`, a copy that the caller frees; by path without
/// `want_copy`, the node's own text, valid until the document is freed.
/// Null if nothing matches, if the match has no value, if `document` is null, or when out of
/// memory.
char* xml_get(const xml_node* document, const char* key, bool by_name, bool want_copy);

/// Releases all nodes and texts of `document` (may be null). The memory of a large one goes back to
/// the system.
void xml_free(xml_node* document);

/// A document that is freed at the end of its scope.
using xml_document = std::unique_ptr<xml_node, releaser<xml_free>>;
