// file_replace.hpp - gives a file a new content so that no moment shows a part of it.
#pragma once

#include <string_view>

/// Replaces the content of the file at `path`. The new content is written beside the file, synced
/// and renamed over it, so that a crash or a full disk leaves the old file or the new one, whole;
/// what a crash left beside it goes with the next call. A symbolic link is followed, mode and owner
/// are kept, a new file is readable by its owner only. A file that may not be written stays as it
/// is; one in a folder that takes no new file, and anything that is not a regular file, is written
/// in place, once it has the room. False when the new content is not there.
bool file_replace(const char* path, std::string_view content);
