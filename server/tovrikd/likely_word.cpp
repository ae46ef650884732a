// likely_word.cpp - see likely_word.hpp.
#include "server/tovrikd/likely_word.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace tovrik
{
namespace
{

constexpr std::size_t max_slips = 2;

/// How many letters must be left out, added or replaced to make one word of the other.
std::size_t count_slips(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t k = 0; k < to.size(); ++k) {
            const std::size_t replaced = diagonal + (from[i] == to[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({replaced, row[k] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::string_view likely_word(std::string_view typed, const std::vector<std::string_view>& words)
{
    std::string_view best;
    std::size_t least = max_slips + 1;
    for (const std::string_view word : words) {
        if (typed.size() > word.size() + max_slips)
            continue;
        const std::size_t slips = count_slips(typed, word);
        if (slips < least && slips * 2 <= word.size()) {
            least = slips;
            best = word;
        }
    }
    return best;
}

} // namespace tovrik
