// write_all.hpp - writes bytes until the system takes no more.
#pragma once

#include <cstddef>
#include <string_view>

/// Writes bytes to an open file, in as many calls as it takes. How many of them the file has taken:
/// all, or fewer after an error, with errno set.
std::size_t write_all(int file, std::string_view bytes);
