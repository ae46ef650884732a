// random_source.hpp - numbers that look random and depend only on their seed.
//
// The distributions of the standard library may differ between systems; saved screens and tests
// must not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tovrik
{

/// A seed made of `text` and `first`, the same at every start.
constexpr std::uint64_t make_seed(std::string_view text, std::uint64_t first = 0)
{
    constexpr std::uint64_t factor = 31;
    for (const char c : text) {
        first = first * factor + static_cast<unsigned char>(c);
    }
    return first;
}

/// The SplitMix64 sequence of a seed.
class random_source
{
public:
    explicit random_source(std::uint64_t seed) : state(seed) {}

    /// The next 64 bits.
    std::uint64_t next()
    {
        state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = state;
        mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EBU;
        return mixed ^ mixed >> 31;
    }

    /// A number from 0 to `limit` - 1, and 0 for a limit of 0.
    unsigned below(unsigned limit)
    {
        return limit == 0 ? 0 : static_cast<unsigned>(next() % limit);
    }

    /// A number from `first` to `last`, both included.
    unsigned between(unsigned first, unsigned last)
    {
        return first + below(last - first + 1);
    }

    /// True in `percent` of 100 cases.
    bool chance(unsigned percent)
    {
        return below(100) < percent;
    }

    /// One of `choices`, which must not be empty.
    template <typename choice> const choice& one_of(std::span<const choice> choices)
    {
        return choices[static_cast<std::size_t>(next() % choices.size())];
    }

private:
    std::uint64_t state;
};

} // namespace tovrik
