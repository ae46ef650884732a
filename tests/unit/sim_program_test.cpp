// sim_program_test.cpp - tovriksim as a program: its line, its statuses, its options.
#include "sim_program.hpp"
#include "sim_raw_client.hpp"

#include "app/app_state.hpp"
#include "base/md5.hpp"
#include "data/xml.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

namespace
{

TEST(sim_program, says_where_it_listens_and_ends_well_by_signal)
{
    for (const int number : {SIGTERM, SIGINT}) {
        sim_program program{{"--port", "0"}};
        const std::uint16_t port = program.port();
        ASSERT_NE(port, 0);
        sim_raw_client client{port};
        EXPECT_EQ(client.receive()->kind, 41U);
        program.send_signal(number);
        EXPECT_TRUE(client.receive_kind(100)) << "every client is told";
        EXPECT_TRUE(client.ends());
        client.hang_up();
        EXPECT_EQ(program.complaint(), "");
        EXPECT_EQ(program.status(), 0);
    }
}

TEST(sim_program, waits_for_clients_to_read_the_end_until_a_second_signal)
{
    sim_program program{{"--port", "0", "--pace-ms", "60000"}};
    const std::uint16_t port = program.port();
    sim_raw_client client{port};
    EXPECT_EQ(client.receive()->kind, 41U);
    // The pace holds the good-bye back for a minute. Nobody is accepted meanwhile.
    program.send_signal(SIGTERM);
    for (bool served = true; served;) {
        sim_raw_client late{port};
        served = late.fd >= 0 && late.receive();
    }
    EXPECT_FALSE(program.has_ended());
    program.send_signal(SIGINT);
    EXPECT_EQ(program.status(), 0);
    EXPECT_TRUE(client.ends());
}

TEST(sim_program, waits_for_silent_clients_for_a_bounded_time_only)
{
    sim_program program{{"--port", "0", "--pace-ms", "0"}};
    sim_raw_client client{program.port()};
    EXPECT_EQ(client.receive()->kind, 41U);
    program.send_signal(SIGTERM);
    EXPECT_EQ(program.status(), 0) << "the client still holds its connection";
    EXPECT_TRUE(client.receive_kind(100));
}

TEST(sim_program, tells_help_and_succeeds)
{
    sim_program program{{"--help"}};
    const std::string help = program.rest();
    for (const char* option : {"--port",          "--bind",
                               "--rate",          "--seed",
                               "--compressed",    "--replay",
                               "--name",          "--uuid",
                               "--password",      "--identify",
                               "--banner",        "--ticks",
                               "--uptime",        "--announce-replay",
                               "--close-after",   "--close-kind",
                               "--pace-ms",       "--report-answer",
                               "--pager-blocked", "--http-port",
                               "--directory",     "--json-udp",
                               "--json-file",     "<?xml"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
    EXPECT_EQ(program.status(), 0);
}

TEST(sim_program, tells_its_version_and_succeeds)
{
    sim_program program{{"--version"}};
    EXPECT_EQ(program.rest(), std::string{"tovriksim "} + client_version + "\n");
    EXPECT_EQ(program.status(), 0);
}

TEST(sim_program, says_that_it_mails_nothing)
{
    const std::string help = sim_program{{"--help"}}.rest();
    const auto mailing = help.find("--mailing");
    ASSERT_NE(mailing, std::string::npos);
    const std::string entry = help.substr(mailing, help.find("--db-modify") - mailing);
    EXPECT_NE(entry.find("nothing is mailed"), std::string::npos) << entry;
}

TEST(sim_program, ends_with_2_and_a_reason_for_wrong_options)
{
    const std::vector<std::vector<std::string>> cases = {
        {"--port", "70000"},
        {"--port", "http"},
        {"--port", "-1"},
        {"--frobnicate"},
        {"stray"},
        {"--rate", "-1"},
        {"--rate", "nan"},
        {"--rate", "1e9"},
        {"--close-kind", "4"},
        {"--close-kind", "0x64"},
        {"--bind", "1.2.3"},
        {"--pace-ms", "fast"},
        {"--seed", "-1"},
        {"--max-clients", "0"},
        {"--close-after", ""},
        {"--known-client"},
        {"--announce-replay", "1001"},
        {"--uuid", std::string(201, 'x')},
        {"--report-answer", "perhaps"},
        {"--http-port", "65536"},
        {"--directory", "file"},
        {"--json-udp", "-1"},
        {"--port", "0x10"},
        {"--port", "1e3"},
        {"--port", " 22"},
        {"--port", "22.0"},
        {"--port", "+22"},
        {"--port", "1'000"},
        {"--http-port", "0x10"},
        {"--json-udp", "1e3"},
        {"--max-clients", "1e2"},
        {"--pace-ms", "0.5"},
        {"--seed", "0x7"},
        {"--fixed-time", "1e9"},
        {"--announce-replay", "1.5"},
        {"--rate", "0x10"},
        {"--rate", "1e2"},
        {"--rate", "1.2.3"},
        {"--rate", "."},
        {"--ticks", " 5"},
        {"--password", ""},
        {"--password", std::string(40, 'x')},
        {"--password", "a\tb"},
        {"--password", "a\x7f"},
        {"--json-file", "-", "--replay", "file"},
    };
    for (const auto& options : cases) {
        sim_program program{options};
        const std::string complaint = program.complaint();
        EXPECT_TRUE(complaint.starts_with("tovriksim: ")) << options[0] << ": " << complaint;
        EXPECT_EQ(program.status(), 2) << options[0];
    }
}

TEST(sim_program, reads_numbers_with_leading_zeros_as_decimal_ones)
{
    const std::string port = std::to_string(sim_program{{"--port", "0"}}.port());
    sim_program program{{"--port", "0" + port, "--max-clients", "010", "--rate", "00.5"}};
    EXPECT_EQ(std::to_string(program.port()), port);
}

TEST(sim_program, ends_with_1_and_a_reason_when_it_cannot_serve)
{
    sim_program first{{"--port", "0"}};
    const std::string port = std::to_string(first.port());
    sim_program second{{"--port", port}};
    EXPECT_EQ(second.complaint(),
              "tovriksim: cannot listen on 127.0.0.1:" + port + ": Address already in use\n");
    EXPECT_EQ(second.status(), 1);

    sim_program third{{"--port", "0", "--replay", "/nowhere/at/all"}};
    EXPECT_EQ(third.complaint(), "tovriksim: /nowhere/at/all: No such file or directory\n");
    EXPECT_EQ(third.status(), 1);
}

TEST(sim_program, passes_its_options_on)
{
    sim_program program{{"--port",
                         "0",
                         "--pace-ms",
                         "0",
                         "--rate",
                         "6000",
                         "--compressed",
                         "--uuid",
                         "mine",
                         "--server-version",
                         "3.2",
                         "--crc-check",
                         "--mailing",
                         "--db-modify",
                         "--modify-flags",
                         "--reports",
                         "--pager",
                         "--identify",
                         "--known-client",
                         "me",
                         "--password",
                         "abc",
                         "--banner",
                         "one\\ntwo",
                         "--news",
                         "n",
                         "--notice",
                         "o",
                         "--error-text",
                         "e",
                         "--uptime",
                         "--announce-replay",
                         "2",
                         "--name",
                         "practice"}};
    sim_raw_client client{program.port()};
    const auto capabilities = client.receive();
    ASSERT_TRUE(capabilities);
    const xml_document parsed(xml_parse(capabilities->payload.c_str()));
    const struct {
        const char* name;
        const char* value;
    } elements[] = {{"Version", "3.2"}, {"ServerUUID", "mine"}, {"CRCCheck", "1"},
                    {"Mailing", "1"},   {"DBModify", "1"},      {"ModifyFlags", "1"},
                    {"Reports", "1"},   {"Pager", "1"},         {"NeedAuth", "1"}};
    for (const auto& element : elements) {
        const heap_text value(xml_get(parsed.get(), element.name, true, true));
        EXPECT_STREQ(value.get(), element.value) << element.name;
    }
    EXPECT_EQ(client.receive()->kind, 85U);
    EXPECT_EQ(client.receive(), (server_packet{.kind = 64, .payload = "one\ntwo"}));
    EXPECT_EQ(client.receive(), (server_packet{.kind = 90, .payload = "n"}));
    EXPECT_EQ(client.receive(), (server_packet{.kind = 103, .payload = "o"}));
    EXPECT_EQ(client.receive(), (server_packet{.kind = 108, .payload = "e"}));
    EXPECT_TRUE(client.receive()->payload.ends_with("\tpractice"));
    client.send_text(85, "ncursesclient");
    EXPECT_EQ(client.receive()->kind, 87U) << "only the names given are known";
    client.send_text(85, "me");
    EXPECT_EQ(client.receive()->kind, 86U);
    client.send_text(81, "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(client.receive()->kind, 82U);
    const auto announcement = client.receive();
    ASSERT_TRUE(announcement);
    EXPECT_EQ(announcement->kind, 27U);
    EXPECT_EQ(announcement->param1, 2);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(client.receive()->kind, 204U);
}

TEST(sim_program, sends_its_texts_in_the_networks_character_set)
{
    sim_program program{{"--port",   "0",           "--pace-ms",       "0",      "--rate",
                         "0",        "--banner",    "Gr\u00fc\u00dfe", "--news", "\u00a9",
                         "--notice", "\u00e9",      "--error-text",    "\u00ff", "--uptime",
                         "--name",   "Z\u00fcrich", "--uuid",          "\u00e4", "--password",
                         "\u00e9"},
                        "C.UTF-8"};
    sim_raw_client client{program.port()};
    const auto capabilities = client.receive();
    ASSERT_TRUE(capabilities);
    EXPECT_NE(capabilities->payload.find("<ServerUUID>\xe4<"), std::string::npos);
    EXPECT_EQ(client.receive()->payload, "Gr\xfc\xdf"
                                         "e");
    EXPECT_EQ(client.receive()->payload, "\xa9");
    EXPECT_EQ(client.receive()->payload, "\xe9");
    EXPECT_EQ(client.receive()->payload, "\xff");
    EXPECT_TRUE(client.receive()->payload.ends_with("\tZ\xfcrich"));
    char digest[33] = {};
    md5_hex("\xe9", digest);
    client.send_text(81, digest);
    EXPECT_EQ(client.receive()->kind, 82U);
}

TEST(sim_program, refuses_texts_that_the_network_cannot_carry)
{
    const struct {
        const char* text;
        const char* locale;
    } cases[] = {{"\u20ac", "C.UTF-8"}, {"\xff", "C.UTF-8"}, {"\u00e9", "C"}};
    for (const char* option : {"--name", "--banner", "--news", "--notice", "--error-text",
                               "--password", "--uuid", "--server-version", "--known-client"})
        for (const auto& row : cases) {
            sim_program program{{"--port", "0", option, row.text}, row.locale};
            const std::string complaint = program.complaint();
            EXPECT_TRUE(complaint.starts_with(std::string{"tovriksim: "} + option)) << complaint;
            EXPECT_EQ(program.status(), 2) << option;
        }
}

TEST(sim_program, takes_the_longest_password_that_one_can_type)
{
    sim_program program{{"--port", "0", "--password", std::string(39, 'x')}};
    EXPECT_NE(program.port(), 0);
}

TEST(sim_program, ticks_every_minute_unless_told_otherwise)
{
    const std::string help = sim_program{{"--help"}}.rest();
    EXPECT_TRUE(std::regex_search(help, std::regex{R"(--ticks S(=| \[)60\b)"})) << help;
}

TEST(sim_program, ticks_by_option)
{
    sim_program program{{"--port", "0", "--pace-ms", "0", "--rate", "0", "--ticks", "0.01"}};
    sim_raw_client client{program.port()};
    EXPECT_EQ(client.receive()->kind, 41U);
    EXPECT_EQ(client.receive()->kind, 5U);
}

TEST(sim_program, closes_by_option)
{
    sim_program program{{"--port", "0", "--pace-ms", "0", "--rate", "0", "--close-after", "0.01",
                         "--close-kind", "102"}};
    sim_raw_client client{program.port()};
    EXPECT_TRUE(client.receive_kind(102));
    EXPECT_TRUE(client.ends());
}

} // namespace
