// reference_data.cpp - see reference_data.hpp.
#include "server/storage/reference_data.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/protocol/packet.hpp"

#include <algorithm>
#include <iterator>

namespace tovrik
{
namespace
{

struct update_form {
    std::uint32_t kind;
    std::size_t field_count;
    std::size_t required_count; ///< the first ones, which must not be empty
};

constexpr update_form update_forms[] = {
    {kind::add_airline, 2, 2}, {kind::add_flight, 4, 2}, {kind::add_aircraft, 9, 4},
    {kind::add_airport, 2, 2}, {kind::add_label, 2, 2},
};

const update_form* find_form(std::uint32_t kind)
{
    const auto* const found = std::ranges::find(update_forms, kind, &update_form::kind);
    return found == std::end(update_forms) ? nullptr : found;
}

bool is_day_mask(std::string_view days)
{
    return days.size() == days_per_week && days.find_first_not_of("Xx-") == std::string_view::npos;
}

bool is_valid(const update_form& form, const std::vector<std::string_view>& fields)
{
    if (fields.size() != form.field_count)
        return false;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!is_clean_field(fields[i], max_field_bytes))
            return false;
        if (i < form.required_count && fields[i].find_first_not_of(' ') == std::string_view::npos)
            return false;
    }
    return form.kind != kind::add_flight || is_day_mask(fields[flight_field::days]);
}

} // namespace

reference_data::entry_key reference_data::make_key(std::uint32_t kind, std::string_view name)
{
    return {kind, kind == kind::add_flight ? flight_key(name) : upper_case(name)};
}

reference_data::reference_data(std::size_t most) : max_entries(most) {}

bool reference_data::add(std::uint32_t kind, std::string_view text)
{
    const update_form* const form = find_form(kind);
    if (form == nullptr)
        return false;
    const auto fields = split_fields(text, '\t');
    if (!is_valid(*form, fields))
        return false;
    entry_key key = make_key(kind, fields.front());
    if (added.size() >= max_entries && !added.contains(key))
        return false;
    added[std::move(key)] = {kind, {fields.begin(), fields.end()}};
    return true;
}

const reference_entry* reference_data::find(std::uint32_t kind, std::string_view name) const
{
    const auto found = added.find(make_key(kind, name));
    if (found != added.end())
        return &found->second;
    return others ? others->find(kind, name) : nullptr;
}

void reference_data::fall_back_on(std::shared_ptr<const reference_data> more)
{
    others = std::move(more);
}

bool reference_data::is_empty() const
{
    return added.empty() && (!others || others->is_empty());
}

std::vector<reference_entry> reference_data::entries() const
{
    std::vector<reference_entry> result;
    result.reserve(added.size());
    for (const auto& [key, entry] : added) {
        result.push_back(entry);
    }
    return result;
}

std::size_t reference_data::size() const
{
    return added.size();
}

} // namespace tovrik
