// open_files.hpp - how many files a test and the programs that it starts may have open.
#pragma once

/// Raises the limit to `count` if it is lower. False if that is not allowed.
bool allow_open_files(unsigned long count);
