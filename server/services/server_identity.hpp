// server_identity.hpp - the identity by which clients tell servers apart.
#pragma once

#include <cstdint>
#include <string>

namespace tovrik
{

/// What tells this machine from others: the content of `id_path`, or the host name if there is no
/// such file or it is not set up yet.
std::string machine_name(const std::string& id_path = "/etc/machine-id");

/// A seed that differs between servers of different machines, names and bind addresses.
std::string identity_seed(const std::string& machine, const std::string& name,
                          const std::string& bind_address);

/// An identity in the form of a UUID, the same for the same `seed` and port. Two servers must
/// differ, because clients refuse to connect to the same one twice; a server that is restarted
/// should keep its identity.
std::string server_uuid(const std::string& seed, std::uint16_t port);

} // namespace tovrik
