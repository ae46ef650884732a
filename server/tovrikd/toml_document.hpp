// toml_document.hpp - a TOML text as a tree of values with their lines.
//
// The one file that knows the library that reads TOML.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

enum class toml_type { text, whole_number, truth, list, table, other };

struct toml_entry;

/// One value. Only the field of its type means something; fractions, dates and times have none.
struct toml_value {
    toml_type type = toml_type::other;
    unsigned line = 0;     ///< where it begins, from 1; 0 for the whole document
    std::string text = {}; ///< UTF-8; may hold a NUL
    std::int64_t number = 0;
    bool truth = false;
    std::vector<toml_value> items = {}; ///< of a list
    std::vector<toml_entry> entries;    ///< of a table, in no order
};

struct toml_entry {
    std::string key;
    unsigned line; ///< of the key
    toml_value value;
};

struct toml_document {
    toml_value root;
    std::string error = {}; ///< the first thing that is no TOML; empty: none
    unsigned error_line = 0;
};

/// Reads a TOML text, with or without a byte order mark. After an error, which ends the reading,
/// `root` is empty.
toml_document toml_document_read(std::string_view text);

/// The entry of a table with a key; null if there is none. The table owns it.
const toml_entry* toml_entry_of(const toml_value& table, std::string_view key);

} // namespace tovrik
