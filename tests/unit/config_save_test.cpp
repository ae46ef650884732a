// config_save_test.cpp - the file byte for byte, where it is written, and where not.
#include "unit/config_fixture.hpp"
#include "unit/unprivileged.hpp"

#include "data/text.hpp"
#include "data/xml.hpp"
#include "support/config_text.hpp"

#include <filesystem>
#include <malloc.h>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace
{

server_entry* add_server(const char* name, std::int32_t port)
{
    auto* entry = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    entry->ServerName = str_dup(name);
    entry->ServerPort = port;
    EXPECT_EQ(server_add(app_state.servers, entry), -1);
    return entry;
}

constexpr std::size_t limit = 64UL * 1024 * 1024; // of a file that can be read

class config_saving : public config_test
{
};

TEST_F(config_saving, writes_defaults_exactly)
{
    save();
    EXPECT_EQ(home.read_config(), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                                  "<clientconf version=\"1.02\">\n"
                                  "    <ACARSLog>0</ACARSLog>\n"
                                  "    <ContactInfo>0</ContactInfo>\n"
                                  "    <SavePasswords>0</SavePasswords>\n"
                                  "    <FlightStats>0</FlightStats>\n"
                                  "    <SaveToOne>0</SaveToOne>\n"
                                  "    <NoUplinks>0</NoUplinks>\n"
                                  "    <FetchOnStart>0</FetchOnStart>\n"
                                  "    <SaveOnExit>0</SaveOnExit>\n"
                                  "    <LogFilePath>./</LogFilePath>\n"
                                  "    <ReportPath>./</ReportPath>\n"
                                  "</clientconf>\n");
}

TEST_F(config_saving, writes_servers_and_settings_exactly)
{
    server_entry* full = add_server("b.example", 4000);
    full->ServerAlias = str_dup("Z\xFCrich & \"co\"");
    full->Location = str_dup("here");
    full->Info = str_dup("100% %s");
    full->Password = str_dup("900150983cd24fb0d6963f7d28e17f72");
    full->SubCode = str_dup("42");
    full->UseEMail = str_dup("someone@example");
    add_server("a.example", 0);
    app_state.setting_flags = SavePasswords | SaveOnExit | NoUplinks;
    app_state.setting_texts[LogFilePath] = str_dup("/var/log");
    save();
    EXPECT_EQ(home.read_config(), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                                  "<clientconf version=\"1.02\">\n"
                                  "    <ACARSLog>0</ACARSLog>\n"
                                  "    <ContactInfo>0</ContactInfo>\n"
                                  "    <SavePasswords>1</SavePasswords>\n"
                                  "    <FlightStats>0</FlightStats>\n"
                                  "    <SaveToOne>0</SaveToOne>\n"
                                  "    <NoUplinks>1</NoUplinks>\n"
                                  "    <FetchOnStart>0</FetchOnStart>\n"
                                  "    <SaveOnExit>1</SaveOnExit>\n"
                                  "    <LogFilePath>/var/log</LogFilePath>\n"
                                  "    <ReportPath>./</ReportPath>\n"
                                  "    <Server1>\n"
                                  "        <ServerName>b.example</ServerName>\n"
                                  "        <ServerPort>4000</ServerPort>\n"
                                  "        <ServerAlias>Z\xFCrich & \"co\"</ServerAlias>\n"
                                  "        <Location>here</Location>\n"
                                  "        <Info>100% %s</Info>\n"
                                  "        <Password>900150983cd24fb0d6963f7d28e17f72</Password>\n"
                                  "        <SubCode>42</SubCode>\n"
                                  "        <UseEMail>someone@example</UseEMail>\n"
                                  "    </Server1>\n"
                                  "    <Server2>\n"
                                  "        <ServerName>a.example</ServerName>\n"
                                  "        <ServerPort>2202</ServerPort>\n"
                                  "        <ServerAlias></ServerAlias>\n"
                                  "        <Location></Location>\n"
                                  "        <Info></Info>\n"
                                  "        <Password></Password>\n"
                                  "        <SubCode></SubCode>\n"
                                  "        <UseEMail></UseEMail>\n"
                                  "    </Server2>\n"
                                  "</clientconf>\n");
}

TEST_F(config_saving, writes_each_switch_from_its_bit)
{
    const struct {
        std::uint32_t bit;
        bool client_settings::*element;
    } rows[] = {{0x01, &client_settings::acars_log},    {0x02, &client_settings::contact_info},
                {0x04, &client_settings::save_on_exit}, {0x08, &client_settings::save_passwords},
                {0x10, &client_settings::flight_stats}, {0x20, &client_settings::save_to_one},
                {0x40, &client_settings::no_uplinks},   {0x80, &client_settings::fetch_on_start}};
    for (const auto& row : rows) {
        app_state.setting_flags = row.bit;
        save();
        client_settings expected;
        expected.*row.element = true;
        EXPECT_EQ(home.read_config(), config_text(expected)) << row.bit;
    }
}

TEST_F(config_saving, drops_passwords_that_are_not_to_be_saved)
{
    add_server("a.example", 2202)->Password = str_dup("900150983cd24fb0d6963f7d28e17f72");
    save();
    client_settings expected;
    expected.servers = {{.name = "a.example"}};
    EXPECT_EQ(home.read_config(), config_text(expected));
}

TEST_F(config_saving, writes_the_servers_in_their_order_and_renumbers_them)
{
    client_settings unsorted;
    unsorted.servers = {{.name = "b.example"},
                        {.name = "a.example", .port = "x"},
                        {.name = "c.example", .port = "2203"},
                        {.name = "c.example"}};
    load(config_text(unsorted));
    save();
    client_settings sorted;
    sorted.servers = {{.name = "c.example"},
                      {.name = "c.example", .port = "2203"},
                      {.name = "b.example"},
                      {.name = "a.example", .port = "2202"}};
    EXPECT_EQ(home.read_config(), config_text(sorted));
}

TEST_F(config_saving, writes_what_it_loaded_byte_for_byte)
{
    client_settings settings;
    settings.acars_log = settings.save_passwords = settings.flight_stats = true;
    settings.save_on_exit = true;
    settings.log_folder = "/tmp/logs";
    settings.report_folder = "reports";
    settings.servers = {{.name = "b.example",
                         .port = "4000",
                         .alias = "\xC4 & \xFF",
                         .location = " l ",
                         .info = "&amp;",
                         .password = "0cc175b9c0f1b6a831c399e269772661",
                         .subcode = "7",
                         .email = "someone@example"},
                        {.name = "a.example"}};
    load(config_text(settings));
    save();
    EXPECT_EQ(home.read_config(), config_text(settings));
}

TEST_F(config_saving, stays_in_the_home_folder)
{
    save();
    EXPECT_TRUE(is_in(home));
    EXPECT_FALSE(elsewhere.read_config());
}

TEST_F(config_saving, uses_the_current_folder_without_home)
{
    unsetenv("HOME");
    save();
    EXPECT_EQ(elsewhere.read_config(), config_text({}));
    EXPECT_FALSE(home.read_config());
}

TEST_F(config_saving, writes_nowhere_when_home_cannot_be_entered)
{
    for (const char* nowhere : {"/nowhere/at/all", "/dev/null", ""}) {
        setenv("HOME", nowhere, 1);
        save();
        EXPECT_TRUE(elsewhere.files().empty()) << nowhere;
        EXPECT_TRUE(home.files().empty()) << nowhere;
    }
}

TEST_F(config_saving, replaces_what_was_no_configuration)
{
    for (const std::string text : {"", "garbage", "?><a", "\x01\xFF"}) {
        home.write_config(text);
        save();
        EXPECT_EQ(home.read_config(), config_text({}));
    }
}

TEST_F(config_saving, parses_the_former_file_and_keeps_its_document)
{
    if (!CLIENT_IS_HARDENED)
        GTEST_SKIP() << "the sanitizers have allocators of their own";
    constexpr std::size_t elements = 100'000;
    std::string former = "?>";
    for (std::size_t count = 0; count < elements; ++count)
        former += "<a>";
    home.write_config(former);
    const std::size_t before = mallinfo2().uordblks;
    save();
    EXPECT_GT(mallinfo2().uordblks, before + elements * sizeof(xml_node));
}

TEST_F(config_saving, leaves_a_file_alone_that_was_too_large_to_load)
{
    constexpr off_t too_large = limit + 1;
    const std::string path = home.path_of("ncursesclient.conf");
    home.write_config("kept");
    ASSERT_EQ(truncate(path.c_str(), too_large), 0);
    save();
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_size, too_large);
}

TEST_F(config_saving, writes_no_file_that_the_next_start_would_refuse)
{
    home.write_config("kept");
    server_entry* server = add_server("a.example", 2202);
    client_settings expected;
    expected.servers = {{.name = "a.example"}};
    const std::size_t room = limit - config_text(expected).size();
    server->Info = str_dup(std::string(room + 1, 'i').c_str());
    save();
    EXPECT_EQ(home.read_config(), "kept");
    server->Info[room] = '\0';
    save();
    EXPECT_EQ(std::filesystem::file_size(home.path_of("ncursesclient.conf")), limit);
}

TEST_F(config_saving, writes_long_lists)
{
    constexpr int count = 30'000; // about 20 MB
    const std::string info(400, 'i');
    // In the order of the list, so that each one is added at the end.
    for (int number = 100'000 + count; number > 100'000; --number)
        add_server(("n" + std::to_string(number)).c_str(), 2202)->Info = str_dup(info.c_str());
    save();
    collection_destroy(app_state.servers);
    app_state.servers = server_collection_new();
    config_load();
    ASSERT_EQ(app_state.servers->count, count);
    EXPECT_STREQ(server_at(app_state.servers, count - 1)->ServerName, "n100001");
}

TEST_F(config_saving, keeps_mode_and_link_and_makes_new_files_private)
{
    const auto mode_of = [this](const char* name) {
        struct stat status = {};
        EXPECT_EQ(stat(home.path_of(name).c_str(), &status), 0);
        return status.st_mode & 07777;
    };
    save();
    EXPECT_EQ(mode_of("ncursesclient.conf"), 0600U);
    ASSERT_EQ(rename(home.path_of("ncursesclient.conf").c_str(), home.path_of("real").c_str()), 0);
    ASSERT_EQ(chmod(home.path_of("real").c_str(), 0644), 0);
    ASSERT_EQ(symlink("real", home.path_of("ncursesclient.conf").c_str()), 0);
    app_state.setting_flags = ACARSLog;
    save();
    client_settings expected;
    expected.acars_log = true;
    EXPECT_EQ(home.read_file("real"), config_text(expected));
    EXPECT_EQ(mode_of("real"), 0644U);
    EXPECT_TRUE(std::filesystem::is_symlink(home.path_of("ncursesclient.conf")));
    EXPECT_EQ(home.files(), (std::vector<std::string>{"ncursesclient.conf", "real"}));
}

TEST_F(config_saving, lets_only_the_owner_read_passwords)
{
    const std::string path = home.path_of("ncursesclient.conf");
    const auto saved_mode = [&](mode_t mode) {
        EXPECT_EQ(chmod(path.c_str(), mode), 0);
        save();
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 07777;
    };
    save();
    server_entry* server = add_server("a.example", 2202);
    app_state.setting_flags = SavePasswords;
    EXPECT_EQ(saved_mode(0644), 0644U) << "there is no password yet";
    server->Password = str_dup("0123456789abcdef0123456789abcdef");
    for (const mode_t mode : {0644U, 0666U, 0640U, 0604U})
        EXPECT_EQ(saved_mode(mode), 0600U) << mode;
    app_state.setting_flags = 0;
    EXPECT_EQ(saved_mode(0644), 0644U) << "the password is not written";
}

TEST_F(config_saving, writes_blanks_for_what_would_be_read_as_markup)
{
    server_entry* server = add_server("a<b>.example", 2202);
    server->ServerAlias = str_dup("</clientconf>");
    server->Info = str_dup("nice</Info></Server1><Server2><ServerName>127.0.0.66</ServerName>");
    server->UseEMail = str_dup("<me>");
    app_state.setting_texts[ReportPath] = str_dup("<Server3>");
    save();
    client_settings expected;
    expected.report_folder = " Server3 ";
    expected.servers = {
        {.name = "a b .example",
         .alias = " /clientconf ",
         .info = "nice /Info  /Server1  Server2  ServerName 127.0.0.66 /ServerName ",
         .email = " me "}};
    EXPECT_EQ(home.read_config(), config_text(expected));
}

TEST_F(config_saving, says_nothing_about_a_file_that_may_not_be_written)
{
    home.write_config("kept");
    ASSERT_EQ(chmod(home.path_of("ncursesclient.conf").c_str(), 0400), 0);
    ASSERT_TRUE(give_to_nobody(home.path().c_str()));
    ASSERT_TRUE(give_to_nobody(home.path_of("ncursesclient.conf").c_str()));
    ASSERT_TRUE(give_to_nobody(elsewhere.path().c_str()));
    EXPECT_TRUE(unprivileged([this] {
        config_save();
        return screen.status_text().empty();
    }));
    EXPECT_EQ(home.read_config(), "kept");
}

} // namespace
