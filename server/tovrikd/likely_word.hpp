// likely_word.hpp - which word somebody meant who has mistyped one.
#pragma once

#include <string_view>
#include <vector>

namespace tovrik
{

/// The nearest of the `words`: the one that becomes `typed` by at most two letters that are left
/// out, added or replaced, and that still agrees in at least half of its letters. Empty if none
/// does.
std::string_view likely_word(std::string_view typed, const std::vector<std::string_view>& words);

} // namespace tovrik
