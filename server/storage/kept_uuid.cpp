// kept_uuid.cpp - see kept_uuid.hpp.
#include "server/storage/kept_uuid.hpp"

#include "server/base/uuid_text.hpp"

#include <cstdint>
#include <limits>
#include <random>

namespace tovrik
{
namespace
{

std::string make_uuid()
{
    std::random_device source;
    std::uniform_int_distribution<std::uint64_t> bits{0, std::numeric_limits<std::uint64_t>::max()};
    const std::uint64_t high = bits(source);
    return uuid_text(high, bits(source));
}

} // namespace

std::string uuid_read_or_make(database& in, std::string& uuid)
{
    std::string error = database_run(
        in, "INSERT INTO meta VALUES ('uuid', ?1) ON CONFLICT DO NOTHING", make_uuid());
    if (!error.empty())
        return error;
    query row{in, "SELECT value FROM meta WHERE name = 'uuid'"};
    if (row.next())
        uuid = row.text(0);
    return row.error();
}

} // namespace tovrik
