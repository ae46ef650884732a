// config_file.hpp - the file "ncursesclient.conf" as bytes, for loading and saving.
//
// The file lies in the home folder, or in the current folder if HOME is not set; the functions here
// expect to run there. It is small XML in ISO-8859-1; values stand in it as they are, without
// escapes.
#pragma once

#include "base/owners.hpp"

/// The configuration file's name within the home folder.
constexpr const char* config_name = "ncursesclient.conf";

/// Opens the file for reading. None if it cannot be opened, with errno set.
unique_fd config_open();

/// Whether an open file is larger than a configuration may be.
bool is_config_too_large(const unique_fd& file);

/// What was read of a configuration file.
struct config_content {
    heap_text text; // NUL-terminated, at most config_max_bytes; null when out of memory
    bool is_whole;  // false after an error, and while another program is writing the file
};

/// Reads an open file from its beginning.
config_content config_read(const unique_fd& file);
