// server_identity.cpp - see server_identity.hpp.
#include "server/services/server_identity.hpp"

#include "server/base/random_source.hpp"
#include "server/base/uuid_text.hpp"

namespace tovrik
{

std::string server_uuid(const std::string& seed, std::uint16_t port)
{
    random_source random{make_seed(seed, port)};
    const std::uint64_t high = random.next();
    return uuid_text(high, random.next());
}

} // namespace tovrik
