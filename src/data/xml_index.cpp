// xml_index.cpp - see xml_index.hpp.
#include "data/xml_index.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>

xml_index xml_index_build(const xml_node* document)
{
    xml_index index;
    try {
        for (const xml_node* node = document; node != nullptr; node = node->next) {
            if (node->path != nullptr)
                index.push_back(node);
        }
    } catch (...) { // only ever out of memory
        errno = ENOMEM;
        return {};
    }
    // Stable, so that of several nodes with one path the first in the document stays first.
    std::stable_sort(index.begin(), index.end(), [](const xml_node* a, const xml_node* b) {
        return std::strcmp(a->path, b->path) < 0;
    });
    return index;
}

const char* xml_index_value(const xml_index& index, const char* path)
{
    const auto found = std::lower_bound(index.begin(), index.end(), path,
                                        [](const xml_node* node, const char* wanted) {
                                            return std::strcmp(node->path, wanted) < 0;
                                        });
    const bool is_there = found != index.end() && std::strcmp((*found)->path, path) == 0;
    return is_there ? (*found)->value : nullptr;
}
