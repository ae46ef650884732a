// help.cpp - see help.hpp.
#include "ui/help.hpp"

#include "app/app_state.hpp"
#include "base/file_open.hpp"
#include "base/home.hpp"
#include "base/owners.hpp"
#include "ui/glyphs.hpp"
#include "ui/pane.hpp"
#include "ui/redraw.hpp"

#include <cstdio>
#include <string_view>

namespace
{

constexpr int text_row = 2;
constexpr std::size_t line_room = 4096;
constexpr int most_lines = 10'000; // only the last screenful is ever seen

void line_append(WINDOW* window, std::string_view line)
{
    const bool is_ended = line.ends_with('\n');
    glyphs_write(window, line.substr(0, line.size() - (is_ended ? 1 : 0)));
    if (is_ended)
        glyphs_end_line(window);
}

void text_append(WINDOW* window, std::FILE* file)
{
    char line[line_room];
    for (int count = 0; count < most_lines && std::fgets(line, sizeof line, file) != nullptr;
         ++count)
        line_append(window, line);
}

} // namespace

void help_fill()
{
    const home_visit visit;
    WINDOW* window = app_state.help_win;
    pane_printf(window, colour::frame, 2, 0, true, false, "[ ncurses tovrik client - Help ]");
    pane_printf(window, colour::text, COLS - 22, LINES - 1, true, false, "[ To exit press ^H ]");
    if (window == nullptr)
        return;
    glyphs_attribute(window, colour::text, false);
    // The text goes on behind this blank, which is taken away again in the end.
    glyphs_write_at(window, text_row, 0, " ");
    const unique_file file = visit.is_there() ? file_open(help_name, file_use::reading) : nullptr;
    if (file)
        text_append(window, file.get());
    mvwdelch(window, text_row, 0);
    window_show(window);
}
