// pager_lists.hpp - which flights and aircraft subscribers want to be told of.
//
// Owns one list per address and code. Who is told, and how, is decided elsewhere.
#pragma once

#include "sim/transmission.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace sim
{

/// Whose list it is: the code keeps others from reading it.
struct pager_owner {
    std::string address;
    std::uint16_t code = 0;
    bool operator==(const pager_owner&) const = default;
    bool operator<(const pager_owner& other) const
    {
        return std::tie(address, code) < std::tie(other.address, other.code);
    }
};

/// What to look for. An empty field stands for anything in messages, and for an empty field in
/// requests to remove; wildcards are those of wildcard_match.
struct pager_entry {
    std::string registration;
    std::string flight_number;
    std::string destination;
    bool operator==(const pager_entry&) const = default;
};

class pager_lists
{
public:
    /// Puts an entry at the end of a list; one that is there already stays where it is. False, and
    /// nothing changed, when all fields are empty, a field is longer than max_pager_field_bytes,
    /// has control characters or "~" or begins with "^", or when the list, or the number of lists,
    /// is at its limit.
    bool add(const pager_owner& owner, const pager_entry& entry);

    /// Removes all entries of a list whose fields match those of `pattern`. Their number.
    std::size_t remove(const pager_owner& owner, const pager_entry& pattern);

    /// The entries of a list, in the order in which they were added.
    std::vector<pager_entry> list(const pager_owner& owner) const;

    /// Whether an entry of a list is about `message`. Leading zeros of flights do not matter.
    bool is_hit(const pager_owner& owner, const transmission& message) const;

    /// Whether there are no lists at all.
    bool empty() const;

private:
    std::map<pager_owner, std::vector<pager_entry>> lists;
};

/// The text of a list as clients take it: records separated by "~", fields by tabs, "^" for what is
/// empty. Of an empty list, one empty record.
std::string pager_list_text(const std::vector<pager_entry>& entries);

} // namespace sim
