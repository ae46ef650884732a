// pager_hits.cpp - see pager_hits.hpp.
#include "server/storage/pager_hits.hpp"

#include "server/base/limits.hpp"

#include <set>

namespace tovrik
{
namespace
{

std::string keep_hit(database& in, const owned_hit& kept)
{
    return database_run(in,
                        "INSERT INTO pager_hits(id, owner, moment, text)"
                        " SELECT ?3, id, ?4, ?5 FROM pager_owners"
                        " WHERE address = ?1 AND code = ?2"
                        " ON CONFLICT(id) DO NOTHING",
                        kept.owner.address, kept.owner.code, kept.hit.id, kept.hit.moment,
                        kept.hit.text);
}

std::string drop_oldest(database& in, const pager_owner& owner)
{
    return database_run(in,
                        "DELETE FROM pager_hits WHERE id IN (SELECT h.id FROM pager_hits h"
                        " WHERE h.owner = (SELECT id FROM pager_owners"
                        " WHERE address = ?1 AND code = ?2)"
                        " ORDER BY h.id DESC LIMIT -1 OFFSET ?3)",
                        owner.address, owner.code, max_pager_hits);
}

std::string read_last(database& in, std::int64_t& last)
{
    query row{in, "SELECT max(id) FROM pager_hits"};
    last = row.next() ? row.integer(0) : 0;
    return row.error();
}

} // namespace

std::string pager_hits_keep(database& in, const std::vector<owned_hit>& hits)
{
    std::string error;
    std::set<pager_owner> owners;
    for (const owned_hit& each : hits) {
        if (error.empty())
            error = keep_hit(in, each);
        owners.insert(each.owner);
    }
    for (const pager_owner& owner : owners) {
        if (error.empty())
            error = drop_oldest(in, owner);
    }
    return error;
}

std::string pager_hits_read(database& in, std::time_t since, std::vector<owned_hit>& hits,
                            std::int64_t& last)
{
    query row{in,
              "SELECT o.address, o.code, h.id, h.moment, h.text"
              " FROM pager_hits h JOIN pager_owners o ON o.id = h.owner"
              " WHERE h.moment >= ?1 AND h.is_told = 0 ORDER BY h.id",
              since};
    while (row.next()) {
        hits.push_back({{row.text(0), static_cast<std::uint16_t>(row.integer(1))},
                        {row.integer(2), row.integer(3), row.text(4)}});
    }
    return row.error().empty() ? read_last(in, last) : row.error();
}

std::string pager_hits_tell(database& in, const std::vector<std::int64_t>& ids)
{
    std::string error;
    for (const std::int64_t id : ids) {
        if (error.empty())
            error = database_run(in, "UPDATE pager_hits SET is_told = 1 WHERE id = ?1", id);
    }
    return error;
}

std::string pager_hits_forget(database& in, std::time_t before)
{
    return database_run(in, "DELETE FROM pager_hits WHERE moment < ?1", before);
}

} // namespace tovrik
