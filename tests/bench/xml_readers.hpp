// xml_readers.hpp - the same job done by our XML reader and by common libraries: read one
// transmission and copy the value of each of the template's paths.
#pragma once

#include "base/owners.hpp"

#include <array>
#include <cstddef>
#include <span>
#include <string>

/// The paths that the client's template names, 16 of them.
constexpr std::size_t template_path_count = 16;
extern const std::array<const char*, template_path_count> template_paths;

/// One copied value for each template path, in their order; null: not in the document.
using template_values = std::array<heap_text, template_path_count>;

struct xml_reader {
    const char* name;
    /// document: not modified. False if it cannot be read.
    bool (*read)(const std::string& document, template_values& values);
};

/// Our reader, which comes first, and the libraries.
std::span<const xml_reader> xml_readers();

/// Whether every reader finds the same values in a document. If not, says on standard error which
/// one does not.
bool xml_readers_agree(const std::string& document);
