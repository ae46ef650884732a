// report_session.cpp - what the tests of reports share.
#include "e2e/report_session.hpp"

prompt_look save_prompt(const std::string& text, int columns)
{
    return {save_question, columns - 4, or_cancel, text, "alpha"};
}

std::string size_line(const std::string& size)
{
    return "Now receiving ZOBE Style report. Size " + size + " bytes";
}

testing::AssertionResult report_session::announce(std::string_view header, const std::string& size)
{
    if (!connection->send(74, header))
        return testing::AssertionFailure() << "nobody takes the header";
    return client.wait_for_status(size_line(size), pairs::notice);
}

void report_session::send_piece(std::string_view bytes)
{
    EXPECT_TRUE(connection->send({.kind = 205, .payload = std::string{bytes}}));
}

void report_session::send_pieces(std::string_view bytes, std::size_t length)
{
    for (std::size_t at = 0; at < bytes.size(); at += length)
        send_piece(bytes.substr(at, length));
}

testing::AssertionResult report_session::send_report(const std::string& text, std::size_t piece)
{
    const std::string bytes = compressed(text);
    const std::string size = std::to_string((text.size() + 3) / 4);
    testing::AssertionResult announced = announce(std::to_string(bytes.size()) + '\t' + size, size);
    send_pieces(bytes, piece);
    return announced;
}

testing::AssertionResult report_session::wait_until_handled(const std::string& notice)
{
    connection->send(103, notice);
    return client.wait_for_status(notice, pairs::plain, false);
}

void report_session::expect_nothing_offered()
{
    terminal().take_in_everything();
    EXPECT_EQ(terminal().raw_output().find("Save"), std::string::npos);
}

void report_session::expect_saved(const std::string& name, const std::string& text)
{
    EXPECT_TRUE(
        client.wait_for_status("Report successfully saved as '" + name + "'", pairs::notice));
    EXPECT_TRUE(file_holds(client, name, text));
}
