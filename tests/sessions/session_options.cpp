// session_options.cpp - see session_options.hpp.
#include "sessions/session_options.hpp"

#include <charconv>
#include <cstdio>
#include <string_view>

namespace
{

constexpr const char* usage =
    "usage: random_sessions [--seed N] [--seconds S] [--actions 1-100000]\n";
constexpr int max_seed = 2'000'000'000;
constexpr int max_seconds = 7 * 24 * 3600;
constexpr int max_actions = 100'000;

bool read_number(int& number, std::string_view text, int least, int most)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() && number >= least &&
           number <= most;
}

bool read_option(session_options& options, std::string_view name, std::string_view value)
{
    if (name == "--seconds")
        return read_number(options.seconds, value, 0, max_seconds);
    if (name == "--actions")
        return read_number(options.actions, value, 1, max_actions);
    int seed = 0;
    if (name != "--seed" || !read_number(seed, value, 0, max_seed))
        return false;
    options.seed = static_cast<unsigned>(seed);
    return true;
}

} // namespace

bool session_options_read(session_options& options, int count, char** arguments)
{
    for (int at = 1; at < count; at += 2) {
        if (at + 1 == count || !read_option(options, arguments[at], arguments[at + 1])) {
            std::fprintf(stderr, "random_sessions: cannot use %s\n%s", arguments[at], usage);
            return false;
        }
    }
    return true;
}
