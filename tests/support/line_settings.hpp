// line_settings.hpp - compares the settings of terminal lines field by field.
#pragma once

#include <string>
#include <termios.h>

/// The names of the fields that differ; empty if none does.
std::string line_difference(const termios& one, const termios& other);
