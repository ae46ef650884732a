// kept_updates.cpp - see kept_updates.hpp.
#include "server/storage/kept_updates.hpp"

#include "server/base/limits.hpp"

namespace tovrik
{

std::string update_keep(database& in, std::uint32_t kind, std::string_view text, bool& is_kept)
{
    is_kept = false;
    if (!reference_data{}.add(kind, text))
        return {};
    const std::string name = reference_data::make_key(kind, text.substr(0, text.find('\t'))).second;
    std::string error = database_run(in,
                                     "INSERT INTO updates SELECT ?1, ?2, ?3 WHERE"
                                     " (SELECT count(*) FROM updates) < ?4 OR EXISTS"
                                     " (SELECT 1 FROM updates WHERE kind = ?1 AND name = ?2)"
                                     " ON CONFLICT DO UPDATE SET text = excluded.text",
                                     kind, name, text, max_reference_entries);
    is_kept = error.empty() && in.changed_rows() > 0;
    return error;
}

std::string updates_read(database& in, reference_data& reference)
{
    query row{in, "SELECT kind, text FROM updates ORDER BY kind, name"};
    while (row.next()) {
        reference.add(static_cast<std::uint32_t>(row.integer(0)), row.text(1));
    }
    return row.error();
}

} // namespace tovrik
