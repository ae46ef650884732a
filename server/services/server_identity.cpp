// server_identity.cpp - see server_identity.hpp.
#include "server/services/server_identity.hpp"

#include "server/base/random_source.hpp"
#include "server/base/uuid_text.hpp"
#include "server/base/whole_file.hpp"

#include <unistd.h>

namespace tovrik
{
namespace
{

constexpr std::size_t max_id_bytes = 4096;

std::string read_host_name()
{
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

} // namespace

std::string machine_name(const std::string& id_path)
{
    std::string id = read_whole_file(id_path, max_id_bytes).text;
    while (id.ends_with('\n')) {
        id.pop_back();
    }
    // systemd writes the word until the first start is over.
    return id.empty() || id == "uninitialized" ? read_host_name() : id;
}

std::string identity_seed(const std::string& machine, const std::string& name,
                          const std::string& bind_address)
{
    return machine + '\n' + name + '\n' + bind_address;
}

std::string server_uuid(const std::string& seed, std::uint16_t port)
{
    random_source random{make_seed(seed, port)};
    const std::uint64_t high = random.next();
    return uuid_text(high, random.next());
}

} // namespace tovrik
