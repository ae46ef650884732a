// command_lines.hpp - asks other programs.
#pragma once

#include <string>
#include <vector>

/// What a shell command prints, line by line with their line feeds. One that fails or prints
/// nothing fails the test.
std::vector<std::string> command_lines(const std::string& command);
