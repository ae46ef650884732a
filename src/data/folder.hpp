// folder.hpp - the folders that files are in.
#pragma once

#include "data/owners.hpp"

/// The folder part of a path, with its slash; the empty text for a bare name. Null when memory is
/// short.
heap_text folder_of(const char* path);

/// Opens the folder that a path's file is or would be in, for looking into it; none on failure.
unique_fd folder_open(const char* path);
