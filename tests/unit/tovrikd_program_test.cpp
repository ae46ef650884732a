// tovrikd_program_test.cpp - tovrikd as its owner runs it: configured, fed, reloaded, restarted.
#include "tovrikd_place.hpp"

#include "data/xml.hpp"
#include "server/base/sockets.hpp"
#include "server/base/time_text.hpp"

#include <csignal>
#include <ctime>
#include <string>
#include <utility>

namespace
{

std::string value_of(const std::string& xml, const char* name)
{
    const xml_document parsed(xml_parse(xml.c_str()));
    const heap_text value(xml_get(parsed.get(), name, true, true));
    return value ? value.get() : "";
}

class tovrikd : public testing::Test, protected tovrikd_place
{
};

TEST_F(tovrikd, passes_on_what_a_receiver_hears)
{
    write_configuration();
    const auto program = start();
    sim_raw_client client{port};
    const auto capabilities = client.receive_kind(41);
    ASSERT_TRUE(capabilities);
    EXPECT_EQ(value_of(capabilities->payload, "Reports"), "1");
    EXPECT_EQ(value_of(capabilities->payload, "Mailing"), "0");
    hear(heard_line());
    const auto message = client.receive_kind(40);
    ASSERT_TRUE(message);
    EXPECT_EQ(value_of(message->payload, "AircraftReg"), "D-AIQA");
    EXPECT_EQ(value_of(message->payload, "MessageContent"), "HELLO");
    EXPECT_EQ(value_of(message->payload, "Contacts"), "1 contact with this aircraft");
}

TEST_F(tovrikd, keeps_its_identity_and_what_clients_add_when_it_is_restarted)
{
    write_configuration();
    std::string identity;
    {
        const auto program = start();
        sim_raw_client client{port};
        const auto capabilities = client.receive_kind(41);
        ASSERT_TRUE(capabilities);
        identity = value_of(capabilities->payload, "ServerUUID");
        client.send_text(31, "LH\tLufthansa of the test");
        EXPECT_TRUE(client.receive_kind(35));
        client.send_text(77, "me@example.org\tD-AIQA\t\t");
        EXPECT_TRUE(client.receive_kind(78));
        program->send_signal(SIGTERM);
        EXPECT_TRUE(client.receive_kind(100)) << "it says good-bye";
        client.hang_up();
        EXPECT_EQ(program->status(), 0);
    }
    const auto program = start();
    sim_raw_client client{port};
    const auto capabilities = client.receive_kind(41);
    ASSERT_TRUE(capabilities);
    EXPECT_EQ(value_of(capabilities->payload, "ServerUUID"), identity);
    client.send_text(89, "me@example.org");
    const auto list = client.receive_kind(89);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->payload, "D-AIQA\t^\t^");
    hear(heard_line());
    const auto message = client.receive_kind(40);
    ASSERT_TRUE(message);
    EXPECT_EQ(value_of(message->payload, "Operator"), "Lufthansa of the test");
}

/// Whether these are the bytes that tell the owner of a pager list of a hit since a moment.
bool tells_of(const server_packet& told, const std::string& text, std::time_t since)
{
    for (std::time_t moment = since; moment <= std::time(nullptr); ++moment) {
        const std::string whole = text + " (" + tovrik::minute_text(moment) + " UTC)";
        if (packet_bytes(told) == packet_bytes({.kind = 103, .payload = whole}))
            return true;
    }
    return false;
}

TEST_F(tovrikd, tells_of_the_hits_of_a_pager_list_when_its_owner_comes_back)
{
    write_configuration();
    const std::time_t began = std::time(nullptr);
    const server_packet request{.kind = 89, .payload = "me@example.org", .param1 = 4711};
    {
        const auto program = start();
        sim_raw_client owner{port};
        owner.send_bytes(
            packet_bytes({.kind = 77, .payload = "me@example.org\tD-AI*\t\t", .param1 = 4711}));
        EXPECT_TRUE(owner.receive_kind(78));
        owner.send_text(2, "Good Bye");
        EXPECT_TRUE(owner.ends());
        sim_raw_client other{port};
        for (const char* registration : {"D-AIQA", "OE-LBA", "D-AIQB", "D-AIQC"}) {
            hear(R"({"label":"H1","flight":"LH0400","text":"HELLO","tail":")" +
                 std::string{registration} + "\"}");
            EXPECT_TRUE(other.receive_kind(40)) << registration;
        }
        sim_raw_client back{port};
        back.send_bytes(packet_bytes(request));
        const auto told = back.receive_kind(103);
        ASSERT_TRUE(told);
        EXPECT_TRUE(tells_of(*told, "Pager of me@example.org: D-AIQA LH0400", began)) << *told;
        program->send_signal(SIGTERM);
        EXPECT_TRUE(back.receive_kind(100));
        back.hang_up();
        other.hang_up();
        EXPECT_EQ(program->status(), 0);
    }
    const auto program = start();
    sim_raw_client back{port};
    back.send_bytes(packet_bytes(request));
    for (const char* registration : {"D-AIQB", "D-AIQC"}) {
        const auto told = back.receive_kind(103);
        ASSERT_TRUE(told);
        const std::string text =
            "Pager of me@example.org: " + std::string{registration} + " LH0400";
        EXPECT_TRUE(tells_of(*told, text, began)) << *told;
    }
    hear(heard_line());
    EXPECT_TRUE(back.receive_kind(40));
    const auto told = back.receive_kind(103);
    ASSERT_TRUE(told);
    EXPECT_EQ(*told,
              (server_packet{.kind = 103, .payload = "Pager of me@example.org: D-AIQA LH0400"}));
}

TEST_F(tovrikd, reports_a_day_from_its_archive)
{
    write_configuration();
    const auto program = start();
    sim_raw_client client{port};
    hear(heard_line());
    ASSERT_TRUE(client.receive_kind(40));
    const std::time_t now = std::time(nullptr);
    client.send_text(70, std::to_string(now - 3600) + "\t*#cnam#\t#cnum#\t0\t0");
    EXPECT_TRUE(client.receive_kind(71));
    EXPECT_TRUE(client.receive_kind(74));
    EXPECT_TRUE(client.receive_kind(205));
    client.send_text(70, "86401\t*#cnam#\t#cnum#\t0\t0");
    EXPECT_TRUE(client.receive_kind(73)) << "nobody heard anything in 1970";
}

TEST_F(tovrikd, answers_the_web)
{
    write_configuration();
    const auto program = start();
    const std::string directory = ask_web("/tovrikserver.main");
    EXPECT_NE(directory.find("127.0.0.1\t" + std::to_string(port) + "\t"), std::string::npos)
        << directory;
    EXPECT_NE(ask_web("/healthz").find("200 OK"), std::string::npos);
    EXPECT_NE(ask_web("/metrics").find("tovrikd_"), std::string::npos);
    EXPECT_NE(ask_web("/").find("roof"), std::string::npos);
}

TEST_F(tovrikd, tells_the_web_how_much_it_has_sent)
{
    write_configuration();
    const auto program = start();
    sim_raw_client client{port};
    client.receive_kind(41);
    hear(heard_line());
    ASSERT_TRUE(client.receive_kind(40));
    const std::string wanted =
        "tovrikd_channel_sent_total{channel=\"Home\",port=\"" + std::to_string(port) + "\"} 1\n";
    const auto end = std::chrono::steady_clock::now() + default_patience;
    std::string said;
    while (said.find(wanted) == std::string::npos && std::chrono::steady_clock::now() < end)
        said = ask_web("/metrics");
    EXPECT_NE(said.find(wanted), std::string::npos) << said;
}

TEST_F(tovrikd, takes_a_new_configuration_without_dropping_a_client)
{
    write_configuration();
    const auto program = start();
    sim_raw_client client{port};
    ASSERT_TRUE(client.receive_kind(41));
    const std::uint16_t more = free_port();
    home.write_file("tovrikd.toml", *home.read_file("tovrikd.toml") +
                                        "[[channel]]\nname = \"VHF\"\nkinds = [\"vhf\"]\nport = " +
                                        std::to_string(more) + "\n");
    program->send_signal(SIGHUP);
    EXPECT_EQ(program->complaint_line(), "tovrikd: the new configuration is in use");
    EXPECT_NE(ask_web("/tovrikserver.main").find("\t" + std::to_string(more) + "\t"),
              std::string::npos)
        << "the web knows at once";
    sim_raw_client other{more};
    EXPECT_TRUE(other.receive_kind(41));
    hear(heard_line());
    EXPECT_TRUE(other.receive_kind(40));
    EXPECT_TRUE(client.receive_kind(40)) << "it was not dropped";
}

TEST_F(tovrikd, keeps_its_clients_at_any_free_port_when_it_is_configured_anew)
{
    port = 0;
    write_configuration();
    const auto program = start();
    sim_raw_client client{port};
    client.receive_kind(41);
    port = 0;
    write_configuration("max_clients = 5\n");
    program->send_signal(SIGHUP);
    EXPECT_EQ(program->complaint_line(), "tovrikd: the new configuration is in use");
    hear(heard_line());
    EXPECT_TRUE(client.receive_kind(40)) << "it was not dropped";
}

TEST_F(tovrikd, refuses_a_wrong_new_configuration_whole)
{
    write_configuration();
    const auto program = start();
    home.write_file("tovrikd.toml", "name = 1\n[services]\nmailing = false\n");
    program->send_signal(SIGHUP);
    EXPECT_EQ(program->complaint_line(),
              "tovrikd: the new configuration is refused; nothing has changed");
    EXPECT_NE(program->complaint_line().find("tovrikd.toml:1: "), std::string::npos);
    sim_raw_client client{port};
    EXPECT_TRUE(client.receive_kind(41));
}

TEST_F(tovrikd, keeps_its_ports_if_one_of_a_new_configuration_cannot_be_had)
{
    const auto channel = [](const std::string& name, std::uint16_t at) {
        return "[[channel]]\nname = \"" + name + "\"\nport = " + std::to_string(at) + "\n";
    };
    const std::uint16_t leaving = free_port();
    write_configuration();
    const auto program = start();
    write_configuration(channel("VHF", leaving));
    program->send_signal(SIGHUP);
    EXPECT_EQ(program->complaint_line(), "tovrikd: the new configuration is in use");
    sim_raw_client client{leaving};
    ASSERT_TRUE(client.receive_kind(41));
    tovrik::tcp_listener other;
    ASSERT_EQ(listener_open(other, "127.0.0.1", 0), "");
    const std::uint16_t first_web = std::exchange(web_port, free_port());
    write_configuration(channel("HFDL", free_port()) + channel("VDL2", other.port));
    program->send_signal(SIGHUP);
    EXPECT_EQ(program->complaint_line(),
              "tovrikd: the new configuration is refused; nothing has changed");
    const std::string reason = program->complaint_line();
    EXPECT_NE(reason.find(std::to_string(other.port)), std::string::npos) << reason;
    web_port = first_web;
    const std::string directory = ask_web("/tovrikserver.main");
    EXPECT_NE(directory.find("\tVHF"), std::string::npos) << directory;
    EXPECT_EQ(directory.find("HFDL"), std::string::npos) << directory;
    hear(heard_line());
    EXPECT_TRUE(client.receive_kind(40)) << "it was not dropped";
}

TEST_F(tovrikd, keeps_its_web_if_that_of_a_new_configuration_cannot_be_had)
{
    write_configuration();
    const auto program = start();
    tovrik::tcp_listener other;
    ASSERT_EQ(listener_open(other, "127.0.0.1", 0), "");
    const std::uint16_t first_web = std::exchange(web_port, other.port);
    write_configuration("max_clients = 1\n");
    program->send_signal(SIGHUP);
    EXPECT_EQ(program->complaint_line(),
              "tovrikd: the new configuration is refused; nothing has changed");
    web_port = first_web;
    EXPECT_NE(ask_web("/").find("roof"), std::string::npos);
}

TEST_F(tovrikd, tells_its_owner_names_as_they_were_written)
{
    input = "type = \"pipe\"\nname = \"D\xC3\xA4rm\"\npath = \"/nowhere/pipe\"\n";
    write_configuration("[[channel]]\nname = \"Z\xC3\xBCrich\"\nport = 0\n");
    const auto program = launch();
    std::string said;
    for (int line = 0; line < 4; ++line)
        said += program->complaint_line() + "\n";
    EXPECT_NE(said.find("tovrikd: Z\xC3\xBCrich listens on port "), std::string::npos) << said;
    EXPECT_NE(said.find("tovrikd: input 'D\xC3\xA4rm': "), std::string::npos) << said;
}

TEST_F(tovrikd, does_not_start_with_a_wrong_configuration)
{
    home.write_file("tovrikd.toml", "port = 0\nbind = \"here\"\n");
    sim_program program{
        {"--config", home.path_of("tovrikd.toml")}, nullptr, -1, -1, TOVRIKD_BINARY};
    const std::string complaint = program.complaint();
    EXPECT_NE(complaint.find("tovrikd.toml:1: "), std::string::npos) << complaint;
    EXPECT_NE(complaint.find("tovrikd.toml:2: "), std::string::npos) << complaint;
    EXPECT_EQ(program.status(), 2);
}

} // namespace
