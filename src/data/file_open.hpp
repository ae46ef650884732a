// file_open.hpp - opens files under names that users and servers choose.
#pragma once

#include "data/owners.hpp"

#include <cstdint>

/// What a file is opened for.
enum class file_use : std::uint8_t { reading, replacing, appending };

/// Opens a file as fopen does with "rt", "wt" and "at", but waits for nobody where the name is a
/// fifo's: one that nobody reads cannot be written, one that nobody writes is empty. Null when it
/// cannot be opened, with errno set. Programs started later do not inherit it.
unique_file file_open(const char* name, file_use use);
