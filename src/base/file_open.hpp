// file_open.hpp - opens files under names that users and servers choose.
#pragma once

#include "base/owners.hpp"

#include <cstdint>

/// What a file is opened for.
enum class file_use : std::uint8_t { reading, replacing, appending };

/// Opens a file as fopen does with "rt", "wt" and "at", but never waits for the other end of a
/// fifo: a fifo without a reader cannot be written, one without a writer is empty. Null if it
/// cannot be opened, with errno set. Child processes do not inherit it.
unique_file file_open(const char* name, file_use use);
