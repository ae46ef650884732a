// tovrikd_options.cpp - the options of tovrikd as a program of their own: what it does instead of
// serving, or the configuration that it would serve with.
#include "server/tovrikd/command_line.hpp"

#include <cstdio>

int main(int argc, char** argv)
{
    tovrik::tovrikd_options options;
    if (const auto status = tovrik::read_tovrikd_options(argc, argv, options))
        return *status;
    std::printf("serves with %s\n", options.configuration_path.c_str());
    return 0;
}
