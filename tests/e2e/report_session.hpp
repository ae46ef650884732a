// report_session.hpp - what the tests of reports share: a server that sends them, and the prompt
// for a file's name that follows.
#pragma once

#include "e2e/service_session.hpp"
#include "support/compressed.hpp"

constexpr const char* save_question = "Save ZOBE Style Report as...";

/// The prompt for the file's name with this text in it.
prompt_look save_prompt(const std::string& text = "./", int columns = 80);

/// What is said of an announced size.
std::string size_line(const std::string& size);

class report_session : public service_test
{
protected:
    /// Sends a report's announcement and waits until its size is told.
    [[nodiscard]] testing::AssertionResult announce(std::string_view header,
                                                    const std::string& size);
    void send_piece(std::string_view bytes);
    /// Sends bytes in pieces of at most this length.
    void send_pieces(std::string_view bytes, std::size_t length);
    /// Sends a whole report; it announces a quarter of the text's length, rounded up.
    [[nodiscard]] testing::AssertionResult send_report(const std::string& text,
                                                       std::size_t piece = 4096);
    /// Sends a notice and waits until it is shown: all that was sent before has had its effect.
    [[nodiscard]] testing::AssertionResult all_is_dealt_with(const std::string& notice);
    /// No prompt for a file's name has ever been on the screen, not even for a moment.
    void expect_nothing_offered();
    /// The report is said to be saved, and the file holds exactly this.
    void expect_saved(const std::string& name, const std::string& text);
};
