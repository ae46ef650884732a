// line_settings.hpp - compares the settings of terminal lines, every field of them.
#pragma once

#include <string>
#include <termios.h>

/// The names of the fields in which two lines differ; empty if they are alike.
std::string line_difference(const termios& one, const termios& other);
