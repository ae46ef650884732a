// session_dice.hpp - the chance of a random session: the same seed always gives the same throws.
#pragma once

#include <cstddef>
#include <iterator>
#include <random>
#include <string>

class session_dice
{
public:
    explicit session_dice(unsigned seed) : engine(seed) {}

    /// A whole number from `least` to `most`.
    int number(int least, int most)
    {
        return std::uniform_int_distribution<int>{least, most}(engine);
    }
    bool once_in(int throws)
    {
        return number(1, throws) == 1;
    }
    /// One member of a table, which must not be empty.
    template <typename table> const auto& any_of(const table& members)
    {
        return std::data(members)[number(0, static_cast<int>(std::size(members)) - 1)];
    }
    /// The same where each member has its odds.
    template <typename table> const auto& by_odds(const table& members)
    {
        int all = 0;
        for (const auto& member : members)
            all += member.odds;
        int left = number(1, all);
        auto at = std::begin(members);
        while ((left -= at->odds) > 0)
            ++at;
        return *at;
    }
    /// Bytes of any value.
    std::string noise(int count)
    {
        std::string bytes;
        for (int at = 0; at < count; ++at)
            bytes += static_cast<char>(number(0, 255));
        return bytes;
    }

private:
    std::mt19937 engine;
};
