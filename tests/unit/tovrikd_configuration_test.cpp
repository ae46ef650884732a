// tovrikd_configuration_test.cpp - what tovrikd makes of its configuration.
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/configuration_read.hpp"
#include "support/temp_home.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace
{

using tovrik::configuration;
using tovrik::configuration_read;
using tovrik::configuration_read_text;
using texts = std::vector<std::string>;

/// What is good about a configuration in few words, since mailing needs a sender.
const std::string no_mailing = "services.mailing = false\n";

/// A configuration that is good.
configuration good(const std::string& text)
{
    const auto result = configuration_read_text(text, "/etc/tovrikd/f.toml");
    EXPECT_EQ(result.mistakes, texts{}) << text;
    return result.made;
}

TEST(tovrikd_configuration, has_the_defaults_of_the_record_where_nothing_is_said)
{
    configuration wanted;
    wanted.services.mailing = false;
    EXPECT_EQ(good(no_mailing), wanted);
    EXPECT_EQ(good("\xEF\xBB\xBF" + no_mailing), wanted) << "with a byte order mark";
}

TEST(tovrikd_configuration, takes_every_key_outside_of_lists)
{
    configuration wanted;
    wanted.name = "Home";
    wanted.location = "Roof";
    wanted.description = "Mine";
    wanted.bind = "0.0.0.0";
    wanted.port = 2210;
    wanted.state_directory = "/srv/state";
    wanted.max_clients = 7;
    wanted.show_reception = true;
    wanted.pager_hits_as_errors = true;
    wanted.http = {"127.0.0.2", 8080, "acars.example"};
    wanted.access = {true, "/etc/tovrikd/passwords", 2, 3, 4};
    wanted.services = {false, true, false, false};
    wanted.mail = {"/bin/mail", "a@b", 23 * 60 + 59, {"c@d"}};
    wanted.archive_days = 90;
    wanted.reference = {"/etc/tovrikd/l.csv", "/abs/c.csv", "/etc/tovrikd/../p.csv"};
    EXPECT_EQ(good("name = 'Home'\nlocation = 'Roof'\ndescription = 'Mine'\nbind = '0.0.0.0'\n"
                   "port = 2210\nstate_directory = '/srv/state'\nmax_clients = 7\n"
                   "show_reception = true\npager_hits_as_errors = true\n"
                   "[http]\nbind = '127.0.0.2'\nport = 8080\npublic_name = 'acars.example'\n"
                   "[access]\nidentify = true\npasswords_file = 'passwords'\n"
                   "clients_per_address = 2\ntries_per_minute = 3\nidle_seconds = 4\n"
                   "[services]\nupdates = false\nmailing = true\nreports = false\npagers = false\n"
                   "[mail]\ncommand = '/bin/mail'\nfrom = 'a@b'\nat = '23:59'\nnever_to = ['c@d']\n"
                   "[archive]\ndays = 90\n"
                   "[reference]\nairlines = 'l.csv'\naircraft = '/abs/c.csv'\n"
                   "airports = '../p.csv'\n"),
              wanted);
}

TEST(tovrikd_configuration, takes_inputs_of_every_type_in_their_order)
{
    using tovrik::input_type;
    const auto made = good(
        no_mailing + "[[input]]\ntype = 'udp'\nport = 5555\n"
                     "[[input]]\ntype = 'udp'\nname = 'roof'\nbind = '0.0.0.0'\nport = 5556\n"
                     "allow = ['127.0.0.0/8', '10.1.2.3', '192.168.7.9/24', '0.0.0.0/0']\n"
                     "drop_empty_squitters = true\n"
                     "[[input]]\ntype = 'tcp-listen'\nport = 5555\n"
                     "[[input]]\ntype = 'tcp-connect'\nhost = 'far'\nport = 1\n"
                     "[[input]]\ntype = 'mqtt'\nhost = 'broker'\ntopic = 'acars/#'\nuser = 'u'\n"
                     "password_file = 'pw'\n"
                     "[[input]]\ntype = 'zmq'\nendpoint = 'tcp://127.0.0.1:1'\ntopic = ''\n"
                     "[[input]]\ntype = 'pipe'\npath = 'messages'\n"
                     "[[input]]\ntype = 'pipe'\npath = '-'\n");
    const std::vector<tovrik::address_range> allowed = {
        {0x7F000000, 0xFF000000}, {0x0A010203, 0xFFFFFFFF}, {0xC0A80700, 0xFFFFFF00}, {0, 0}};
    const std::vector<tovrik::input_options> wanted = {
        {.type = input_type::udp, .name = "udp 5555", .port = 5555},
        {.type = input_type::udp,
         .name = "roof",
         .bind = "0.0.0.0",
         .port = 5556,
         .allow = allowed,
         .drop_empty_squitters = true},
        {.type = input_type::tcp_listen, .name = "tcp-listen 5555", .port = 5555},
        {.type = input_type::tcp_connect, .name = "tcp-connect far:1", .host = "far", .port = 1},
        {.type = input_type::mqtt,
         .name = "mqtt broker acars/#",
         .host = "broker",
         .port = 1883,
         .topic = "acars/#",
         .user = "u",
         .password_file = "/etc/tovrikd/pw"},
        {.type = input_type::zmq, .name = "zmq tcp://127.0.0.1:1", .endpoint = "tcp://127.0.0.1:1"},
        {.type = input_type::pipe,
         .name = "pipe /etc/tovrikd/messages",
         .path = "/etc/tovrikd/messages"},
        {.type = input_type::pipe, .name = "pipe -", .path = "-"},
    };
    EXPECT_EQ(made.inputs, wanted);
}

TEST(tovrikd_configuration, takes_channels_and_peers)
{
    using tovrik::message_link;
    const auto made =
        good(no_mailing + "[[channel]]\nname = 'All'\nport = 2203\n"
                          "[[channel]]\nname = 'Some'\nport = 2204\n"
                          "kinds = ['vhf', 'vdl2', 'hfdl', 'iridium', 'inmarsat']\n"
                          "stations = ['roof*']\nlabels = ['H1', '5?']\nairlines = ['LH']\n"
                          "registrations = ['D-A*']\nno_empty = true\n"
                          "[[peer]]\nhost = 'a.example'\n"
                          "[[peer]]\nhost = 'b.example'\nport = 1\nname = 'B'\nlocation = 'L'\n"
                          "description = 'D'\n");
    const std::vector<tovrik::channel_configuration> channels = {
        {"All", 2203, {}},
        {"Some",
         2204,
         {{message_link::vhf, message_link::vdl2, message_link::hfdl, message_link::iridium,
           message_link::inmarsat},
          {"roof*"},
          {"H1", "5?"},
          {"LH"},
          {"D-A*"},
          true}},
    };
    EXPECT_EQ(made.channels, channels);
    const std::vector<tovrik::peer_configuration> peers = {{"a.example", 2202, "", "", ""},
                                                           {"b.example", 1, "B", "L", "D"}};
    EXPECT_EQ(made.peers, peers);
}

TEST(tovrikd_configuration, gives_clients_texts_in_iso_8859_1_and_files_their_own_names)
{
    const auto made = good("name = 'München'\nlocation = 'a–b €'\ndescription = '日'\n"
                           "state_directory = '/München'\n" +
                           no_mailing +
                           "[[input]]\ntype = 'pipe'\npath = '/Köln'\n"
                           "[[channel]]\nname = 'Köln'\nport = 1\nstations = ['Öl']\n");
    EXPECT_EQ(made.name, "M\xFCnchen");
    EXPECT_EQ(made.location, "a-b EUR");
    EXPECT_EQ(made.description, "?");
    EXPECT_EQ(made.state_directory, "/M\xC3\xBCnchen");
    EXPECT_EQ(made.inputs[0].name, "pipe /K\xF6ln");
    EXPECT_EQ(made.inputs[0].path, "/K\xC3\xB6ln");
    EXPECT_EQ(made.channels[0].name, "K\xF6ln");
    EXPECT_EQ(made.channels[0].filter.stations, texts{"\xD6l"});
}

TEST(tovrikd_configuration, takes_everything_up_to_its_bounds_and_nothing_beyond)
{
    struct row {
        std::string begin;
        std::string end;
        int most;
    };
    const row numbers[] = {{"port = ", "", 65535},
                           {"max_clients = ", "", 4096},
                           {"access.clients_per_address = ", "", 4096},
                           {"access.tries_per_minute = ", "", 1000},
                           {"access.idle_seconds = ", "", 86400},
                           {"archive.days = ", "", 3650}};
    for (const row& one : numbers) {
        good(no_mailing + one.begin + std::to_string(one.most));
        const auto result =
            configuration_read_text(no_mailing + one.begin + std::to_string(one.most + 1), "f");
        EXPECT_EQ(result.mistakes.size(), 1U) << one.begin;
    }
    const row lengths[] = {{"name = '", "'", 60},
                           {"location = '", "'", 200},
                           {"http.public_name = '", "'", 253},
                           {"state_directory = '", "'", 1000},
                           {"[[channel]]\nname = 'x'\nport = 1\nlabels = ['", "']", 64}};
    for (const row& one : lengths) {
        const auto length = static_cast<std::size_t>(one.most);
        good(no_mailing + one.begin + std::string(length, 'x') + one.end);
        const auto result = configuration_read_text(
            no_mailing + one.begin + std::string(length + 1, 'x') + one.end, "f");
        EXPECT_EQ(result.mistakes.size(), 1U) << one.begin;
    }
    good("name = '" + std::string("Ü").append(59, 'x') + "'\n" + no_mailing);
}

TEST(tovrikd_configuration, has_bounds_for_the_numbers_of_tables_and_texts)
{
    std::string inputs;
    for (int i = 0; i < tovrik::max_inputs; ++i)
        inputs += "[[input]]\ntype = 'udp'\nport = " + std::to_string(1000 + i) + "\n";
    EXPECT_EQ(good(no_mailing + inputs).inputs.size(), std::size_t{tovrik::max_inputs});
    const auto more =
        configuration_read_text(no_mailing + inputs + "[[input]]\ntype = 'udp'\nport = 9\n", "f");
    EXPECT_EQ(more.mistakes, texts{"f:2: input tables are too many; there may be 64"});

    std::string labels;
    for (int i = 0; i < tovrik::max_list_values; ++i)
        labels += "'x',";
    const std::string channel = no_mailing + "[[channel]]\nname = 'a'\nport = 1\nlabels = [";
    EXPECT_EQ(good(channel + labels + "]").channels[0].filter.labels.size(),
              std::size_t{tovrik::max_list_values});
    EXPECT_EQ(configuration_read_text(channel + labels + "'x']", "f").mistakes,
              texts{"f:5: labels must have at most 200 texts"});
}

TEST(tovrikd_configuration, that_cannot_be_read_is_told_by_its_name)
{
    const temp_home home;
    home.write_file("large", std::string(tovrik::max_configuration_bytes + 1, '\n'));
    home.write_file("full",
                    no_mailing +
                        std::string(tovrik::max_configuration_bytes - no_mailing.size(), '\n'));
    ASSERT_EQ(mkfifo(home.path_of("pipe").c_str(), 0600), 0);
    const struct {
        std::string path;
        std::string mistake;
    } rows[] = {{home.path_of("nowhere"), ": No such file or directory"},
                {home.path(), ": Is a directory"},
                {home.path_of("pipe"), ": not an ordinary file"},
                {home.path_of("large"), ": larger than 1048576 bytes"}};
    for (const auto& row : rows)
        EXPECT_EQ(configuration_read(row.path).mistakes, texts{row.path + row.mistake});
    EXPECT_EQ(configuration_read(home.path_of("full")).mistakes, texts{});
}

TEST(tovrikd_configuration, of_a_file_counts_names_from_the_folder_of_the_file)
{
    const temp_home home;
    home.write_file("c.toml", no_mailing + "access.passwords_file = 'p'\n");
    EXPECT_EQ(configuration_read(home.path_of("c.toml")).made.access.passwords_file,
              home.path_of("p"));
    EXPECT_EQ(configuration_read_text(no_mailing + "access.passwords_file = 'p'\n", "c.toml")
                  .made.access.passwords_file,
              "p");
}

} // namespace
