// help.cpp - see help.hpp.
#include "ui/help.hpp"

#include "app/app_state.hpp"
#include "base/file_open.hpp"
#include "base/home.hpp"
#include "base/owners.hpp"
#include "ui/glyphs.hpp"
#include "ui/pane.hpp"
#include "ui/window.hpp"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <sys/stat.h>

namespace
{

constexpr int text_row = 2;
constexpr std::size_t line_size = 4096;
constexpr std::string_view tab_blanks = "        ";
constexpr int tab_width = static_cast<int>(tab_blanks.size());

/// How much of a file's end is looked at. Only the last screenful is ever seen.
constexpr off_t max_text_bytes = 1024L * 1024;

/// How many lines are read of what has no known size and may never end, such as a device.
constexpr long max_lines_of_unknown_size = 10'000;

void append_tab(WINDOW* window)
{
    // The first row's blank is going to be deleted, which moves the text to the left.
    const int moved = getcury(window) == text_row ? 1 : 0;
    const int to_stop = tab_width - (getcurx(window) - moved) % tab_width;
    const int to_edge = getmaxx(window) - getcurx(window);
    glyphs_write(window,
                 tab_blanks.substr(0, static_cast<std::size_t>(std::min(to_stop, to_edge))));
}

void append_words(WINDOW* window, std::string_view words)
{
    std::size_t tab = words.find('\t');
    for (; tab != std::string_view::npos; tab = words.find('\t')) {
        glyphs_write(window, words.substr(0, tab));
        append_tab(window);
        words.remove_prefix(tab + 1);
    }
    glyphs_write(window, words);
}

void append_line(WINDOW* window, std::string_view line)
{
    const bool is_ended = line.ends_with('\n');
    append_words(window, line.substr(0, line.size() - (is_ended ? 1 : 0)));
    // Kept on purpose: a text longer than the window scrolls, and pushes its own beginning, title
    // and hint out at the top. Test: help.a_longer_text_shows_its_end.
    if (is_ended)
        glyphs_end_line(window);
}

void append_text(WINDOW* window, std::FILE* file, long max_lines)
{
    char line[line_size];
    for (; max_lines > 0 && std::fgets(line, sizeof line, file) != nullptr; --max_lines)
        append_line(window, line);
}

/// Reads lines until `max_ends` of them have ended. Returns how many have.
long pass_lines(std::FILE* file, long max_ends)
{
    char line[line_size];
    long ends = 0;
    for (long parts = 0; ends < max_ends && parts < max_text_bytes; ++parts) {
        if (std::fgets(line, sizeof line, file) == nullptr)
            break;
        ends += std::string_view{line}.ends_with('\n') ? 1 : 0;
    }
    return ends;
}

/// Appends the last lines of a file of this size. Each fills a row at least, so that those before
/// them would not stay in the window.
void append_end(WINDOW* window, std::FILE* file, off_t size)
{
    const off_t begin = std::max<off_t>(0, size - max_text_bytes);
    const long max_seen = getmaxy(window) + text_row;
    fseeko(file, begin, SEEK_SET);
    const long unseen = pass_lines(file, max_text_bytes) - max_seen;
    fseeko(file, begin, SEEK_SET);
    pass_lines(file, std::max(0L, unseen));
    append_text(window, file, max_text_bytes);
}

void append_file(WINDOW* window, std::FILE* file)
{
    struct stat status = {};
    if (fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0)
        append_end(window, file, status.st_size);
    else
        append_text(window, file, max_lines_of_unknown_size);
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
        append_file(window, file.get());
    // Kept on purpose: the blank before the text is deleted where it was written, whatever has
    // scrolled there since. Test: help.a_longer_text_shows_its_end.
    mvwdelch(window, text_row, 0);
    window_show(window);
}
