// path.hpp - paths of files, and the folders that files are in.
#pragma once

#include "base/owners.hpp"

#include <string_view>

/// A new path that holds `first` followed by `second`, without a slash between them; null when out
/// of memory.
heap_text path_concatenate(std::string_view first, std::string_view second = {});

/// The folder part of a path, with its slash; the empty text for a bare name. Borrowed from `path`.
std::string_view path_folder(std::string_view path);

/// Opens the folder that a path's file is or would be in, for looking into it; none on failure.
unique_fd path_folder_open(const char* path);
