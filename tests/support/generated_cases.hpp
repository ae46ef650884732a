// generated_cases.hpp - the random cases in which the client is compared with its models.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

/// How many cases each model is compared in. What is compared has one thread alone, so the thread
/// sanitizer, which makes it slow, sees few, and so does an emulator.
#if defined(__SANITIZE_THREAD__) || defined(EMULATOR)
constexpr int generated_case_count = 1'000;
#else
constexpr int generated_case_count = 20'000;
#endif

/// The choices that make one case: always the same ones for the same seed and number.
class case_choices
{
public:
    case_choices(std::uint64_t seed, int number);

    /// From 0 to `most`.
    std::size_t number(std::size_t most);
    /// True `percent` times in a hundred.
    bool chance(unsigned percent);
    /// One of several. all: not empty.
    template <typename value> const value& pick(const std::vector<value>& all)
    {
        return all[number(all.size() - 1)];
    }
    /// Up to `most` bytes of an alphabet, which is not empty.
    std::string text(const std::string& alphabet, std::size_t most);
    /// Up to `most` bytes of any kind but NUL.
    std::string hostile_text(std::size_t most);
    /// The text after a few bytes or runs of it were dropped, doubled, replaced or moved, or its
    /// end was cut off. spare: bytes to put in; not empty.
    std::string damaged(std::string text, const std::string& spare);

private:
    std::mt19937_64 engine;
};

/// Runs `count` cases until the first that fails, and says then how it comes again: the seed is
/// that of the environment variable MODEL_SEED, or else always the same one.
void run_generated_cases(const std::function<void(case_choices&)>& run,
                         int count = generated_case_count);
