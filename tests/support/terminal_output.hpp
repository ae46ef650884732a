// terminal_output.hpp - whether what a program writes to its terminal drives it in the way of
// curses, and in no other.
#pragma once

#include <string>
#include <string_view>

class output_inspection
{
public:
    /// utf8: of the program's locale.
    explicit output_inspection(bool utf8) : is_utf8(utf8) {}

    /// Reads the next part of the output, however it is cut.
    void feed(std::string_view output);
    /// The first thing in the output that curses never writes on the terminal types of the tests: a
    /// control character, an escape sequence, or bytes that are no character. Empty if there was
    /// none.
    const std::string& fault() const
    {
        return found;
    }

private:
    bool is_utf8;
    std::string unread{}; // an unfinished sequence or character
    std::string found{};
};
