// password_test.cpp - passwords from the demand to the digest: typed, saved and refused ones.
#include "e2e/network_session.hpp"

#include <csignal>
#include <ostream>

namespace
{

constexpr const char* digest_of_abc = "900150983cd24fb0d6963f7d28e17f72";
constexpr const char* digest_of_39_letters_a = "08b2f2b0864bac1ba1585043362cbec9";
constexpr const char* digest_of_code_2 = "9e688c58a5487b8eaf69c9e1005ad0bf";
constexpr const char* digest_of_byte_e9 = "3406877694691ddd1dfb0aca54681407";
constexpr const char* digest_of_a_blank = "7215ee9c7d9dc229d2921a40e899ec5f";
constexpr const char* need_password = "<NeedAuth>1</NeedAuth>";
constexpr const char* box_title = "[ Password required ]";

/// Keys typed into the prompt, and the digest that must be sent for them.
struct typed_password {
    const char* name;
    std::string keys;
    const char* digest;
};

std::ostream& operator<<(std::ostream& out, const typed_password& row)
{
    return out << row.name;
}

/// Two servers, and a client that is not yet running.
class password : public testing::Test
{
protected:
    testing::AssertionResult begin(client_settings settings = {}, const std::string& known = "")
    {
        settings.servers = servers.settings().servers;
        settings.servers[0].password = known;
        if (testing::AssertionResult started = client.start(settings); !started)
            return started;
        connections = connect_all(client, servers);
        return connections.size() == servers.count()
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "no connection";
    }

    testing::AssertionResult demand()
    {
        return connections[0].send(capabilities_packet(need_password))
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "the client takes no bytes";
    }

    testing::AssertionResult box_is_open()
    {
        return client.terminal().wait_for_text(box_title);
    }

    /// The digest of the next packet, which must be a password.
    std::string next_digest()
    {
        const std::optional<server_packet> packet = connections[0].read_packet();
        return packet && packet->kind == 81 ? packet->payload : "no password";
    }

    /// Types a password for the server that demands one, then leaves the client.
    void answer_and_quit(const client_settings& settings)
    {
        ASSERT_TRUE(begin(settings));
        ASSERT_TRUE(demand());
        ASSERT_TRUE(box_is_open());
        client.terminal().send("abc\r");
        EXPECT_EQ(next_digest(), digest_of_abc);
        client.quit();
    }

    listed_servers servers{2};
    client_session client;
    std::vector<server_connection> connections;
};

class typed_passwords : public password, public testing::WithParamInterface<typed_password>
{
};

TEST_P(typed_passwords, are_sent_as_their_digest)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(demand());
    ASSERT_TRUE(box_is_open());
    client.terminal().send(GetParam().keys + "\r");
    EXPECT_EQ(next_digest(), GetParam().digest);
    ASSERT_TRUE(client.terminal().wait_for_no_text(box_title));
    EXPECT_FALSE(connections[0].has_unread_bytes());
    EXPECT_FALSE(connections[1].has_unread_bytes());
}

const typed_password typed[] = {
    {"plain_letters", "abc", digest_of_abc},
    {"corrected",
     "abx\x7F"
     "c",
     digest_of_abc},
    {"erased_beyond_the_start",
     "x\x7F\x7F\x7F"
     "abc",
     digest_of_abc},
    {"the_longest", std::string(39, 'a'), digest_of_39_letters_a},
    {"longer_than_the_longest", std::string(45, 'a'), digest_of_39_letters_a},
    {"arrow_down_is_code_2", "\033OB", digest_of_code_2},
    {"a_letter_of_two_bytes", "\xC3\xA9", digest_of_byte_e9},
    {"a_blank", " ", digest_of_a_blank},
};

INSTANTIATE_TEST_SUITE_P(all, typed_passwords, testing::ValuesIn(typed));

TEST_F(password, is_answered_by_a_line_and_then_a_beep)
{
    ASSERT_TRUE(begin());
    const struct {
        std::uint32_t kind;
        const char* line;
        bool is_line_first;
    } rows[] = {{82, "accepted", true}, {83, "doesnt", true}, {106, "allowed", false}};
    for (const auto& row : rows) {
        ASSERT_TRUE(connections[0].send(103, std::string(50, '~')));
        ASSERT_TRUE(client.terminal().wait_for_text("~~~"));
        client.terminal().take_in_everything();
        client.terminal().forget_raw_output();
        const int bells = client.terminal().bells();
        ASSERT_TRUE(connections[0].send(row.kind, "x"));
        ASSERT_TRUE(client.terminal().wait_until(
            [&] {
                return client.terminal().bells() == bells + 1 && client.terminal().shows(row.line);
            },
            row.line));
        const std::string& written = client.terminal().raw_output();
        EXPECT_EQ(written.find(row.line) < written.find('\a'), row.is_line_first) << row.kind;
    }
}

TEST_F(password, is_asked_for_again_at_each_demand)
{
    ASSERT_TRUE(begin());
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(demand());
        ASSERT_TRUE(box_is_open());
        client.terminal().send("abc\r");
        EXPECT_EQ(next_digest(), digest_of_abc);
        ASSERT_TRUE(client.terminal().wait_for_no_text(box_title));
    }
    EXPECT_FALSE(client.terminal().shows("saved password"));
}

TEST_F(password, nothing_else_is_received_while_it_is_typed)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(demand());
    ASSERT_TRUE(box_is_open());
    ASSERT_TRUE(connections[1].send(103, "from the other"));
    ASSERT_TRUE(connections[0].send(103, "from the same"));
    const std::int64_t polls = client.clock().alarms_set();
    for (const char* key : {"a", "b", "c"}) {
        client.terminal().send(key);
        ASSERT_TRUE(client.terminal().wait_for_text(std::string{key} + "_"));
    }
    EXPECT_EQ(client.clock().alarms_set(), polls);
    EXPECT_FALSE(client.terminal().shows("from the"));
    client.terminal().send("\r");
    ASSERT_TRUE(client.terminal().wait_for_text("from the other"));
    ASSERT_TRUE(client.terminal().wait_for_text("from the same"));
}

TEST_F(password, a_connection_made_meanwhile_does_not_damage_the_box)
{
    client_settings settings = servers.settings();
    ASSERT_TRUE(client.start(settings));
    std::optional<server_connection> first = client.connect_selected(servers[0]);
    ASSERT_TRUE(first);
    ASSERT_TRUE(select_row(client, 2));
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_for_text("Try connecting to bravo"));
    // Stops the attempt until the box is open, unless it was very quick.
    const pid_t program = client.terminal().process_id();
    for (const pid_t attempt : children_of(program))
        kill(attempt, SIGSTOP);
    ASSERT_TRUE(first->send(capabilities_packet(need_password)));
    ASSERT_TRUE(box_is_open());
    for (const pid_t attempt : children_of(program))
        kill(attempt, SIGCONT);
    std::optional<server_connection> second = servers[1].accept();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->read_packet(), (server_packet{.kind = 101, .payload = "0 02 001"}));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(2).text == "*"; },
                                             "the second is connected"));
    client.terminal().send("abc");
    ASSERT_TRUE(client.terminal().wait_for_text("│ abc_"));
    EXPECT_TRUE(client.terminal().shows("┌─[ Password required ]──────────────────┐"));
    EXPECT_TRUE(client.terminal().shows("└─[ alpha ]──────[ RET=OK - ESC=CANCEL ]─┘"));
    client.terminal().send("\r");
    EXPECT_EQ(first->read_packet(), (server_packet{.kind = 81, .payload = digest_of_abc}));
}

TEST_F(password, a_saved_password_is_sent_unchanged)
{
    ASSERT_TRUE(begin({.save_passwords = true}, "0123456789abcdef0123456789ABCDEF"));
    ASSERT_TRUE(demand());
    EXPECT_EQ(next_digest(), "0123456789abcdef0123456789ABCDEF");
    ASSERT_TRUE(
        client.wait_for_status("Password needed for this Server", pairs::secondary, std::nullopt));
    ASSERT_TRUE(client.wait_for_status("Sending saved password from your configuration",
                                       pairs::secondary, std::nullopt));
    EXPECT_FALSE(client.terminal().shows(box_title));
    ASSERT_TRUE(connections[0].send(82, "x"));
    ASSERT_TRUE(client.wait_for_status("Password accepted. MessageAccess granted", pairs::success));
}

TEST_F(password, a_password_in_the_configuration_needs_the_switch)
{
    ASSERT_TRUE(begin({}, digest_of_abc));
    ASSERT_TRUE(demand());
    ASSERT_TRUE(box_is_open());
    EXPECT_FALSE(connections[0].has_unread_bytes());
}

TEST_F(password, a_typed_password_is_used_for_the_next_demand_if_passwords_are_saved)
{
    ASSERT_TRUE(begin({.save_passwords = true}));
    ASSERT_TRUE(demand());
    ASSERT_TRUE(box_is_open());
    client.terminal().send("abc\r");
    EXPECT_EQ(next_digest(), digest_of_abc);
    ASSERT_TRUE(demand());
    EXPECT_EQ(next_digest(), digest_of_abc);
    ASSERT_TRUE(client.wait_for_status("Sending saved password from your configuration",
                                       pairs::secondary, std::nullopt));
}

TEST_F(password, a_refused_password_is_forgotten_and_asked_for_again)
{
    ASSERT_TRUE(begin({.save_passwords = true, .save_on_exit = true}, "wrong"));
    ASSERT_TRUE(demand());
    EXPECT_EQ(next_digest(), "wrong");
    ASSERT_TRUE(connections[0].send(83, "x"));
    ASSERT_TRUE(
        client.wait_for_status("Your password doesnt match. MessageAccess denied", pairs::error));
    EXPECT_EQ(client.marker(1).text, "*") << "the server decides what comes of it";
    ASSERT_TRUE(demand());
    ASSERT_TRUE(box_is_open());
    client.terminal().send("abc\r");
    EXPECT_EQ(next_digest(), digest_of_abc);
    ASSERT_TRUE(connections[0].send(83, "x"));
    ASSERT_TRUE(wait_for_last_status(client, "Your password doesnt match. MessageAccess denied"));
    client.quit();
    EXPECT_EQ(client.home().read_config()->find("<Password></Password>"),
              client.home().read_config()->find("<Password>"));
}

TEST_F(password, is_saved_as_its_digest)
{
    client_settings settings = servers.settings();
    settings.save_passwords = true;
    settings.save_on_exit = true;
    ASSERT_NO_FATAL_FAILURE(answer_and_quit(settings));
    settings.servers[0].password = digest_of_abc;
    EXPECT_EQ(client.home().read_config(), config_text(settings));
}

TEST_F(password, is_not_saved_without_the_switch)
{
    client_settings settings = servers.settings();
    settings.save_on_exit = true;
    ASSERT_NO_FATAL_FAILURE(answer_and_quit(settings));
    EXPECT_EQ(client.home().read_config(), config_text(settings));
}

TEST_F(password, giving_none_keeps_the_saved_one_and_the_connection)
{
    for (const char* way : {"\033", "\r", "ab\x7F\x7F\r"}) {
        listed_servers own(1);
        client_session session;
        ASSERT_TRUE(session.start(own.settings()));
        std::optional<server_connection> connection = session.connect_selected(own[0]);
        ASSERT_TRUE(connection);
        ASSERT_TRUE(connection->send(capabilities_packet(need_password)));
        ASSERT_TRUE(session.terminal().wait_for_text(box_title));
        session.terminal().send(way);
        ASSERT_TRUE(session.terminal().wait_for_no_text(box_title));
        ASSERT_TRUE(wait_for_notice(session, *connection, "go on"));
        EXPECT_FALSE(connection->has_unread_bytes());
        EXPECT_EQ(session.marker(1).text, "*");
    }
}

TEST_F(password, a_server_that_vanishes_while_it_is_typed_does_no_harm)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(demand());
    ASSERT_TRUE(box_is_open());
    connections[0].reset();
    client.terminal().send("abc\r");
    ASSERT_TRUE(client.terminal().wait_for_no_text(box_title));
    ASSERT_TRUE(wait_for_notice(client, connections[1], "all is well"));
}

} // namespace
