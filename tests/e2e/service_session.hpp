// service_session.hpp - what the tests of the services share: a client on a server that offers them
// all, the boxes that it opens, and what may happen on the screen meanwhile.
#pragma once

#include "e2e/client_session.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Hint of a prompt whose answer is required.
constexpr const char* or_cancel = "RET=OK - ESC=CANCEL";

/// The capabilities of a server that offers every service.
constexpr std::string_view every_service = "<Mailing>1</Mailing><DBModify>1</DBModify>"
                                           "<Reports>1</Reports><Pager>1</Pager>";

/// The expected look of a prompt.
struct prompt_look {
    std::string question;
    int size = 0; // of the answer with its terminator; the box is at least so wide
    std::string hint = or_cancel;
    std::string text{}; // between the frames, without the cursor
    std::string name{}; // of the server that asks, as it is shown; empty: the user's own prompt
};

/// The expected look of a service menu.
struct menu_look {
    int width = 0;
    std::string hint{};
    std::vector<std::string> labels{};
};
extern const menu_look update_menu;
extern const menu_look mailing_menu;
extern const menu_look pager_menu;

/// The expected look of a pager list's window: each row of 24 characters or more, bars as "|".
struct list_look {
    std::vector<std::string> rows{};
    int height = 0; // of the window; 0: as high as the rows need
};

class service_test : public testing::Test
{
protected:
    /// Starts a client that knows the server, connects to it and makes it offer `services`.
    /// `settings` for the first server stay, except its port.
    [[nodiscard]] testing::AssertionResult begin(client_settings settings = {},
                                                 const client_start& how = {},
                                                 std::string_view services = every_service);

    terminal_session& terminal()
    {
        return client.terminal();
    }

    /// Waits for the prompt: whole, at its place on the present terminal, above everything else.
    [[nodiscard]] testing::AssertionResult prompt_is(const prompt_look& look);
    /// The same for a menu.
    [[nodiscard]] testing::AssertionResult menu_is(const menu_look& look);
    /// The same for a pager list.
    [[nodiscard]] testing::AssertionResult list_is(const list_look& look);

    /// Waits for the prompt, types a text and Enter.
    [[nodiscard]] testing::AssertionResult answer(const prompt_look& look, std::string_view text);
    /// Waits for the prompt and leaves it with Escape.
    [[nodiscard]] testing::AssertionResult escape(const prompt_look& look);
    /// Presses a command key and chooses from the menu that opens.
    [[nodiscard]] testing::AssertionResult choose(char command, const menu_look& look, char choice);

    /// Waits until no box is open, every key so far has taken effect, and the panes are back.
    [[nodiscard]] testing::AssertionResult dialog_ends(std::string_view last_text);
    /// Checks that the server receives exactly this packet next.
    void expect_sent(const server_packet& packet);
    /// Checks that the server has received nothing more, although the client kept polling.
    void expect_nothing_sent();

    /// Makes the server send transmissions until the message pane under a box is full of them, and
    /// waits until the last one has been handled.
    [[nodiscard]] testing::AssertionResult traffic();
    /// Waits until the first rows and columns of a box, as strings of cells, are at a place.
    [[nodiscard]] testing::AssertionResult shows_at(int row, int column,
                                                    const std::vector<std::string>& rows);

    scripted_server server;
    client_session client;
    std::optional<server_connection> connection;

private:
    int notices = 0;
};

/// A transmission with this text as its content.
std::string transmission_of(const std::string& content);

/// A capabilities packet with these elements.
server_packet capabilities_of(std::string_view elements);

/// Waits until a file in the client's home holds exactly these bytes.
[[nodiscard]] testing::AssertionResult file_holds(client_session& client, const std::string& name,
                                                  const std::string& bytes);

/// A text repeated.
std::string times(int count, std::string_view text);
