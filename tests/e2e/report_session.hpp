// report_session.hpp - what the tests of reports share: a server that sends them, and the prompt
// for the file name that follows.
#pragma once

#include "e2e/service_session.hpp"
#include "support/compressed.hpp"

constexpr const char* save_question = "Save ZOBE Style Report as...";

/// The prompt of server alpha for the file name, filled with this text.
prompt_look save_prompt(const std::string& text = "./", int columns = 80);

/// The status line for an announced size.
std::string size_line(const std::string& size);

class report_session : public service_test
{
protected:
    /// Announces a report and waits until the client tells its size.
    [[nodiscard]] testing::AssertionResult announce(std::string_view header,
                                                    const std::string& size);
    void send_piece(std::string_view bytes);
    /// Sends bytes in pieces of at most this length.
    void send_pieces(std::string_view bytes, std::size_t length);
    /// Sends a whole report; announces a quarter of the text's length, rounded up.
    [[nodiscard]] testing::AssertionResult send_report(const std::string& text,
                                                       std::size_t piece = 4096);
    /// Sends a notice and waits until it is shown: everything sent before has then taken effect.
    [[nodiscard]] testing::AssertionResult wait_until_handled(const std::string& notice);
    /// Checks that no prompt for a file name has ever been on the screen, not even briefly.
    void expect_nothing_offered();
    /// Checks that the client says it saved the report, and that the file holds exactly this text.
    void expect_saved(const std::string& name, const std::string& text);
};
