// line_settings.cpp - compares the settings of terminal lines field by field.
#include "support/line_settings.hpp"

#include <algorithm>
#include <iterator>

std::string line_difference(const termios& one, const termios& other)
{
    const std::pair<const char*, bool> fields[] = {
        {"c_iflag", one.c_iflag == other.c_iflag},
        {"c_oflag", one.c_oflag == other.c_oflag},
        {"c_cflag", one.c_cflag == other.c_cflag},
        {"c_lflag", one.c_lflag == other.c_lflag},
        {"c_line", one.c_line == other.c_line},
        {"c_cc", std::equal(std::begin(one.c_cc), std::end(one.c_cc), std::begin(other.c_cc))},
        {"input speed", cfgetispeed(&one) == cfgetispeed(&other)},
        {"output speed", cfgetospeed(&one) == cfgetospeed(&other)},
    };
    std::string names;
    for (const auto& [name, is_same] : fields)
        if (!is_same)
            names.append(names.empty() ? "" : ", ").append(name);
    return names;
}
