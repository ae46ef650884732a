// example_config_test.cpp - the example configuration on a screen of 80 columns: every row fits.
#include "e2e/client_session.hpp"

#include "server/practice/practice_server.hpp"

#include <fstream>
#include <iterator>
#include <regex>

namespace
{

constexpr const char* example_port = "<ServerPort>2202<";

/// The rows of the status pane, from the start on, each with its end.
constexpr const char* whole_row =
    "|NCurses .* team|Loading .*ncursesclient.conf'|Try connecting to Practice.*:[0-9]+"
    "|Successfully connected .* Handle #[0-9]+|ServerID: .*";

/// The example, with its server on another port.
std::string read_example(int port)
{
    std::ifstream file{SOURCE_FOLDER "/share/ncursesclient.conf.example"};
    std::string text{std::istreambuf_iterator<char>{file}, {}};
    const auto at = text.find(example_port);
    EXPECT_NE(at, std::string::npos);
    return text.replace(at, std::string_view{example_port}.size(),
                        "<ServerPort>" + std::to_string(port) + '<');
}

/// The text of an element of the example.
std::string element_of(const std::string& example, const std::string& name)
{
    std::smatch found;
    EXPECT_TRUE(std::regex_search(example, found, std::regex{'<' + name + ">([^<]+)<"})) << name;
    return found[1];
}

TEST(example_configuration, fits_into_the_rows_of_80_columns)
{
    tovrik::server_options options;
    options.rate_per_minute = 0;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start()) << server.error();
    const std::string example = read_example(server.port());
    client_session client;
    client.home().write_config(example);
    ASSERT_TRUE(client.start_as_it_is());
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_for_text("Successfully connected "));
    for (const std::string& row : client.status_lines())
        EXPECT_TRUE(std::regex_match(row, std::regex{whole_row})) << "wrapped: " << row;
    client.terminal().send_key(named_key::tab);
    ASSERT_TRUE(client.terminal().wait_for_text("[ Close Window ^I ]"));
    for (const char* name : {"ServerPort", "ServerAlias", "Location", "Info"})
        EXPECT_TRUE(client.terminal().shows(element_of(example, name))) << name;
    client.terminal().send_key(named_key::tab);
    client.quit();
}

} // namespace
