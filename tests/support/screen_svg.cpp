// screen_svg.cpp - see screen_svg.hpp.
#include "support/screen_svg.hpp"

#include "support/svg_parts.hpp"

#include <vector>

namespace
{

constexpr int margin = 10;
constexpr int bar_height = 30;
constexpr int base_line = 14; // of a text, from the top of its cell
constexpr int base_colours = 8;

constexpr const char* window_colour = "#14171c";
constexpr const char* bar_colour = "#262b33";
constexpr const char* edge_colour = "#3b424d";
constexpr const char* title_colour = "#9aa3b0";
constexpr const char* knob_colour = "#4a5260";
constexpr const char* font_names = "Menlo,Consolas,'DejaVu Sans Mono','Liberation Mono',monospace";

/// One of the eight colours: for text, for bold text and for the background.
struct shades {
    const char* plain;
    const char* bright;
    const char* behind;
};

constexpr shades palette[base_colours] = {
    {"#14171c", "#6b7482", window_colour}, {"#d9646c", "#ff7f87", "#8a2f37"},
    {"#7fb868", "#a6e38c", "#3f6d2e"},     {"#cda655", "#f5d47a", "#7d611f"},
    {"#5a8fd6", "#86b9ff", "#254a80"},     {"#b07cc6", "#dba5f0", "#6a3a80"},
    {"#54a9b3", "#7fdbe5", "#1f6570"},     {"#c3c9d2", "#ffffff", "#c3c9d2"},
};
constexpr shades default_shades = {"#c3c9d2", "#ffffff", window_colour};

/// How a run of cells looks.
struct cell_style {
    std::string ink{};
    std::string behind{};
    bool bold = false;
    bool underline = false;
    bool operator==(const cell_style&) const = default;
};

const shades& find_shades(int colour)
{
    return colour < 0 || colour >= 2 * base_colours ? default_shades
                                                    : palette[colour % base_colours];
}

cell_style find_style(const screen_cell& cell)
{
    const shades& front = find_shades(cell.foreground);
    const shades& back = find_shades(cell.background);
    const bool is_bright =
        cell.bold || (cell.foreground >= base_colours && cell.foreground < 2 * base_colours);
    cell_style style{.bold = cell.bold, .underline = cell.underline};
    style.ink = cell.reverse ? back.behind : is_bright ? front.bright : front.plain;
    style.behind = cell.reverse ? front.plain : back.behind;
    return style;
}

enum class cell_kind { blank, text, box };

struct drawn_cell {
    std::string text;
    cell_style style;
    cell_kind kind;
};

drawn_cell make_drawn_cell(const screen_cell& cell)
{
    drawn_cell drawn{cell.text, find_style(cell), cell_kind::text};
    if (cell.text == " " && !cell.underline)
        drawn.kind = cell_kind::blank;
    else if (is_box_character(cell.text))
        drawn.kind = cell_kind::box;
    return drawn;
}

int cell_x(int column)
{
    return margin + column * svg_cell_width;
}

int cell_y(int row)
{
    return bar_height + margin + row * svg_cell_height;
}

/// Turns one row of the screen into its part of the picture.
struct row_painter {
    std::vector<drawn_cell> cells;
    int row;
    std::string out{};

    int columns() const
    {
        return static_cast<int>(cells.size());
    }
    const drawn_cell& at(int column) const
    {
        return cells[static_cast<std::size_t>(column)];
    }

    template <typename condition> int end_of_run(int begin, condition belongs) const
    {
        int end = begin + 1;
        while (end < columns() && belongs(at(end)))
            ++end;
        return end;
    }

    void paint_behind()
    {
        for (int begin = 0, end = 0; begin < columns(); begin = end) {
            const std::string& colour = at(begin).style.behind;
            end = end_of_run(begin, [&](const auto& cell) { return cell.style.behind == colour; });
            if (colour == window_colour)
                continue;
            out += "<rect" + svg_attribute("x", cell_x(begin)) + svg_attribute("y", cell_y(row)) +
                   svg_attribute("width", (end - begin) * svg_cell_width) +
                   svg_attribute("height", svg_cell_height) + svg_attribute("fill", colour) +
                   "/>\n";
        }
    }

    void paint_text(int begin, int end)
    {
        const cell_style& style = at(begin).style;
        out += "<text" + svg_attribute("x", cell_x(begin)) +
               svg_attribute("y", cell_y(row) + base_line) + svg_attribute("fill", style.ink);
        if (style.bold)
            out += svg_attribute("font-weight", "bold");
        if (style.underline)
            out += svg_attribute("text-decoration", "underline");
        out += svg_attribute("textLength", (end - begin) * svg_cell_width) + ">";
        for (int column = begin; column < end; ++column)
            out += svg_escaped(at(column).text);
        out += "</text>\n";
    }

    void paint_boxes(int begin, int end)
    {
        const cell_style& style = at(begin).style;
        out += "<path" + svg_attribute("stroke", style.ink);
        if (style.bold)
            out += svg_attribute("stroke-width", 2);
        out += " d=\"";
        for (int column = begin; column < end; ++column)
            out += box_strokes(at(column).text, cell_x(column), cell_y(row));
        out += "\"/>\n";
    }

    /// Where the run from `begin` ends: at a change of style or kind, or, within a text, at two
    /// blanks, so that every word stays near its place in any font.
    int end_of_words(int begin) const
    {
        const drawn_cell& first = at(begin);
        const auto belongs = [&](const auto& cell) {
            return cell.kind == first.kind && cell.style == first.style;
        };
        int end = end_of_run(begin, belongs);
        while (first.kind == cell_kind::text && end + 1 < columns() &&
               at(end).kind == cell_kind::blank && at(end).style == first.style &&
               belongs(at(end + 1)))
            end = end_of_run(end + 1, belongs);
        return end;
    }

    void paint_front()
    {
        for (int begin = 0, end = 0; begin < columns(); begin = end) {
            end = end_of_words(begin);
            if (at(begin).kind == cell_kind::text)
                paint_text(begin, end);
            else if (at(begin).kind == cell_kind::box)
                paint_boxes(begin, end);
        }
    }
};

std::string draw_row(const terminal_screen& screen, int row)
{
    row_painter painter{.cells = {}, .row = row};
    for (int column = 0; column < screen.columns(); ++column)
        painter.cells.push_back(make_drawn_cell(screen.cell(row, column)));
    painter.paint_behind();
    painter.paint_front();
    return painter.out;
}

std::string draw_window(int width, int height, std::string_view title)
{
    std::string out = "<rect x=\"0.5\" y=\"0.5\"" + svg_attribute("width", width - 1) +
                      svg_attribute("height", height - 1) + svg_attribute("rx", 9) +
                      svg_attribute("fill", window_colour) + svg_attribute("stroke", edge_colour) +
                      "/>\n";
    out += "<path" + svg_attribute("fill", bar_colour) +
           svg_attribute("d", "M1 30v-20a9 9 0 0 1 9-9h" + std::to_string(width - 20) +
                                  "a9 9 0 0 1 9 9v20z") +
           "/>\n";
    for (const int x : {20, 38, 56})
        out += "<circle" + svg_attribute("cx", x) + svg_attribute("cy", 15) +
               svg_attribute("r", 5) + svg_attribute("fill", knob_colour) + "/>\n";
    out += "<text" + svg_attribute("x", width / 2) + svg_attribute("y", 20) +
           svg_attribute("fill", title_colour) + svg_attribute("text-anchor", "middle") + ">" +
           svg_escaped(title) + "</text>\n";
    return out;
}

std::string draw_head(int width, int height)
{
    return "<svg xmlns=\"http://www.w3.org/2000/svg\"" + svg_attribute("width", width) +
           svg_attribute("height", height) +
           svg_attribute("viewBox", "0 0 " + std::to_string(width) + " " + std::to_string(height)) +
           svg_attribute("role", "img") + svg_attribute("font-family", font_names) +
           svg_attribute("font-size", 15) + svg_attribute("xml:space", "preserve") +
           svg_attribute("fill", "none") + ">\n";
}

} // namespace

int screen_svg_width(int columns)
{
    return columns * svg_cell_width + 2 * margin;
}

int screen_svg_height(int rows)
{
    return rows * svg_cell_height + 2 * margin + bar_height;
}

std::string screen_svg(const terminal_screen& screen, std::string_view title)
{
    const int width = screen_svg_width(screen.columns());
    const int height = screen_svg_height(screen.rows());
    std::string out = draw_head(width, height) + "<title>" + svg_escaped(title) +
                      "</title>\n<desc>" + std::to_string(screen.rows()) + " rows of " +
                      std::to_string(screen.columns()) + " columns</desc>\n";
    out += draw_window(width, height, title);
    for (int row = 0; row < screen.rows(); ++row)
        out += draw_row(screen, row);
    return out + "</svg>\n";
}
