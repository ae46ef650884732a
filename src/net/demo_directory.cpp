// demo_directory.cpp - the directory of the demo's client, on this machine and on any free port, so
// that demos can run side by side. Takes the place of directory.cpp in that program.
#include "net/directory.hpp"

#include "data/number.hpp"

#include <cstdlib>

namespace
{

/// The port that scripts/demo puts into the environment; 0, where nobody listens, without it.
std::int32_t read_demo_port()
{
    const char* port = std::getenv("DEMO_DIRECTORY_PORT");
    return port != nullptr ? number_clamped(port) : 0;
}

} // namespace

const char* const directory_host = "127.0.0.1";
const std::int32_t directory_port = read_demo_port();
