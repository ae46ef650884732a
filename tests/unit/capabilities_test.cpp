// capabilities_test.cpp - what a server is and offers, and the password that it may demand.
#include "base/signal_door.hpp"
#include "net/capabilities.hpp"
#include "unit/net_fixture.hpp"

#include "base/md5.hpp"
#include "base/pause.hpp"
#include "ui/keys.hpp"

#include <csignal>
#include <unistd.h>

namespace
{

constexpr const char* abc_digest = "900150983cd24fb0d6963f7d28e17f72";
const status_line needed_line = {"Password needed for this Server", 11};
const status_line saved_line = {"Sending saved password from your configuration", 11};

std::string make_capability_xml(const std::string& elements)
{
    return "<?xml version=\"1.0\"?><tovrik><Server>" + elements + "</Server></tovrik>";
}

class capabilities : public net_test
{
protected:
    capabilities() : entry(add_server("host.example", "srv")), server(connect(entry)) {}

    void handle(const std::string& elements)
    {
        mark();
        handle_capabilities(entry, make_capability_xml(elements).c_str());
    }

    server_entry& entry;
    server_end server;
};

TEST_F(capabilities, records_every_element)
{
    handle("<Version>1.23</Version><ServerUUID>0a1b-2c</ServerUUID><CRCCheck>1</CRCCheck>"
           "<Mailing>1</Mailing><DBModify>1</DBModify><Reports>1</Reports><Pager>1</Pager>");
    EXPECT_STREQ(entry.server_version, "1.23");
    EXPECT_STREQ(entry.server_uuid, "0a1b-2c");
    EXPECT_EQ(entry.crc_check, 1);
    EXPECT_EQ(entry.can_mail, 1);
    EXPECT_EQ(entry.can_modify, 1);
    EXPECT_EQ(entry.can_report, 1);
    EXPECT_EQ(entry.can_page, 1);
    EXPECT_EQ(said(), (status_lines{{"ServerID: 0a1b-2c", 2}}));
    EXPECT_EQ(server.take_bytes(), "");
}

TEST_F(capabilities, withdraws_what_is_no_longer_offered)
{
    handle("<Version>1</Version><ServerUUID>id</ServerUUID><CRCCheck>1</CRCCheck>"
           "<Mailing>1</Mailing><ModifyFlags>1</ModifyFlags><Reports>1</Reports><Pager>1</Pager>");
    handle("");
    EXPECT_EQ(entry.server_version, nullptr);
    EXPECT_EQ(entry.server_uuid, nullptr);
    EXPECT_EQ(
        entry.crc_check + entry.can_mail + entry.can_modify + entry.can_report + entry.can_page, 0);
    EXPECT_EQ(said(), status_lines{});
}

TEST_F(capabilities, reads_flags_as_decimal_numbers)
{
    const struct {
        const char* value;
        int flag;
    } rows[] = {{"1", 1},  {"2", 1}, {"-1", 1}, {"256", 1}, {" 7", 1},   {"1x", 1}, {"0", 0},
                {"00", 0}, {"", 0},  {"x", 0},  {"yes", 0}, {"0x10", 0}, {"x1", 0}};
    for (const auto& row : rows) {
        const std::string value = row.value;
        handle("<Mailing>" + value + "</Mailing>");
        EXPECT_EQ(entry.can_mail, row.flag) << value;
        handle("<Reports>" + value + "</Reports>");
        EXPECT_EQ(entry.can_report, row.flag) << value;
        handle("<Pager>" + value + "</Pager>");
        EXPECT_EQ(entry.can_page, row.flag) << value;
        handle("<DBModify>" + value + "</DBModify>");
        EXPECT_EQ(entry.can_modify, row.flag) << value;
        handle("<ModifyFlags>" + value + "</ModifyFlags>");
        EXPECT_EQ(entry.can_modify, row.flag) << value;
    }
}

TEST_F(capabilities, allows_updates_by_either_of_two_elements)
{
    handle("<DBModify>0</DBModify><ModifyFlags>1</ModifyFlags>");
    EXPECT_EQ(entry.can_modify, 1);
    handle("<DBModify>1</DBModify><ModifyFlags>0</ModifyFlags>");
    EXPECT_EQ(entry.can_modify, 1);
    handle("<DBModify>0</DBModify><ModifyFlags>0</ModifyFlags>");
    EXPECT_EQ(entry.can_modify, 0);
}

TEST_F(capabilities, any_text_switches_crc_checking_on)
{
    handle("<CRCCheck>0</CRCCheck>");
    EXPECT_EQ(entry.crc_check, 1);
    handle("<CRCCheck></CRCCheck>");
    EXPECT_EQ(entry.crc_check, 0);
    handle("<CRCCheck>no</CRCCheck>");
    EXPECT_EQ(entry.crc_check, 1);
    handle("");
    EXPECT_EQ(entry.crc_check, 0);
}

TEST_F(capabilities, looks_elements_up_by_name_wherever_they_stand)
{
    handle_capabilities(entry, "<?xml?><a><b><Pager>1</Pager></b></a><Version>9</Version>");
    EXPECT_EQ(entry.can_page, 1);
    EXPECT_STREQ(entry.server_version, "9");
}

TEST_F(capabilities, are_empty_without_a_document)
{
    for (const char* text : {"", "nothing", "<Pager>1</Pager>", "<?xml?>", "<?xml?><Pager>"}) {
        entry.can_page = 1;
        handle_capabilities(entry, text);
        EXPECT_EQ(entry.can_page, 0) << text;
    }
    EXPECT_NE(entry.socket_fd, 0);
}

TEST_F(capabilities, ask_for_no_password_unless_one_is_needed)
{
    entry.Password = owned_text(abc_digest);
    app_state.setting_flags = SavePasswords;
    for (const char* element :
         {"", "<NeedAuth>0</NeedAuth>", "<NeedAuth></NeedAuth>", "<NeedAuth>yes</NeedAuth>"}) {
        handle(element);
        EXPECT_EQ(said(), status_lines{}) << element;
        EXPECT_EQ(server.take_bytes(), "") << element;
    }
}

TEST_F(capabilities, send_the_digest_of_the_typed_password)
{
    type_ahead("abc\n");
    handle("<NeedAuth>1</NeedAuth>");
    EXPECT_EQ(said(), (status_lines{needed_line}));
    EXPECT_EQ(server.take_bytes(), wire_bytes({81, abc_digest}));
    EXPECT_STREQ(entry.Password, abc_digest);
}

TEST_F(capabilities, send_nothing_when_the_prompt_is_cancelled_or_left_empty)
{
    for (const char* keys : {"abc\x1b", "\n", "a\x07\x1b"}) {
        type_ahead(keys);
        handle("<NeedAuth>1</NeedAuth>");
        EXPECT_EQ(said(), (status_lines{needed_line}));
        EXPECT_EQ(server.take_bytes(), "");
        EXPECT_EQ(entry.Password, nullptr);
        EXPECT_NE(entry.socket_fd, 0);
        while (key_read(app_state.server_pane) != ERR)
            continue;
    }
}

TEST_F(capabilities, keep_an_earlier_password_when_the_prompt_is_cancelled)
{
    entry.Password = owned_text(abc_digest);
    type_ahead("\x1b");
    handle("<NeedAuth>1</NeedAuth>");
    EXPECT_STREQ(entry.Password, abc_digest);
}

TEST_F(capabilities, replace_an_earlier_password_by_the_typed_one)
{
    entry.Password = owned_text("an older digest");
    type_ahead("abc\n");
    handle("<NeedAuth>1</NeedAuth>");
    EXPECT_STREQ(entry.Password, abc_digest);
}

TEST_F(capabilities, take_39_characters_of_a_password)
{
    type_ahead(std::string(45, 'a') + "\n");
    handle("<NeedAuth>1</NeedAuth>");
    char digest[33];
    md5_hex(std::string(39, 'a'), digest);
    EXPECT_EQ(server.take_packets(), (wire_packets{{81, digest}}));
}

TEST_F(capabilities, send_a_saved_password_as_it_is)
{
    entry.Password = owned_text("whatever the file says");
    app_state.setting_flags = SavePasswords;
    handle("<NeedAuth>1</NeedAuth>");
    EXPECT_EQ(said(), (status_lines{needed_line, saved_line}));
    EXPECT_EQ(server.take_packets(), (wire_packets{{81, "whatever the file says"}}));
}

TEST_F(capabilities, ask_although_a_password_is_kept_while_saving_is_off)
{
    entry.Password = owned_text("kept");
    type_ahead("abc\n");
    handle("<NeedAuth>1</NeedAuth>");
    EXPECT_EQ(said(), (status_lines{needed_line}));
    EXPECT_EQ(server.take_packets(), (wire_packets{{81, abc_digest}}));
}

TEST_F(capabilities, ask_again_after_a_refusal)
{
    app_state.setting_flags = SavePasswords;
    entry.Password = owned_text("refused");
    const wire_packet demand = {41, make_capability_xml("<NeedAuth>1</NeedAuth>")};
    server.send(demand);
    server.send({83, "x"});
    server.send(demand);
    poll_all();
    poll_all();
    type_ahead("abc\n");
    poll_all();
    EXPECT_EQ(server.take_packets(), (wire_packets{{81, "refused"}, {81, abc_digest}}));
}

std::vector<std::string> seen_rows;

/// Looks at the screen while the prompt waits, then answers it.
void look_and_answer(int)
{
    for (int row = 0; row < LINES; ++row) {
        std::string text;
        for (int column = 0; column < COLS; ++column)
            text += static_cast<char>(mvwinch(newscr, row, column) & A_CHARTEXT);
        seen_rows.push_back(text);
    }
    type_ahead("\n");
}

TEST_F(capabilities, ask_in_a_box_on_top_of_everything)
{
    seen_rows.clear();
    signal_install(SIGALRM, look_and_answer);
    raise(SIGALRM);
    handle("<NeedAuth>1</NeedAuth>");
    ASSERT_EQ(seen_rows.size(), static_cast<std::size_t>(LINES));
    EXPECT_NE(seen_rows[8].find("[ Password required ]"), std::string::npos);
    EXPECT_NE(seen_rows[10].find("[ RET=OK - ESC=CANCEL ]"), std::string::npos);
}

class duplicate : public capabilities
{
protected:
    duplicate() : other(add_server("other.example")), other_end(connect(other))
    {
        other.server_uuid = owned_text("same");
        server = reconnected();
    }

    server_end reconnected() const
    {
        close(entry.socket_fd);
        return connect(entry);
    }

    server_entry& other;
    server_end other_end;
};

TEST_F(duplicate, a_second_connection_to_the_same_server_is_closed)
{
    handle("<Version>2</Version><ServerUUID>same</ServerUUID>");
    EXPECT_EQ(said(), (status_lines{{"ServerID: same", 2},
                                    {"You are already connected to this server!", 5}}));
    EXPECT_EQ(beeps(), 1U);
    EXPECT_EQ(server.take_bytes(), wire_bytes({2, "Good Bye"}));
    EXPECT_TRUE(server.is_ended());
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(marker_of(entry), ' ');
    EXPECT_TRUE(is_wintouched(app_state.status_pane));
    // The earlier connection continues.
    EXPECT_NE(other.socket_fd, 0);
    EXPECT_EQ(marker_of(other), '*');
    EXPECT_EQ(other_end.take_bytes(), "");
    EXPECT_FALSE(other_end.is_ended());
}

TEST_F(duplicate, a_closed_connection_leaves_its_identity_its_flags_and_its_log)
{
    entry.log_file = std::tmpfile();
    handle("<Version>2</Version><ServerUUID>same</ServerUUID><Pager>1</Pager>");
    EXPECT_STREQ(entry.server_uuid, "same");
    EXPECT_STREQ(entry.server_version, "2");
    EXPECT_EQ(entry.connected, 1);
    EXPECT_EQ(entry.can_page, 1);
    EXPECT_NE(entry.log_file, nullptr);
    // What is left does not count as a connection when the other server reports again.
    handle_capabilities(other, make_capability_xml("<ServerUUID>same</ServerUUID>").c_str());
    EXPECT_NE(other.socket_fd, 0);
}

TEST_F(duplicate, a_connection_is_closed_for_one_that_is_pending_again)
{
    // What an earlier connection reported is still there.
    other.connected = 0;
    handle("<ServerUUID>same</ServerUUID>");
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_NE(other.socket_fd, 0);
}

TEST_F(duplicate, ends_within_the_cycle_that_finds_it)
{
    server.send({41, make_capability_xml("<ServerUUID>same</ServerUUID>")});
    server.send({103, "never read"});
    poll_all();
    poll_all();
    EXPECT_EQ(entry.socket_fd, 0);
    EXPECT_EQ(entry.rx_packet, nullptr);
    EXPECT_EQ(said().back().text, "You are already connected to this server!");
}

TEST_F(duplicate, is_recognised_by_the_exact_identity)
{
    for (const char* uuid : {"Same", "sam", "same2", " same"}) {
        handle(std::string{"<ServerUUID>"} + uuid + "</ServerUUID>");
        EXPECT_NE(entry.socket_fd, 0) << uuid;
    }
    handle("");
    EXPECT_NE(entry.socket_fd, 0);
    EXPECT_EQ(server.take_bytes(), "");
}

TEST_F(duplicate, needs_another_connection_in_another_row)
{
    const std::string same = "<ServerUUID>same</ServerUUID>";
    const std::int32_t row = entry.list_row;
    // Entries are distinguished by their rows alone.
    entry.list_row = other.list_row;
    handle(same);
    EXPECT_NE(entry.socket_fd, 0);
    entry.list_row = row;
    close(other.socket_fd);
    other.socket_fd = 0;
    handle(same);
    EXPECT_NE(entry.socket_fd, 0);
    EXPECT_EQ(server.take_bytes(), "");
}

TEST_F(duplicate, is_found_after_the_password_was_asked_for)
{
    type_ahead("abc\n");
    handle("<ServerUUID>same</ServerUUID><NeedAuth>1</NeedAuth>");
    EXPECT_EQ(server.take_packets(), (wire_packets{{81, abc_digest}, {2, "Good Bye"}}));
}

} // namespace
