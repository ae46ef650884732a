// directory_lines.hpp - reads the directory's answer, line by line.
#pragma once

#include "data/server_registry.hpp"

/// Where the lines of an HTTP answer begin; null if its header has no end. response:
/// NUL-terminated; the result points into it.
char* directory_body(char* response);

/// Cuts the next line off and moves `lines` past it. The line without its line feed; null if no
/// whole line is left.
char* directory_line_next(char*& lines);

/// A new entry for a line of nine fields separated by tabs, which is cut up. Null for any other
/// line and when out of memory. The caller owns the entry.
server_entry* directory_entry_new(char* line);
