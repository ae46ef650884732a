// server_info_target.cpp - the window about a server, and its free text wrapped to lines.
#include "app/app_state.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/property.hpp"
#include "services/server_info.hpp"

#include <algorithm>
#include <vector>

namespace
{

constexpr std::size_t info_row = 5;
constexpr std::size_t info_rows = 4;
constexpr int left_column = 6;

char show(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    if (byte == '\t' || byte == '\r' || byte == '\n')
        return ' ';
    return byte < 0x20 || (byte >= 0x7F && byte < 0xA0) ? '?' : character;
}

/// The rows of the window that hold the text, blank before.
struct info_lines {
    std::vector<std::string> rows;
    std::size_t columns;

    void write(std::size_t row, std::size_t column, std::string text)
    {
        if (row >= rows.size() || column >= columns)
            return;
        std::transform(text.begin(), text.end(), text.begin(), show);
        text = text.substr(0, columns - column);
        rows[row].replace(column, text.size(), text);
    }
};

/// Lines break at the last blank in reach. The second line begins in the first one's row, over the
/// label; the row is advanced only after it was used.
info_lines wrap(const std::string& text)
{
    const auto columns = static_cast<std::size_t>(COLS - 12);
    const auto width = static_cast<std::size_t>(COLS - 20);
    info_lines lines{std::vector<std::string>(info_rows, std::string(columns, ' ')), columns};
    lines.write(0, 1, "Info: ");
    std::string rest = text.empty() ? "unknown" : text;
    std::size_t column = 7;
    std::size_t row = 0;
    std::size_t next_row = 0;
    while (rest.size() > width) {
        const std::size_t blank = rest.rfind(' ', width);
        const bool is_hard = blank == std::string::npos;
        lines.write(row, column, rest.substr(0, is_hard ? width : blank));
        rest.erase(0, is_hard ? width : blank + 1);
        row = next_row++;
        column = 1;
    }
    lines.write(row, column, rest);
    return lines;
}

/// Ignores frames: long lines overwrite them.
void check_lines(const std::string& info)
{
    const info_lines expected = wrap(info);
    const auto top = static_cast<std::size_t>(LINES / 2 - 4);
    for (std::size_t row = 0; row < info_rows; ++row) {
        const std::string shown_row = screen_row(static_cast<int>(top + info_row + row));
        require(shown_row.substr(left_column + 1, expected.columns - 2) ==
                    expected.rows[row].substr(1, expected.columns - 2),
                "a free text is wrapped at its blanks");
    }
}

void fill_entry(server_entry& entry, fuzz_input& input)
{
    const unsigned flags = input.number(255);
    entry.crc_check = flags & 1;
    entry.can_mail = flags >> 1 & 1;
    entry.can_modify = flags >> 2 & 1;
    entry.can_page = flags >> 3 & 1;
    entry.can_report = flags >> 4 & 1;
    entry.ServerPort = static_cast<std::int32_t>(input.number(65'535)) - 100;
    entry.Location = owned_or_none(input.text());
    entry.server_version = owned_or_none(input.text());
    entry.server_uuid = owned_or_none(input.text());
}

/// Changes the terminal's size now and then; most inputs keep it, which is faster.
bool choose_size(fuzz_input& input)
{
    const unsigned choice = input.number(255);
    if (choice < 254)
        return false;
    const int lines = 1 + static_cast<int>(input.number(60));
    screen_resize(lines, 2 + static_cast<int>(input.number(200)));
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    const bool is_resized = choose_size(input);
    server_entry& entry = server_add_new("a.example", input.text());
    fill_entry(entry, input);
    const std::string info = input.rest();
    entry.Info = owned_or_none(info.substr(0, info.find('\0')));
    server_info_toggle();
    screen_check();
    if (!is_resized && app_state.popup_win != nullptr)
        check_lines(entry.Info != nullptr ? entry.Info : "");
    if (!is_resized)
        require(app_state.popup_win != nullptr, "the window opens");
    if (app_state.popup_win != nullptr)
        server_info_toggle();
    require(app_state.popup_win == nullptr, "the same key closes the window");
    return 0;
}
