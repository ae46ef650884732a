// generated_cases.cpp - see generated_cases.hpp.
#include "support/generated_cases.hpp"

#include <cstdlib>
#include <gtest/gtest.h>

namespace
{

constexpr std::uint64_t usual_seed = 1;

std::uint64_t read_seed()
{
    const char* given = std::getenv("MODEL_SEED");
    return given != nullptr ? std::strtoull(given, nullptr, 10) : usual_seed;
}

} // namespace

case_choices::case_choices(std::uint64_t seed, int number)
    : engine{seed * 1'000'003 + static_cast<std::uint64_t>(number)}
{
}

std::size_t case_choices::number(std::size_t most)
{
    return static_cast<std::size_t>(engine() % (most + 1ULL));
}

bool case_choices::chance(unsigned percent)
{
    return number(99) < percent;
}

std::string case_choices::text(const std::string& alphabet, std::size_t most)
{
    std::string made(number(most), '\0');
    for (char& byte : made)
        byte = alphabet[number(alphabet.size() - 1)];
    return made;
}

std::string case_choices::hostile_text(std::size_t most)
{
    std::string made(number(most), '\0');
    for (char& byte : made)
        byte = static_cast<char>(1 + number(254));
    return made;
}

std::string case_choices::damaged(std::string text, const std::string& spare)
{
    for (std::size_t times = 1 + number(2); times > 0; --times) {
        const std::size_t at = number(text.size());
        const std::string run = text.substr(at, number(12));
        switch (number(5)) {
        case 0:
            text.erase(at);
            break;
        case 1:
            text.erase(at, run.size());
            break;
        case 2:
            text.insert(at, run);
            break;
        case 3:
            text.insert(number(text.size()), run);
            break;
        case 4:
            text.replace(at, number(1), 1, spare[number(spare.size() - 1)]);
            break;
        default:
            text.insert(at, 1, spare[number(spare.size() - 1)]);
        }
    }
    return text;
}

void run_generated_cases(const std::function<void(case_choices&)>& run, int count)
{
    const std::uint64_t seed = read_seed();
    for (int number = 0; number < count; ++number) {
        case_choices choices{seed, number};
        run(choices);
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "in case " << number << " with MODEL_SEED=" << seed;
            return;
        }
    }
}
