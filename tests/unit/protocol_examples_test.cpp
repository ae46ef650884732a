// protocol_examples_test.cpp - the packets in docs/protocol.md are the ones that are sent.
#include "unit/connection_fixture.hpp"
#include "unit/document_text.hpp"

#include "app/settings_toggle.hpp"
#include "net/capabilities.hpp"
#include "server/protocol/packet.hpp"
#include "server/storage/pager_lists.hpp"
#include "services/database_update.hpp"
#include "services/mailing.hpp"
#include "services/pager.hpp"
#include "services/report.hpp"
#include "support/temp_home.hpp"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>

namespace
{

constexpr std::size_t bytes_a_line = 16;

/// A hex dump: an offset, sixteen bytes in two halves, and their characters.
std::string make_dump(const std::string& bytes)
{
    std::string dump;
    for (std::size_t at = 0; at < bytes.size(); at += bytes_a_line) {
        char text[24];
        std::snprintf(text, sizeof text, "%08zx ", at);
        std::string line = text;
        std::string characters;
        for (const char byte : bytes.substr(at, bytes_a_line)) {
            std::snprintf(text, sizeof text, "%s%02x", characters.size() % 8 == 0 ? " " : "",
                          static_cast<unsigned char>(byte));
            line += text + std::string(" ");
            characters += byte >= ' ' && byte <= '~' ? byte : '.';
        }
        line.resize(60, ' ');
        dump += line + '|' + characters + "|\n";
    }
    return dump;
}

std::string parse_dump(const std::string& dump)
{
    std::string bytes;
    for (const auto& line : all_matches(dump, R"(\n?[0-9a-f]{8} ([0-9a-f ]+))"))
        for (const auto& byte : all_matches(line[0], R"([0-9a-f]{2})"))
            bytes += static_cast<char>(std::stoi(byte[0], nullptr, 16));
    return bytes;
}

/// The dumps of the document, by the names after "hexdump".
const std::map<std::string, std::string>& read_examples()
{
    static const auto dumps = [] {
        std::map<std::string, std::string> found;
        const std::string document = source_text("docs/protocol.md");
        for (const auto& block : all_matches(document, "\n```hexdump ([a-z-]+)\n([^`]*)```"))
            EXPECT_TRUE(found.emplace(block[0], block[1]).second) << "twice: " << block[0];
        return found;
    }();
    return dumps;
}

std::string find_example(const std::string& name)
{
    EXPECT_TRUE(read_examples().contains(name)) << name;
    return read_examples().contains(name) ? read_examples().at(name) : "";
}

constexpr const char* document_shown =
    "<?xml version=\"1.0\"?><tovrik><ACARS><AircraftReg>.D-AIQA</AircraftReg>"
    "<FlightNumber>LH0400</FlightNumber></ACARS></tovrik>";
constexpr const char* report_shown = "Messages of 20/11/2026\n";

class protocol_examples : public connection_test
{
protected:
    protocol_examples() : entry(add_server("host.example", "srv")), server(connect(entry)) {}

    /// Checks that the client has just sent the example of that name.
    void expect_sent(const char* name) const
    {
        EXPECT_EQ(make_dump(server.take_bytes()), find_example(name)) << name;
    }

    /// Makes the client receive the example of that name from the server.
    void receive(const char* name)
    {
        mark();
        server.send_bytes(parse_dump(find_example(name)));
        poll_all();
    }

    server_entry& entry;
    server_end server;
};

TEST_F(protocol_examples, are_written_as_hex_dumps)
{
    EXPECT_EQ(read_examples().size(), 23U);
    for (const auto& [name, dump] : read_examples())
        EXPECT_EQ(make_dump(parse_dump(dump)), dump) << name;
}

TEST_F(protocol_examples, a_client_introduces_itself_and_leaves)
{
    server_entry& other = local_server();
    command_connect(other);
    ASSERT_TRUE(wait_until([&] { return other.connected == 1; }));
    const server_end end = home.take();
    EXPECT_EQ(make_dump(end.await_bytes(introduction_length)), find_example("introduction"));
    connection_end_at_exit(entry);
    expect_sent("good-bye");
}

TEST_F(protocol_examples, a_client_answers_questions_and_silence)
{
    type_ahead("abc\n");
    handle_capabilities(entry, "<?xml?><tovrik><NeedAuth>1</NeedAuth></tovrik>");
    expect_sent("password");
    server.send({85, "?"});
    poll_all();
    expect_sent("identification");
    entry.last_data_time = 0;
    poll_all();
    expect_sent("heartbeat");
}

TEST_F(protocol_examples, a_client_asks_for_services)
{
    type_ahead("2LH400\nFRA-JFK\n\033\033");
    add_entries_dialog(entry);
    expect_sent("add-flight");
    type_ahead("1me@example.org\n");
    mailing_dialog(entry);
    expect_sent("subscribe");
    type_ahead("5\n4711\n1\n");
    mailing_dialog(entry);
    expect_sent("report-style");
    type_ahead("1\n\n\033LH400\n\033");
    pager_dialog(entry);
    expect_sent("pager-add");
    type_ahead("3\n\n");
    pager_dialog(entry);
    expect_sent("pager-list-request");
}

TEST_F(protocol_examples, a_client_asks_for_the_report_of_a_day)
{
    const char* zone = std::getenv("TZ");
    const std::string former = zone != nullptr ? zone : "";
    setenv("TZ", "UTC", 1);
    tzset();
    type_ahead("20/11/2026\n");
    report_request(entry);
    expect_sent("report-request");
    if (zone != nullptr)
        setenv("TZ", former.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

TEST_F(protocol_examples, a_client_reports_its_uplink_setting)
{
    app_state.setting_flags = NoUplinks;
    apply_log_settings();
    expect_sent("no-uplinks");
}

TEST_F(protocol_examples, a_practice_server_sends_the_same)
{
    const auto plain = tovrik::plain_transmission(document_shown);
    ASSERT_TRUE(plain);
    const struct {
        const char* name;
        tovrik::packet packet;
    } rows[] = {
        {"tick", {.kind = tovrik::kind::tick, .payload = "^"}},
        {"closing", {.kind = tovrik::kind::closing, .payload = "Good Bye"}},
        {"uptime", {.kind = tovrik::kind::uptime, .payload = "90061\t12\tPractice"}},
        {"replay", tovrik::replay_announcement_packet(70'000)},
        {"transmission", *plain},
        {"pager-list",
         {.kind = tovrik::kind::pager_list,
          .payload = tovrik::pager_list_text({{"D-AIQA", "LH400", "FRA"}, {"", "BA117", ""}})}},
        {"empty-pager-list",
         {.kind = tovrik::kind::pager_list, .payload = tovrik::pager_list_text({})}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(make_dump(tovrik::encode_packet(row.packet)), find_example(row.name)) << row.name;
}

TEST_F(protocol_examples, a_client_takes_capabilities)
{
    receive("capabilities");
    EXPECT_EQ(said(), (status_lines{{"ServerID: 7b21", 2}}));
    EXPECT_STREQ(entry.server_version, "1.0");
    EXPECT_EQ(entry.can_page, 1);
    EXPECT_EQ(entry.can_modify | entry.can_report | entry.can_mail | entry.crc_check, 0);
    EXPECT_EQ(server.take_bytes(), "");
}

TEST_F(protocol_examples, a_client_shows_transmissions_of_both_kinds)
{
    for (const char* name : {"transmission", "compressed-transmission"}) {
        entry.bytes_received = 0;
        receive(name);
        EXPECT_EQ(said(), status_lines{}) << name;
        EXPECT_EQ(message_row(LINES - 12), "Flight number: LH0400  Flight: -") << name;
        wclear(app_state.message_pane);
    }
    const std::string compressed = parse_dump(find_example("compressed-transmission"));
    const auto made = tovrik::compressed_transmission(document_shown);
    ASSERT_TRUE(made);
    EXPECT_EQ(tovrik::decode_header(compressed).extra, made->extra);
}

TEST_F(protocol_examples, a_client_shows_replays_uptimes_ticks_and_the_end)
{
    receive("replay");
    EXPECT_EQ(said(), (status_lines{{"Now receiving the last 70000 transmissions", 6}}));
    receive("uptime");
    EXPECT_EQ(said(), (status_lines{{"Uptime: 1 days, 1 hours, 1 minutes 1 seconds. "
                                     "12 clients connected",
                                     11}}));
    receive("tick");
    EXPECT_EQ(marker_of(entry), '-');
    receive("closing");
    EXPECT_EQ(said(), (status_lines{{"Connection closed by server", 5}}));
}

TEST_F(protocol_examples, a_client_saves_the_report_and_shows_the_list)
{
    const temp_home folder;
    receive("report-announcement");
    EXPECT_EQ(said(), (status_lines{{"Now receiving ZOBE Style report. Size 23 bytes", 6}}));
    std::free(app_state.setting_texts[ReportPath]);
    app_state.setting_texts[ReportPath] = owned_text(folder.path() + "/");
    type_ahead("day.txt\n");
    receive("report-piece");
    EXPECT_EQ(folder.read_file("day.txt"), report_shown);
    type_ahead("\033");
    receive("pager-list");
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(getch(), ERR) << "the list took the Escape";
}

} // namespace
