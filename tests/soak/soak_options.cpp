// soak_options.cpp - see soak_options.hpp.
#include "soak/soak_options.hpp"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace
{

constexpr const char* usage =
    "usage: soak_client [--hours H] [--speed 1-1000] [--servers 6-500] [--seed N]\n"
    "                   [--kind steady|flood|split] [--one-log] [--sample-minutes M]\n"
    "                   [--report FILE]\n";

constexpr std::pair<std::string_view, soak_kind> kinds[] = {
    {"steady", soak_kind::steady}, {"flood", soak_kind::flood}, {"split", soak_kind::split}};

bool read_kind(soak_kind& kind, std::string_view name)
{
    for (const auto& [known, value] : kinds) {
        if (known == name) {
            kind = value;
            return true;
        }
    }
    return false;
}

bool read_number(double& number, const char* text, double least, double most)
{
    char* end = nullptr;
    number = std::strtod(text, &end);
    return end != text && *end == '\0' && number >= least && number <= most;
}

bool read_whole_number(int& number, const char* text, int least, int most)
{
    double read = 0;
    const bool is_good = read_number(read, text, least, most);
    number = static_cast<int>(read);
    return is_good;
}

bool read_option(soak_options& options, std::string_view name, const char* value)
{
    int seed = 0;
    if (name == "--hours")
        return read_number(options.hours, value, 0.01, 24 * 365);
    if (name == "--speed")
        return read_whole_number(options.speed, value, 1, 1000);
    if (name == "--servers")
        return read_whole_number(options.servers, value, 6, 500);
    if (name == "--sample-minutes")
        return read_number(options.sample_minutes, value, 0.1, 24 * 60);
    if (name == "--kind")
        return read_kind(options.kind, value);
    if (name == "--report")
        options.report = value;
    else if (name == "--seed" && read_whole_number(seed, value, 0, 1'000'000'000))
        options.seed = static_cast<unsigned>(seed);
    else
        return false;
    return true;
}

} // namespace

bool soak_options_read(soak_options& options, int count, char** arguments)
{
    for (int at = 1; at < count; ++at) {
        const std::string_view name = arguments[at];
        if (name == "--one-log") {
            options.one_log = true;
        } else if (at + 1 == count || !read_option(options, name, arguments[at + 1])) {
            std::fprintf(stderr, "soak_client: cannot use %s\n%s", arguments[at], usage);
            return false;
        } else {
            ++at;
        }
    }
    return true;
}
