// box_name_test.cpp - the server's name on the lower frame of the boxes that it opens.
#include "e2e/network_session.hpp"
#include "support/compressed.hpp"

namespace
{

/// A server's alias, and the lower frame of its password box.
struct name_case {
    const char* alias;
    const char* frame;
};

constexpr name_case name_cases[] = {
    {"abc", "└─[ abc ]────────[ RET=OK - ESC=CANCEL ]─┘"},
    {"tencellsok", "└─[ tencellsok ]─[ RET=OK - ESC=CANCEL ]─┘"},
    {"Frankfurt Main", "└─[ Frankf~ain ]─[ RET=OK - ESC=CANCEL ]─┘"},
    {"a very long name of a server that goes on and on",
     "└─[ a very~ on ]─[ RET=OK - ESC=CANCEL ]─┘"},
    {"a\033[31mb\x9B%s", "└─[ a?[31mb?%s ]─[ RET=OK - ESC=CANCEL ]─┘"},
    {"\033\x01\x7F", "└─[ 127.0.0.1 ]──[ RET=OK - ESC=CANCEL ]─┘"},
    {"", "└─[ 127.0.0.1 ]──[ RET=OK - ESC=CANCEL ]─┘"},
};

TEST(box_name, is_the_alias_or_the_host_and_fits_beside_the_hint)
{
    for (const name_case& row : name_cases) {
        SCOPED_TRACE(row.frame);
        scripted_server server;
        client_session client;
        ASSERT_TRUE(client.start(knowing(server, row.alias)));
        std::optional<server_connection> connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
        client.clock().stop(); // the box stays open
        ASSERT_TRUE(connection->send(capabilities_packet("<NeedAuth>1</NeedAuth>")));
        ASSERT_TRUE(client.terminal().wait_for_text(row.frame));
        client.terminal().resize(30, 100);
        ASSERT_TRUE(client.terminal().wait_until(
            [&] { return client.terminal().screen().text(13, 30, 42) == row.frame; },
            "the name after a resize"));
    }
}

TEST(box_name, has_more_space_on_a_report)
{
    const std::string alias = "A name of forty-eight letters, two more than fit";
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server, alias)));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    client.clock().stop();
    const std::string bytes = compressed("the text");
    ASSERT_TRUE(connection->send(74, std::to_string(bytes.size()) + "\t100"));
    ASSERT_TRUE(connection->send({.kind = 205, .payload = bytes}));
    EXPECT_TRUE(client.terminal().wait_for_text("└─[ A name of forty-eight letters, two more th~fit"
                                                " ]─[ RET=OK - ESC=CANCEL ]─┘"));
}

} // namespace
