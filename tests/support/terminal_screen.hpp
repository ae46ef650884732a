// terminal_screen.hpp - a terminal without a window: takes output bytes, tells what is visible.
//
// Owns the emulator (libvterm). Starts no programs and reads no descriptors.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

/// The colour of a cell for which no colour was set.
constexpr int default_colour = -1;

/// One character cell as a person sees it.
struct screen_cell {
    std::string text{};              // UTF-8; a blank for a cell that was never written
    int foreground = default_colour; // palette index 0 to 255, or default_colour
    int background = default_colour;
    bool bold = false;
    bool reverse = false;
    bool underline = false;

    bool operator==(const screen_cell&) const = default;
};

/// For the messages of failed comparisons.
std::ostream& operator<<(std::ostream& out, const screen_cell& cell);

/// Keys whose bytes depend on the mode that the program has set.
enum class named_key {
    enter,
    tab,
    backspace,
    escape,
    up,
    down,
    left,
    right,
    home,
    end,
    function_1
};

class terminal_screen
{
public:
    /// `utf8`: how bytes above 127 are read; false is an 8-bit terminal.
    terminal_screen(int rows, int columns, bool utf8);
    ~terminal_screen();
    terminal_screen(const terminal_screen&) = delete;
    terminal_screen& operator=(const terminal_screen&) = delete;

    /// Displays what a program wrote.
    void feed(std::string_view output);
    /// Forgets a character or a sequence of which only the beginning was displayed: what is fed
    /// next does not continue it.
    void forget_beginning();
    /// Changes the size; both at least 1.
    void resize(int rows, int columns);

    int rows() const;
    int columns() const;
    /// The cell at 0-based `row` and `column`; blank, in default colours, outside the screen.
    screen_cell cell(int row, int column) const;
    /// `width` cells from (row, column) as UTF-8, with their blanks; -1: to the end of the row.
    std::string text(int row, int column = 0, int width = -1) const;
    /// Every row without its trailing blanks, with a line feed.
    std::string whole_text() const;

    int cursor_row() const;
    int cursor_column() const;
    bool cursor_visible() const;
    bool alternate_screen() const;
    /// Bells rung since the start.
    int bells() const;

    /// The bytes that a key sends in the terminal's present mode.
    std::string key_bytes(named_key key);
    /// The bytes with which the terminal has answered the program's queries; the call removes them.
    std::string take_answers();

private:
    struct emulator;
    std::unique_ptr<emulator> inner;
};
