// directory_markup_test.cpp - no line of a directory changes what is saved of other servers.
#include "e2e/directory_session.hpp"

#include <gtest/gtest.h>

namespace
{

class directory_markup : public directory_test
{
protected:
    directory_markup()
    {
        settings.save_passwords = true;
        settings.servers = {
            {.name = "good.example", .password = "0123456789abcdef0123456789abcdef"},
            {.name = "fine.example", .info = "mine", .password = std::string(32, 'b')},
            {.name = "also.example", .subcode = "7", .email = "me@example"}};
    }
};

TEST_F(directory_markup, leaves_private_servers_passwords_and_settings_as_they_were)
{
    const std::vector<server_settings> hostile = {
        {.name = "x1.example", .alias = "</clientconf>"},
        {.name = "x2.example",
         .info = "nice</Info></Server1><Server2><ServerName>127.0.0.66</ServerName>"
                 "<Password>stolen</Password></Server2><Server1><Info>"},
        {.name = "x3.example</ServerName><ServerName>good.example", .location = "<"},
        {.name = "x4.example", .location = "\x1B]0;x\x07</SavePasswords>"},
    };
    std::string answer = answer_header;
    for (const server_settings& server : hostile)
        answer += directory_line(server);
    ASSERT_TRUE(start());
    ASSERT_TRUE(fetch_answered(answer, 7));
    client.terminal().send_control('x');
    ASSERT_TRUE(client.wait_for_exit());
    const std::optional<std::string> saved = client.home().read_config();
    ASSERT_TRUE(saved);
    for (const server_settings& server : settings.servers) {
        client_settings one = settings;
        one.servers = {server};
        const std::string text = config_text(one);
        const std::string block = text.substr(text.find("<ServerName>"));
        EXPECT_NE(saved->find(block.substr(0, block.find("</Server1>"))), std::string::npos)
            << block;
    }
    client_session again;
    again.home().write_config(*saved);
    ASSERT_TRUE(again.start_as_it_is());
    again.terminal().send_control('x');
    ASSERT_TRUE(again.wait_for_exit());
    EXPECT_EQ(again.home().read_config(), saved);
}

} // namespace
