// server_identity.hpp - the identity by which clients tell servers apart.
#pragma once

#include <cstdint>
#include <string>

namespace tovrik
{

/// An identity in the form of a UUID, the same for the same `seed` and port. Two servers must
/// differ, because clients refuse to connect to the same one twice; a server that is restarted
/// should keep its identity.
std::string server_uuid(const std::string& seed, std::uint16_t port);

} // namespace tovrik
