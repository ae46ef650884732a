// config_load_test.cpp - what is read from a configuration file: correct, wrong or missing.
#include "unit/config_fixture.hpp"

#include "data/text.hpp"

#include <string>
#include <vector>

namespace
{

const std::string header = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                           "<clientconf version=\"1.02\">\n";
const std::string trailer = "</clientconf>\n";

std::string make_config(const std::string& elements)
{
    return header + elements + trailer;
}

std::string wrap(const std::string& number, const std::string& elements)
{
    return "<Server" + number + ">\n" + elements + "</Server" + number + ">\n";
}

std::string define(const std::string& number, const std::string& name, const std::string& port)
{
    return wrap(number,
                "<ServerName>" + name + "</ServerName><ServerPort>" + port + "</ServerPort>");
}

std::vector<std::string> list_servers()
{
    std::vector<std::string> all;
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        const server_entry* entry = server_at(app_state.servers, index);
        all.push_back(std::string(entry->ServerName) + ":" + std::to_string(entry->ServerPort));
    }
    return all;
}

using names = std::vector<std::string>;

class config_loading : public config_test
{
};

TEST_F(config_loading, sorts_the_servers)
{
    load(make_config(define("1", "b.example", "2202") + define("2", "a.example", "2202") +
                     define("3", "c.example", "2203") + define("4", "c.example", "2202")));
    EXPECT_EQ(list_servers(),
              (names{"c.example:2202", "c.example:2203", "b.example:2202", "a.example:2202"}));
}

TEST_F(config_loading, takes_every_field_of_a_server)
{
    load(make_config(wrap("1", "<ServerName>host.example</ServerName>\n"
                               "<ServerPort>4000</ServerPort>\n"
                               "<ServerAlias>Z\xFCrich & co.</ServerAlias>\n"
                               "<Location>&lt;here></Location>\n"
                               "<Info> two\nlines </Info>\n"
                               "<Password>900150983cd24fb0d6963f7d28e17f72</Password>\n"
                               "<SubCode>42</SubCode>\n"
                               "<UseEMail>someone@example</UseEMail>\n")));
    ASSERT_EQ(app_state.servers->count, 1);
    const server_entry* entry = server_at(app_state.servers, 0);
    EXPECT_STREQ(entry->ServerName, "host.example");
    EXPECT_EQ(entry->ServerPort, 4000);
    EXPECT_STREQ(entry->ServerAlias, "Z\xFCrich & co.");
    EXPECT_STREQ(entry->Location, "&lt;here");
    EXPECT_STREQ(entry->Info, " two\nlines ");
    EXPECT_STREQ(entry->Password, "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_STREQ(entry->SubCode, "42");
    EXPECT_STREQ(entry->UseEMail, "someone@example");
    EXPECT_EQ(entry->server_uuid, nullptr);
    EXPECT_EQ(entry->server_version, nullptr);
    EXPECT_EQ(entry->socket_fd, 0);
    EXPECT_EQ(entry->log_file, nullptr);
    EXPECT_EQ(entry->rx_packet, nullptr);
}

TEST_F(config_loading, leaves_absent_and_empty_fields_unset)
{
    load(make_config(wrap("1", "<ServerName>empty</ServerName><ServerPort></ServerPort>"
                               "<ServerAlias></ServerAlias><Location></Location><Info></Info>"
                               "<Password></Password><SubCode></SubCode><UseEMail></UseEMail>") +
                     wrap("2", "<ServerName>absent</ServerName>")));
    ASSERT_EQ(app_state.servers->count, 2);
    for (std::int32_t index = 0; index < 2; ++index) {
        const server_entry* entry = server_at(app_state.servers, index);
        EXPECT_EQ(entry->ServerPort, 2202);
        for (const char* text : {entry->ServerAlias, entry->Location, entry->Info, entry->Password,
                                 entry->SubCode, entry->UseEMail})
            EXPECT_EQ(text, nullptr) << entry->ServerName;
    }
}

TEST_F(config_loading, reads_ports_as_leading_digits)
{
    load(make_config(define("1", "i", "x") + define("2", "h", "22ab") + define("3", "g", " 7") +
                     define("4", "f", "-5") + define("5", "e", "0x10")));
    EXPECT_EQ(list_servers(), (names{"i:0", "h:22", "g:7", "f:-5", "e:0"}));
}

TEST_F(config_loading, keeps_the_first_of_two_equal_servers)
{
    load(make_config(
        wrap("1", "<ServerName>a</ServerName><Info>first</Info>") +
        wrap("2", "<ServerName>a</ServerName><ServerPort>2202</ServerPort><Info>second</Info>")));
    ASSERT_EQ(app_state.servers->count, 1);
    EXPECT_STREQ(server_at(app_state.servers, 0)->Info, "first");
}

TEST_F(config_loading, keeps_the_servers_known_before)
{
    auto* known = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    known->ServerName = str_dup("a");
    known->ServerPort = 1;
    ASSERT_EQ(server_add(app_state.servers, known), -1);
    load(make_config(define("1", "a", "1") + define("2", "b", "1")));
    EXPECT_EQ(list_servers(), (names{"b:1", "a:1"}));
    EXPECT_EQ(server_at(app_state.servers, 1), known);
}

TEST_F(config_loading, reads_elements_named_server_and_a_digit_as_servers)
{
    load(make_config(define("12", "twelve", "1") + define("3x", "three", "1") +
                     define("0", "nought", "1") + define("", "none", "1") +
                     define("A", "letter", "1") + define("x1", "late", "1") +
                     "<server4><ServerName>small</ServerName></server4>\n"));
    EXPECT_EQ(list_servers(), (names{"twelve:1", "three:1", "nought:1"}));
}

TEST_F(config_loading, looks_for_a_blocks_elements_by_its_name_alone)
{
    load(make_config(define("1", "first", "1") + define("1", "hidden", "2") +
                     define("2$", "dollar", "3")));
    EXPECT_EQ(list_servers(), (names{"first:1", "dollar:3"}));
}

TEST_F(config_loading, drops_servers_without_a_name)
{
    load(make_config(wrap("1", "<ServerPort>1</ServerPort>") + define("2", "", "2") +
                     define("3", "named", "3")));
    EXPECT_EQ(list_servers(), names{"named:3"});
}

TEST_F(config_loading, finds_servers_below_the_root_element_only)
{
    load("<?xml?>\n<other>" + define("1", "a", "1") + "</other>");
    EXPECT_EQ(app_state.servers->count, 0);
}

TEST_F(config_loading, reads_a_thousand_servers)
{
    std::string blocks;
    for (int number = 1; number <= 1000; ++number)
        blocks += define(std::to_string(number), "host", std::to_string(number));
    load(make_config(blocks));
    ASSERT_EQ(app_state.servers->count, 1000);
    EXPECT_EQ(server_at(app_state.servers, 999)->ServerPort, 1000);
}

TEST_F(config_loading, sets_each_switch_and_draws_its_mark)
{
    const struct {
        const char* key;
        std::uint32_t bit;
        int row;
    } rows[] = {{"ACARSLog", 0x01, 2},      {"ContactInfo", 0x02, 4}, {"SavePasswords", 0x08, 5},
                {"FlightStats", 0x10, 6},   {"SaveToOne", 0x20, 7},   {"NoUplinks", 0x40, 9},
                {"FetchOnStart", 0x80, 10}, {"SaveOnExit", 0x04, 11}};
    for (const auto& row : rows) {
        app_state.setting_flags = 0;
        load(make_config("<" + std::string(row.key) + ">1</" + row.key + ">"));
        EXPECT_EQ(app_state.setting_flags, row.bit) << row.key;
        for (const auto& other : rows) {
            const chtype cell = mvwinch(app_state.settings_win, other.row, 3);
            const auto expected = other.row == row.row ? chtype{'X'} : chtype{' '};
            EXPECT_EQ(cell & A_CHARTEXT, expected) << row.key << " on row " << other.row;
        }
        EXPECT_EQ(screen.pair_at(app_state.settings_win, row.row, 3), 7);
        EXPECT_TRUE(screen.is_bold_at(app_state.settings_win, row.row, 3));
    }
}

TEST_F(config_loading, sets_switches_by_any_number_but_0_and_clears_none)
{
    const struct {
        const char* value;
        std::uint32_t before;
        std::uint32_t after;
    } rows[] = {{"1", 0, 1},   {"2", 0, 1}, {"-1", 0, 1}, {"01", 0, 1}, {"0", 0, 0}, {"x", 0, 0},
                {"0x1", 0, 0}, {"", 0, 0},  {"0", 1, 1},  {"", 1, 1},   {"1", 8, 9}, {" 7 ", 0, 1}};
    for (const auto& row : rows) {
        app_state.setting_flags = row.before;
        load(make_config("<ACARSLog>" + std::string(row.value) + "</ACARSLog>"));
        EXPECT_EQ(app_state.setting_flags, row.after) << row.value << " on " << row.before;
    }
}

TEST_F(config_loading, draws_a_mark_for_a_switch_that_was_on_before)
{
    app_state.setting_flags = ContactInfo;
    load(make_config("<ContactInfo>0</ContactInfo>"));
    EXPECT_EQ(mvwinch(app_state.settings_win, 4, 3) & A_CHARTEXT, static_cast<chtype>('X'));
}

TEST_F(config_loading, reads_only_switches_of_the_settings_page)
{
    app_state.checkbox_rows[0] = -1;
    app_state.checkbox_rows[2] = 0;
    load(make_config("<ACARSLog>1</ACARSLog><ContactInfo>1</ContactInfo>"
                     "<FlightStats>1</FlightStats>"));
    EXPECT_EQ(app_state.setting_flags, FlightStats);
}

TEST_F(config_loading, blanks_the_place_of_the_mark_on_a_drawn_line_without_a_switch)
{
    app_state.checkbox_rows[1] = 3;
    app_state.setting_flags = 0xFFFFFFFF;
    mvwaddch(app_state.settings_win, 3, 3, 'X');
    load(make_config("<*>1</*>"));
    EXPECT_EQ(mvwinch(app_state.settings_win, 3, 3) & A_CHARTEXT, static_cast<chtype>(' '));
}

TEST_F(config_loading, takes_and_shows_the_folders)
{
    load(make_config("<LogFilePath>/var/log/acars</LogFilePath>"
                     "<ReportPath>~/reports/</ReportPath>"));
    EXPECT_STREQ(app_state.setting_texts[0], "/var/log/acars");
    EXPECT_STREQ(app_state.setting_texts[1], "~/reports/");
    EXPECT_EQ(screen.row_text(app_state.settings_win, 15), " Folder for Logfiles: /var/log/acars");
    EXPECT_EQ(screen.row_text(app_state.settings_win, 16), " Folder for Reports: ~/reports/");
    EXPECT_EQ(screen.pair_at(app_state.settings_win, 15, 23), 2);
    EXPECT_TRUE(screen.is_bold_at(app_state.settings_win, 15, 23));
    EXPECT_FALSE(screen.is_bold_at(app_state.settings_win, 15, 21));
}

TEST_F(config_loading, does_not_free_the_folder_that_was_set_before)
{
    const heap_text before(str_dup("before"));
    app_state.setting_texts[LogFilePath] = before.get();
    load(make_config("<LogFilePath>after</LogFilePath>"));
    EXPECT_STREQ(app_state.setting_texts[LogFilePath], "after");
    EXPECT_STREQ(before.get(), "before");
}

TEST_F(config_loading, leaves_unset_folders_unset)
{
    load(make_config("<LogFilePath></LogFilePath>"));
    EXPECT_EQ(app_state.setting_texts[0], nullptr);
    EXPECT_EQ(app_state.setting_texts[1], nullptr);
}

TEST_F(config_loading, says_what_it_loads_and_returns_to_its_folder)
{
    load(make_config(""));
    // The newest line begins inside the frame; a long home folder continues beyond the pane.
    EXPECT_EQ(screen.status_text().substr(0, 28), "Loading private serverlist '");
    EXPECT_EQ(screen.pair_at(app_state.status_pane, 4, 1), 7);
    EXPECT_TRUE(screen.is_bold_at(app_state.status_pane, 4, 1));
    EXPECT_TRUE(is_in(elsewhere));
}

TEST_F(config_loading, says_that_there_is_no_file_and_changes_nothing)
{
    setenv("HOME", "/proc", 1);
    elsewhere.write_config(make_config(define("1", "a", "1") + "<ACARSLog>1</ACARSLog>"));
    app_state.setting_flags = ContactInfo;
    config_load();
    EXPECT_EQ(screen.status_text(), "No configuration found in '/proc'");
    EXPECT_EQ(screen.pair_at(app_state.status_pane, 4, 1), 5);
    EXPECT_EQ(app_state.servers->count, 0);
    EXPECT_EQ(app_state.setting_flags, ContactInfo);
    EXPECT_EQ(app_state.setting_texts[0], nullptr);
    EXPECT_TRUE(is_in(elsewhere));
}

TEST_F(config_loading, uses_no_other_folder_when_home_cannot_be_entered)
{
    elsewhere.write_config(make_config(define("1", "a", "1")));
    for (const char* nowhere : {"/nowhere/at/all", "/dev/null", ""}) {
        setenv("HOME", nowhere, 1);
        config_load();
        EXPECT_EQ(screen.status_text(), "No configuration found in '" + std::string(nowhere) + "'");
        EXPECT_EQ(app_state.servers->count, 0);
        EXPECT_TRUE(is_in(elsewhere));
    }
}

TEST_F(config_loading, uses_the_current_folder_without_home)
{
    unsetenv("HOME");
    config_load();
    EXPECT_EQ(screen.status_text(), "No configuration found in ''");
    elsewhere.write_config(make_config(define("1", "a", "1")));
    config_load();
    EXPECT_EQ(screen.status_text(), "Loading private serverlist '/ncursesclient.conf'");
    EXPECT_EQ(list_servers(), names{"a:1"});
    EXPECT_TRUE(is_in(elsewhere));
}

TEST_F(config_loading, finds_nothing_in_a_file_without_a_declaration)
{
    load("<clientconf version=\"1.02\">\n<ACARSLog>1</ACARSLog>\n" + define("1", "a", "1") +
         trailer);
    EXPECT_EQ(app_state.servers->count, 0);
    EXPECT_EQ(app_state.setting_flags, 0U);
}

TEST_F(config_loading, survives_what_is_no_configuration)
{
    const std::string texts[] = {"",
                                 "?>",
                                 "<",
                                 "?><",
                                 "?></>",
                                 "?><clientconf>",
                                 std::string("?>\0<clientconf>", 15),
                                 std::string(100'000, '<'),
                                 "?>" + std::string(100'000, '>'),
                                 "?><clientconf><Server1><ServerName>"};
    for (const std::string& text : texts) {
        load(text);
        EXPECT_EQ(app_state.servers->count, 0);
        EXPECT_EQ(app_state.setting_flags, 0U);
        EXPECT_EQ(screen.status_text().substr(0, 28), "Loading private serverlist '");
    }
}

TEST_F(config_loading, reads_what_precedes_a_break)
{
    load(header + "<FlightStats>1</FlightStats>" + define("1", "a", "1") +
         "<Server2><ServerName>b</Serv");
    EXPECT_EQ(list_servers(), (names{"b:2202", "a:1"}));
    EXPECT_EQ(app_state.setting_flags, FlightStats);
}

TEST_F(config_loading, shows_its_values_on_a_page_that_is_in_front)
{
    constexpr int statistics_row = 6;
    constexpr int mark_column = 3;
    const auto shown = [] {
        return static_cast<char>(mvwinch(curscr, statistics_row, mark_column) & A_CHARTEXT);
    };
    const std::string text = make_config("<FlightStats>1</FlightStats>");
    load(text);
    EXPECT_EQ(shown(), ' ');
    app_state.settings_shown = 1;
    load(text);
    EXPECT_EQ(shown(), 'X');
}

} // namespace
