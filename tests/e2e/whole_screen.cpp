// whole_screen.cpp - see whole_screen.hpp.
#include "e2e/whole_screen.hpp"

#include <string_view>

namespace
{

constexpr int shared_column = 26; // of the server list's right frame and the status pane's left one
constexpr std::string_view heading = "  » available Servers «  ";
constexpr std::string_view title = "NCurses tovrikclient V0.02.001 - Written by the team";
constexpr std::string_view keys =
    "^D Disconnect, ^E Settings, ^H Help, ^I ServerInfo, ^L Connect, ^R ServerList, ^X Exit";

/// Collects what is wrong; keeps only the first fault.
class inspection
{
public:
    explicit inspection(const terminal_screen& inspected) : screen(inspected) {}

    void expect(int row, int column, std::string_view text, int width = 1)
    {
        const std::string seen = screen.text(row, column, width);
        if (fault.empty() && seen != text)
            fault.append("\"")
                .append(text)
                .append("\" is not in row ")
                .append(std::to_string(row))
                .append(", column ")
                .append(std::to_string(column));
    }
    void expect_line(int row, int first, int last)
    {
        for (int column = first; column <= last; ++column)
            expect(row, column, "─");
    }

    const terminal_screen& screen;
    std::string fault{};
};

void inspect_server_list(inspection& all, int status_top, int bottom)
{
    all.expect(0, 0, "┌");
    all.expect_line(0, 1, shared_column - 1);
    all.expect(0, shared_column, "┐");
    all.expect(1, 1, heading, shared_column - 1);
    for (int row = 1; row < bottom; ++row) {
        all.expect(row, 0, "│");
        all.expect(row, shared_column, row == status_top ? "├" : "│");
    }
    all.expect(bottom, 0, "└");
    all.expect_line(bottom, 1, shared_column - 1);
    all.expect(bottom, shared_column, "┴");
}

void inspect_status_pane(inspection& all, int status_top, int bottom)
{
    const int right = all.screen.columns() - 1;
    all.expect_line(status_top, shared_column + 1, right - 1);
    all.expect(status_top, right, "┤");
    for (int row = status_top + 1; row < bottom - 1; ++row)
        all.expect(row, right, "│");
    all.expect_line(bottom, shared_column + 1, right - 1);
    all.expect(bottom, right, "┘");
}

bool shows_title(const terminal_screen& screen)
{
    for (int row = screen.rows() - 6; row <= screen.rows() - 3; ++row)
        if (screen.text(row, shared_column + 1).starts_with(title))
            return true;
    return false;
}

} // namespace

std::string frame_fault(const terminal_screen& screen)
{
    const int status_top = screen.rows() - 7;
    const int bottom = screen.rows() - 2;
    inspection all(screen);
    inspect_server_list(all, status_top, bottom);
    inspect_status_pane(all, status_top, bottom);
    std::string key_line{keys.substr(0, static_cast<std::size_t>(screen.columns()))};
    key_line.resize(static_cast<std::size_t>(screen.columns()), ' ');
    all.expect(bottom + 1, 0, key_line, screen.columns());
    return all.fault;
}

std::string screen_fault(const terminal_screen& screen)
{
    const std::string fault = frame_fault(screen);
    return fault.empty() && !shows_title(screen) ? "the title is not in the status pane" : fault;
}

testing::AssertionResult wait_for_whole_screen(terminal_session& terminal)
{
    std::string fault;
    testing::AssertionResult result = terminal.wait_until(
        [&] {
            fault = screen_fault(terminal.screen());
            return fault.empty();
        },
        "all panes are whole");
    if (!result)
        result << fault;
    return result;
}

std::vector<screen_cell> all_cells(const terminal_screen& screen)
{
    std::vector<screen_cell> cells;
    for (int row = 0; row < screen.rows(); ++row)
        for (int column = 0; column < screen.columns(); ++column)
            cells.push_back(screen.cell(row, column));
    return cells;
}
