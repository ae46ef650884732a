// status_parts.hpp - the kinds of parts that the status page is made of.
//
// Titles and cells are HTML already.
#pragma once

#include <string>
#include <vector>

namespace tovrik
{

struct table_column {
    const char* title;
    bool is_number = false;
};

struct table_row {
    std::vector<std::string> cells; ///< as many as there are columns
    bool is_marked = false;         ///< it needs attention
};

/// A table. On narrow screens, each row becomes a card in which every cell has its column's title.
std::string status_table(const std::vector<table_column>& columns,
                         const std::vector<table_row>& rows);

struct status_fact {
    const char* title;
    std::string value;
    std::string note = {}; ///< smaller, after the value
};

/// Facts with their values, in columns. `kind` is "tiles" for large values or "facts".
std::string status_facts(const char* kind, const std::vector<status_fact>& facts);

/// A section with its heading. `name` is its anchor.
std::string status_section(const char* name, const char* title, const std::string& content);

} // namespace tovrik
