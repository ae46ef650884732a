// xml_model.hpp - what the XML reader makes of a text: a model written from the reader's rules.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// What is longer is cut, in bytes without a terminator.
constexpr std::size_t xml_model_name_bytes = 63;
constexpr std::size_t xml_model_text_bytes = 511;
constexpr std::size_t xml_model_path_bytes = 1023;

/// One element; a text that is not there is not the same as an empty one.
struct xml_model_node {
    std::optional<std::string> path{};
    std::optional<std::string> name{};
    std::optional<std::string> value{};

    bool operator==(const xml_model_node&) const = default;
};

/// The elements in the order of their start tags.
using xml_model = std::vector<xml_model_node>;

/// What a text is read as, and what that costs.
struct xml_model_reading {
    xml_model document{};
    std::size_t memory = 0;      // bytes of the elements with their texts
    std::size_t comparisons = 0; // of end tags with places in the path, at most
};

/// Reads a text, which ends at its first NUL.
xml_model_reading xml_model_read(const std::string& text);

/// The value of the first element at a path.
std::optional<std::string> xml_model_at(const xml_model& document, const std::string& path);

/// The value of the first element with a name.
std::optional<std::string> xml_model_named(const xml_model& document, const std::string& name);
