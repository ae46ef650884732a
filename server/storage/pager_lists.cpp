// pager_lists.cpp - see pager_lists.hpp.
#include "server/storage/pager_lists.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

constexpr char record_separator = '~';
constexpr char empty_field = '^';

static_assert(max_pager_entries * (3 * max_pager_field_bytes + 3) <= max_text_bytes,
              "the longest list fits one packet");

bool is_listable(const std::string& field)
{
    return is_clean_field(field, max_pager_field_bytes) &&
           field.find(record_separator) == std::string::npos && !field.starts_with(empty_field);
}

bool matches_flight(const std::string& pattern, const std::string& flight_number)
{
    return wildcard_match(pattern, flight_number) ||
           wildcard_match(flight_key(pattern), flight_key(flight_number));
}

bool is_about(const pager_entry& entry, const transmission& message)
{
    return (entry.registration.empty() ||
            wildcard_match(entry.registration, message.registration)) &&
           (entry.flight_number.empty() ||
            matches_flight(entry.flight_number, message.flight_number)) &&
           (entry.destination.empty() || wildcard_match(entry.destination, message.to));
}

std::string encode_field(const std::string& field)
{
    return field.empty() ? std::string(1, empty_field) : field;
}

} // namespace

bool pager_entry_is_valid(const pager_entry& entry)
{
    const bool says_something =
        !entry.registration.empty() || !entry.flight_number.empty() || !entry.destination.empty();
    return says_something && is_listable(entry.registration) && is_listable(entry.flight_number) &&
           is_listable(entry.destination);
}

bool pager_entry_matches(const pager_entry& pattern, const pager_entry& entry)
{
    return wildcard_match(pattern.registration, entry.registration) &&
           matches_flight(pattern.flight_number, entry.flight_number) &&
           wildcard_match(pattern.destination, entry.destination);
}

bool pager_lists::add(const pager_owner& owner, const pager_entry& entry)
{
    if (!pager_entry_is_valid(entry))
        return false;
    const auto found = lists.find(owner);
    if (found == lists.end()) {
        if (lists.size() >= max_pager_lists)
            return false;
        lists[owner].push_back(entry);
        return true;
    }
    auto& entries = found->second;
    if (std::find(entries.begin(), entries.end(), entry) != entries.end())
        return true;
    if (entries.size() >= max_pager_entries)
        return false;
    entries.push_back(entry);
    return true;
}

std::size_t pager_lists::remove(const pager_owner& owner, const pager_entry& pattern)
{
    const auto found = lists.find(owner);
    if (found == lists.end())
        return 0;
    const std::size_t count = std::erase_if(found->second, [&pattern](const pager_entry& entry) {
        return pager_entry_matches(pattern, entry);
    });
    if (found->second.empty())
        lists.erase(found);
    return count;
}

std::vector<pager_entry> pager_lists::list(const pager_owner& owner) const
{
    const auto found = lists.find(owner);
    return found == lists.end() ? std::vector<pager_entry>{} : found->second;
}

std::vector<pager_owner> pager_lists::hits(const transmission& message) const
{
    std::vector<pager_owner> owners;
    for (const auto& [owner, entries] : lists) {
        if (std::ranges::any_of(
                entries, [&message](const pager_entry& entry) { return is_about(entry, message); }))
            owners.push_back(owner);
    }
    return owners;
}

bool pager_lists::has(const pager_owner& owner) const
{
    return lists.contains(owner);
}

std::size_t pager_lists::size() const
{
    return lists.size();
}

std::string pager_list_text(const std::vector<pager_entry>& entries)
{
    if (entries.empty())
        return pager_list_text({{}});
    std::string text;
    for (const auto& entry : entries) {
        if (!text.empty())
            text += record_separator;
        text += encode_field(entry.registration) + "\t" + encode_field(entry.destination) + "\t" +
                encode_field(entry.flight_number);
    }
    return text;
}

} // namespace tovrik
