// command_lines.cpp - see command_lines.hpp.
#include "support/command_lines.hpp"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>

namespace
{

struct process_end {
    void operator()(std::FILE* output) const
    {
        EXPECT_EQ(pclose(output), 0);
    }
};

} // namespace

std::vector<std::string> command_lines(const std::string& command)
{
    const std::unique_ptr<std::FILE, process_end> output{popen(command.c_str(), "r")};
    std::vector<std::string> all;
    char line[4096];
    while (output && std::fgets(line, sizeof line, output.get()) != nullptr)
        all.emplace_back(line);
    EXPECT_FALSE(all.empty()) << command;
    return all;
}
