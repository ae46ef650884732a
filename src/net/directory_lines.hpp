// directory_lines.hpp - reads the directory's answer, line by line.
#pragma once

#include "data/server_registry.hpp"

/// Where the lines of an HTTP answer begin; null when its header has no end. response:
/// NUL-terminated; the result points into it.
char* directory_body(char* response);

/// Cuts the next line off. lines: moved behind it. Null when no whole line is left; else the line
/// without its line feed.
char* directory_line_next(char*& lines);

/// A new entry for a line of nine fields separated by tabs; null for any other line and when memory
/// is short. The line is cut up. The caller owns the entry.
server_entry* directory_entry_new(char* line);
