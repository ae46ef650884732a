// help.cpp - see help.hpp.
#include "ui/help.hpp"

#include "app/app_state.hpp"
#include "base/file_open.hpp"
#include "base/home.hpp"
#include "base/owners.hpp"
#include "ui/glyphs.hpp"
#include "ui/pane.hpp"
#include "ui/window.hpp"

#include <cstdio>
#include <string_view>

namespace
{

constexpr int text_row = 2;
constexpr std::size_t line_size = 4096;
constexpr int max_lines = 10'000; // only the last screenful is ever seen

void append_line(WINDOW* window, std::string_view line)
{
    const bool is_ended = line.ends_with('\n');
    glyphs_write(window, line.substr(0, line.size() - (is_ended ? 1 : 0)));
    // Kept on purpose: a text longer than the window scrolls, and pushes its own beginning, title
    // and hint out at the top. Test: help.a_longer_text_shows_its_end.
    if (is_ended)
        glyphs_end_line(window);
}

void append_text(WINDOW* window, std::FILE* file)
{
    char line[line_size];
    for (int count = 0; count < max_lines && std::fgets(line, sizeof line, file) != nullptr;
         ++count)
        append_line(window, line);
}

} // namespace

void help_fill()
{
    const home_visit visit;
    WINDOW* window = app_state.help_win;
    page_titles_print(window, "[ ncurses tovrik client - Help ]", "[ To exit press ^H ]");
    if (window == nullptr)
        return;
    glyphs_attribute(window, colour::text, false);
    glyphs_write_at(window, text_row, 0, " ");
    const unique_file file = visit.is_there() ? file_open(help_name, file_use::reading) : nullptr;
    if (file)
        append_text(window, file.get());
    // Kept on purpose: the blank before the text is deleted where it was written, whatever has
    // scrolled there since. Test: help.a_longer_text_shows_its_end.
    mvwdelch(window, text_row, 0);
    window_show(window);
}
