// settings_session.hpp - opens, reads and closes the settings page for its tests.
#pragma once

#include "e2e/client_session.hpp"

/// Where the page's values are on every terminal.
namespace settings_places
{
constexpr int mark_column = 3;
constexpr int log_folder_row = 15;
constexpr int log_folder_column = 23;
constexpr int report_folder_row = 16;
constexpr int report_folder_column = 22;
} // namespace settings_places

/// Presses ^E and waits until the whole page is there: its bottom row is painted last.
[[nodiscard]] inline testing::AssertionResult open_settings_page(client_session& client)
{
    terminal_session& terminal = client.terminal();
    terminal.send_control('e');
    return terminal.wait_until(
        [&] { return terminal.row(terminal.screen().rows() - 1).ends_with("press ^E ]─┘"); },
        "the settings page");
}

/// A client and its settings page.
class settings_test : public testing::Test
{
protected:
    [[nodiscard]] testing::AssertionResult open_page()
    {
        return open_settings_page(client);
    }
    /// ^E, and waits until the page is gone.
    [[nodiscard]] testing::AssertionResult close_page()
    {
        client.terminal().send_control('e');
        return client.terminal().wait_until([&] { return panes_are_in_front(); }, "the panes");
    }
    bool panes_are_in_front()
    {
        const terminal_screen& screen = client.terminal().screen();
        return screen.text(screen.rows() - 1).starts_with("^D Disconnect");
    }
    /// Waits until the box on a row shows this mark.
    [[nodiscard]] testing::AssertionResult mark_becomes(int row, const std::string& mark)
    {
        const auto shown = [&] {
            return client.terminal().screen().text(row, 2, 3) == "[" + mark + "]";
        };
        return client.terminal().wait_until(shown, "[" + mark + "] on row " + std::to_string(row));
    }
    /// A row of the page without its right frame and trailing blanks, from `column` on.
    std::string page_text(int row, int column)
    {
        const terminal_screen& screen = client.terminal().screen();
        std::string text = screen.text(row, column, screen.columns() - column - 1);
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    }

    client_session client;
};
