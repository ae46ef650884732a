// unfinished_file.hpp - new files while they are written beside the files that they will replace.
//
// The program that writes one holds a lock on it, so that other programs can recognise leftovers.
#pragma once

#include "base/owners.hpp"

/// A new file, locked for as long as it is open, and its name. Both are none if it was not made.
struct unfinished_file {
    heap_text name;
    unique_fd fd;
};

/// Makes an empty file beside the one at `path`, readable by its owner only, under a unique name.
/// The caller renames or removes it before closing it. None on failure, with errno set.
unfinished_file unfinished_file_new(const char* path);

/// Removes what crashed programs have left beside the file at `path`: unfinished files of this user
/// that no program is writing.
void unfinished_files_remove(const char* path);
