// command_lines.hpp - runs shell commands and gives what they print.
#pragma once

#include <string>
#include <vector>

/// What a shell command prints, as lines with their line feeds. A command that fails or prints
/// nothing fails the test.
std::vector<std::string> command_lines(const std::string& command);
