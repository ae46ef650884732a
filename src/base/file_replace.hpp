// file_replace.hpp - replaces a file's content so that no reader ever sees a part of it.
#pragma once

#include <cstdint>
#include <string_view>

/// Who may read a file after it was replaced.
enum class file_readers : std::uint8_t {
    as_before,  // whoever could before
    owner_only, // no rights for group and others, whatever they were
};

/// Replaces the content of the file at `path`. The new content is written beside the file, synced
/// and renamed over it, so that a crash or a full disk leaves either the old file or the new one,
/// whole. The next call removes what a crash left behind. Symbolic links are followed; the
/// owner is kept, and so is the mode as far as `readers` allows; a new file is readable by its
/// owner only. A file that may not be written stays as it is. A file is written in place, once its
/// disk space is reserved, if its folder takes no new file or if it is not a regular file. False if
/// the new content is not there.
bool file_replace(const char* path, std::string_view content, file_readers readers);
