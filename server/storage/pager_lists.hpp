// pager_lists.hpp - the flights and aircraft that subscribers want to be told of.
//
// Owns one list for each address and code. Who is told, and how, is decided elsewhere.
#pragma once

#include "server/messages/transmission.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace tovrik
{

/// The owner of a list. The code keeps others from reading it.
struct pager_owner {
    std::string address;
    std::uint16_t code = 0;
    bool operator==(const pager_owner&) const = default;
    bool operator<(const pager_owner& other) const
    {
        return std::tie(address, code) < std::tie(other.address, other.code);
    }
};

/// What to look for. An empty field matches anything in a message; in a request to remove, it
/// matches only an empty field. Wildcards are those of wildcard_match.
struct pager_entry {
    std::string registration;
    std::string flight_number;
    std::string destination;
    bool operator==(const pager_entry&) const = default;
};

/// Whether an entry may be in a list: see pager_lists::add.
bool pager_entry_is_valid(const pager_entry& entry);

/// Whether the fields of an entry match those of `pattern`, as in a request to remove.
bool pager_entry_matches(const pager_entry& pattern, const pager_entry& entry);

class pager_lists
{
public:
    /// Puts an entry at the end of a list; an entry that is there already stays where it is. False,
    /// and nothing changed, if all fields are empty, if a field is longer than
    /// max_pager_field_bytes, contains a control character or "~" or begins with "^", or if the
    /// list or the number of lists is at its limit.
    bool add(const pager_owner& owner, const pager_entry& entry);

    /// Removes all entries of a list whose fields match those of `pattern`. Returns their number.
    std::size_t remove(const pager_owner& owner, const pager_entry& pattern);

    /// The entries of a list, in the order in which they were added.
    std::vector<pager_entry> list(const pager_owner& owner) const;

    /// The owners of all lists with an entry that is about `message`, in their order. Leading zeros
    /// in flight numbers are ignored.
    std::vector<pager_owner> hits(const transmission& message) const;

    /// Whether there is a list of this owner.
    bool has(const pager_owner& owner) const;

    /// How many lists there are.
    std::size_t size() const;

private:
    std::map<pager_owner, std::vector<pager_entry>> lists;
};

/// The text of a list as clients read it: records separated by "~", fields by tabs, "^" for an
/// empty field. An empty list is one empty record.
std::string pager_list_text(const std::vector<pager_entry>& entries);

} // namespace tovrik
