// pager_hits.cpp - see pager_hits.hpp.
#include "server/storage/pager_hits.hpp"

#include "server/base/limits.hpp"

namespace tovrik
{

std::string pager_hit_keep(database& in, const pager_owner& owner, std::time_t moment,
                           const std::string& text, bool is_told)
{
    std::string error = database_run(in,
                                     "INSERT INTO pager_hits(owner, moment, text, is_told)"
                                     " SELECT id, ?3, ?4, ?5 FROM pager_owners"
                                     " WHERE address = ?1 AND code = ?2",
                                     owner.address, owner.code, moment, text, is_told);
    if (!error.empty() || in.changed_rows() == 0)
        return error;
    return database_run(in,
                        "DELETE FROM pager_hits WHERE id IN (SELECT h.id FROM pager_hits h"
                        " WHERE h.owner = (SELECT owner FROM pager_hits WHERE id = ?1)"
                        " ORDER BY h.id DESC LIMIT -1 OFFSET ?2)",
                        in.last_row(), max_pager_hits);
}

std::string pager_hits_read(database& in, const pager_owner& owner, std::time_t since,
                            std::vector<pager_hit>& hits)
{
    query row{in,
              "SELECT h.id, h.moment, h.text"
              " FROM pager_hits h JOIN pager_owners o ON o.id = h.owner"
              " WHERE o.address = ?1 AND o.code = ?2 AND h.moment >= ?3 AND h.is_told = 0"
              " ORDER BY h.id",
              owner.address, owner.code, since};
    while (row.next()) {
        hits.push_back({row.integer(0), row.integer(1), row.text(2)});
    }
    return row.error();
}

std::string pager_hits_tell(database& in, const pager_owner& owner, std::int64_t last)
{
    return database_run(in,
                        "UPDATE pager_hits SET is_told = 1 WHERE id <= ?3 AND owner ="
                        " (SELECT id FROM pager_owners WHERE address = ?1 AND code = ?2)",
                        owner.address, owner.code, last);
}

std::string pager_hits_forget(database& in, std::time_t before)
{
    return database_run(in, "DELETE FROM pager_hits WHERE moment < ?1", before);
}

} // namespace tovrik
