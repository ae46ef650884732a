// directory.hpp - where the public list of servers is fetched from, a setting of the build.
#pragma once

#include <cstdint>

/// Host name of the directory.
extern const char* const directory_host;

/// Its TCP port.
extern const std::int32_t directory_port;
