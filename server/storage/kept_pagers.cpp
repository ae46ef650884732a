// kept_pagers.cpp - see kept_pagers.hpp.
#include "server/storage/kept_pagers.hpp"

#include "server/base/limits.hpp"

#include <cstdint>
#include <vector>

namespace tovrik
{
namespace
{

/// Finds the owner's list, or makes it if there is room for one more. `id` is 0 if there is none.
std::string find_or_make_list(database& in, const pager_owner& owner, std::int64_t& id)
{
    std::string error = database_run(in,
                                     "INSERT INTO pager_owners(address, code) SELECT ?1, ?2 WHERE"
                                     " (SELECT count(*) FROM pager_owners) < ?3"
                                     " ON CONFLICT DO NOTHING",
                                     owner.address, owner.code, max_pager_lists);
    if (!error.empty())
        return error;
    query found{in, "SELECT id FROM pager_owners WHERE address = ?1 AND code = ?2", owner.address,
                owner.code};
    id = found.next() ? found.integer(0) : 0;
    return found.error();
}

std::string has_entry(database& in, std::int64_t list, const pager_entry& entry, bool& is_there)
{
    query found{in,
                "SELECT 1 FROM pager_entries WHERE owner = ?1 AND registration = ?2"
                " AND flight_number = ?3 AND destination = ?4",
                list,
                entry.registration,
                entry.flight_number,
                entry.destination};
    is_there = found.next();
    return found.error();
}

std::string add_entry(database& in, std::int64_t list, const pager_entry& entry, bool& is_added)
{
    std::string error = database_run(
        in,
        "INSERT INTO pager_entries(owner, registration, flight_number, destination)"
        " SELECT ?1, ?2, ?3, ?4 WHERE"
        " (SELECT count(*) FROM pager_entries WHERE owner = ?1) < ?5",
        list, entry.registration, entry.flight_number, entry.destination, max_pager_entries);
    is_added = error.empty() && in.changed_rows() > 0;
    return error;
}

std::string find_matches(database& in, const pager_owner& owner, const pager_entry& pattern,
                         std::vector<std::int64_t>& found)
{
    query row{in,
              "SELECT e.id, e.registration, e.flight_number, e.destination"
              " FROM pager_entries e JOIN pager_owners o ON o.id = e.owner"
              " WHERE o.address = ?1 AND o.code = ?2",
              owner.address, owner.code};
    while (row.next()) {
        if (pager_entry_matches(pattern, {row.text(1), row.text(2), row.text(3)}))
            found.push_back(row.integer(0));
    }
    return row.error();
}

std::string drop_empty_list(database& in, const pager_owner& owner)
{
    return database_run(in,
                        "DELETE FROM pager_owners WHERE address = ?1 AND code = ?2 AND NOT EXISTS"
                        " (SELECT 1 FROM pager_entries e WHERE e.owner = pager_owners.id)",
                        owner.address, owner.code);
}

} // namespace

std::string pager_keep(database& in, const pager_owner& owner, const pager_entry& entry,
                       bool& is_kept)
{
    is_kept = false;
    if (!pager_entry_is_valid(entry))
        return {};
    std::int64_t list = 0;
    std::string error = find_or_make_list(in, owner, list);
    if (!error.empty() || list == 0)
        return error;
    error = has_entry(in, list, entry, is_kept);
    return error.empty() && !is_kept ? add_entry(in, list, entry, is_kept) : error;
}

std::string pager_remove(database& in, const pager_owner& owner, const pager_entry& pattern,
                         std::size_t& removed)
{
    std::vector<std::int64_t> found;
    std::string error = find_matches(in, owner, pattern, found);
    for (const std::int64_t id : found) {
        if (error.empty())
            error = database_run(in, "DELETE FROM pager_entries WHERE id = ?1", id);
    }
    removed = found.size();
    return error.empty() ? drop_empty_list(in, owner) : error;
}

std::string pagers_read(database& in, pager_lists& lists)
{
    query row{in, "SELECT o.address, o.code, e.registration, e.flight_number, e.destination"
                  " FROM pager_entries e JOIN pager_owners o ON o.id = e.owner ORDER BY e.id"};
    while (row.next()) {
        lists.add({row.text(0), static_cast<std::uint16_t>(row.integer(1))},
                  {row.text(2), row.text(3), row.text(4)});
    }
    return row.error();
}

} // namespace tovrik
