// unfinished_file.hpp - new files while they are being written beside those that they will replace.
//
// Each is locked by the program that writes it, so that another one can tell what was left behind.
#pragma once

#include "data/owners.hpp"

/// A new file, locked for as long as it is open, and its name; both none when it could not be made.
struct unfinished_file {
    heap_text name;
    unique_fd fd;
};

/// Makes an empty file beside the one at `path`, for its owner only and under a name of its own.
/// The caller renames or removes it before closing it. None on failure, with errno set.
unfinished_file unfinished_file_new(const char* path);

/// Removes what programs that died have left beside the file at `path`: unfinished files of this
/// user that nobody is writing.
void unfinished_files_remove(const char* path);
