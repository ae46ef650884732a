// xml_index.hpp - finds the elements of a large document by path without walking it each time.
#pragma once

#include "data/xml.hpp"

#include <vector>

/// The nodes of one document that have a path, ordered by path. Borrows the document.
using xml_index = std::vector<const xml_node*>;

/// Orders a document's nodes. An empty index for a null document, and when out of memory; errno is
/// then ENOMEM.
xml_index xml_index_build(const xml_node* document);

/// The value of the first node in document order with this path, as xml_get finds it. Borrowed from
/// the document; null when there is no such node or it has no value.
const char* xml_index_value(const xml_index& index, const char* path);
