// directory.cpp - see directory.hpp. Compiled once for each directory that a program is built for.
#include "net/directory.hpp"

const char* const directory_host = DIRECTORY_HOST;
const std::int32_t directory_port = DIRECTORY_PORT;
