// hostile_server_test.cpp - servers that send what would harm a careless terminal program.
//
// The tests look at both the screen and the bytes that went out to the terminal.
#include "e2e/network_session.hpp"

#include <random>

namespace
{

/// A server's bytes as the screen of a UTF-8 terminal shows them.
std::string convert_to_screen(std::string_view bytes)
{
    std::string shown;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte == '\t' || byte == '\r')
            shown += ' ';
        else if (byte < 0x20 || (byte >= 0x7F && byte < 0xA0))
            shown += '?';
        else if (byte < 0x7F)
            shown += character;
        else
            shown.append(
                {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))});
    }
    return shown;
}

/// Sequences that retitle, clear, reset or recolour a terminal, or make it answer.
constexpr const char* sequences[] = {
    "\033]0;OWNED\a", "\033[31337m",
    "\033c",          "\033[6n",
    "\033[?1049l",    "\033P1;2q#OWNED\033\\",
    "\23331337m",     "\2350;OWNED\234",
    "\220OWNED\234",  "\016OWNED\017",
    "\033(0",         "\b\b\b\b",
    "\x7F\x7F",       "\v\f",
    "\005",
};

/// True if `raw` contains a C1 byte, alone or as the two bytes of its UTF-8 form.
bool has_c1(const std::string& raw)
{
    for (std::size_t at = 0; at < raw.size(); ++at) {
        const auto byte = static_cast<unsigned char>(raw[at]);
        const auto next = static_cast<unsigned char>(at + 1 < raw.size() ? raw[at + 1] : 0xA0);
        if (byte < 0x80)
            continue;
        if (byte < 0xC2 || (byte == 0xC2 && next < 0xA0))
            return true;
        at += byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3; // the rest of the character
    }
    return false;
}

/// Checks that nothing harmful went out to a terminal.
void expect_harmless(const std::string& raw)
{
    for (const char* sign : {"\033]", "31337m\033", "\033[31337", "\033c", "\033P", "\033[6n",
                             "\033[?1049l", "\a", "\016", "\005", "\v", "\f", "\x7F"})
        EXPECT_EQ(raw.find(sign), std::string::npos) << testing::PrintToString(sign);
    EXPECT_FALSE(has_c1(raw));
}

/// A wide client connected to one server.
class hostile_server : public testing::Test
{
protected:
    void begin(const client_start& how = wide_terminal)
    {
        client_settings settings = servers.settings();
        settings.contact_info = true;
        settings.flight_stats = true;
        ASSERT_TRUE(client.start(settings, how));
        connection = client.connect_selected(servers[0]);
        ASSERT_TRUE(connection);
        ASSERT_TRUE(wait_for_notice(client, *connection, "begin"));
        client.terminal().forget_raw_output();
    }

    listed_servers servers{1};
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(hostile_server, escape_sequences_in_status_lines_are_shown_as_text)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    int bells = 0;
    for (const std::uint32_t kind : {103U, 108U, 64U, 90U})
        for (const char* sequence : sequences) {
            const std::string text = std::string{"<"} + sequence + ">";
            ASSERT_TRUE(connection->send(kind, text));
            ASSERT_TRUE(wait_for_last_status(client, convert_to_screen(text)));
            bells += kind == 108 ? 1 : 0;
        }
    EXPECT_EQ(client.terminal().bells(), bells) << "a server's own bells are silent";
    std::string raw = client.terminal().raw_output();
    std::erase(raw, '\a'); // the beeps of kind 108, counted above
    expect_harmless(raw);
    EXPECT_TRUE(client.terminal().screen().alternate_screen());
    EXPECT_TRUE(client.terminal().row(23).starts_with("^D Disconnect"));
}

TEST_F(hostile_server, escape_sequences_in_a_servers_identity_are_shown_as_text)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    for (const char* sequence : sequences) {
        ASSERT_TRUE(connection->send(
            capabilities_packet("<ServerUUID>" + std::string{sequence} + ".</ServerUUID>")));
        ASSERT_TRUE(wait_for_last_status(client, "ServerID: " + convert_to_screen(sequence) + "."));
    }
    expect_harmless(client.terminal().raw_output());
}

TEST_F(hostile_server, escape_sequences_in_transmissions_are_shown_as_text)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    for (const char* sequence : sequences) {
        const std::string text = std::string{"("} + sequence + ")";
        const acars_message message{.registration = text,
                                    .operator_name = text,
                                    .content = text,
                                    .contacts = text,
                                    .daily_flights = text};
        ASSERT_TRUE(connection->send(compressed_packet(document_of(message))));
        acars_message shown = message;
        shown.registration = shown.operator_name = shown.content = convert_to_screen(text);
        std::vector<std::string> lines = lines_of(shown);
        lines.push_back(convert_to_screen(text));
        ASSERT_TRUE(wait_for_message_rows(client, lines, 0));
        ASSERT_TRUE(client.terminal().wait_for_text("Unique Flights: " + convert_to_screen(text)));
    }
    EXPECT_EQ(client.terminal().bells(), 0);
    expect_harmless(client.terminal().raw_output());
}

TEST_F(hostile_server, every_byte_has_its_place_in_utf8)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    for (int first = 1; first < 256; first += 15) {
        std::string text;
        for (int byte = first; byte < first + 15; ++byte)
            text += byte == '\n' ? '.' : static_cast<char>(byte);
        text += '|';
        ASSERT_TRUE(connection->send(103, text));
        ASSERT_TRUE(wait_for_last_status(client, convert_to_screen(text)));
        ASSERT_TRUE(connection->send(plain_packet(document_of({.aircraft = "end"}))));
    }
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST_F(hostile_server, letters_go_out_as_single_bytes_to_an_8_bit_terminal)
{
    client_start how = wide_terminal;
    how.environment["LC_ALL"] = "C";
    how.utf8 = false;
    ASSERT_NO_FATAL_FAILURE(begin(how));
    std::string high;
    for (int byte = 0xA0; byte < 0x100; ++byte)
        high += static_cast<char>(byte);
    for (const std::string& text : {"{" + high.substr(0, 48) + "}", "{" + high.substr(48) + "}"}) {
        ASSERT_TRUE(connection->send(103, text));
        ASSERT_TRUE(client.terminal().wait_until(
            [&] { return client.terminal().raw_output().find(text) != std::string::npos; },
            "the bytes go out as they came"));
    }
    ASSERT_TRUE(connection->send(103, "C1: \x80\x9B\x9D\x9F"));
    ASSERT_TRUE(wait_for_last_status(client, "C1: ????"));
    const std::string& raw = client.terminal().raw_output();
    for (int byte = 0x80; byte < 0xA0; ++byte)
        EXPECT_EQ(raw.find(static_cast<char>(byte)), std::string::npos) << byte;
}

TEST_F(hostile_server, printf_directives_are_shown_and_never_obeyed)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    for (const char* text : {"%s%s%s%s", "%n%n%n", "%s%n%*d", "%]", "%*", "%1000000d", "100%", "%%",
                             "%", "%.*s", "%9$s"}) {
        for (const std::uint32_t kind : {103U, 108U, 64U, 90U}) {
            ASSERT_TRUE(connection->send(kind, std::string{text} + std::to_string(kind)));
            ASSERT_TRUE(wait_for_last_status(client, std::string{text} + std::to_string(kind)));
        }
        ASSERT_TRUE(connection->send(
            capabilities_packet("<ServerUUID>" + std::string{text} + "</ServerUUID>")));
        ASSERT_TRUE(wait_for_last_status(client, "ServerID: " + std::string{text}));
    }
    ASSERT_TRUE(connection->send(90, "%s%n\n%*d\n%]"));
    ASSERT_TRUE(wait_for_last_status(client, "%]"));
    EXPECT_EQ(client.status_lines()[1], "%s%n");
    EXPECT_EQ(client.status_lines()[2], "%*d");
}

TEST_F(hostile_server, printf_directives_beside_a_transmission_are_shown_too)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(connection->send(
        plain_packet(document_of({.contacts = "%s%n%*d %] %", .daily_flights = "%s%n%*d %]"}))));
    std::vector<std::string> lines = lines_of({});
    lines.emplace_back("%s%n%*d %] %");
    ASSERT_TRUE(wait_for_message_rows(client, lines, 0));
    ASSERT_TRUE(client.terminal().wait_for_text("Unique Flights: %s%n%*d %]"));
}

TEST_F(hostile_server, over_long_values_stay_in_the_message_pane)
{
    ASSERT_NO_FATAL_FAILURE(begin({}));
    const std::string longest(511, 'W');
    acars_message message{.mode = longest,
                          .registration = longest,
                          .operator_name = longest,
                          .content = longest,
                          .contacts = longest};
    ASSERT_TRUE(connection->send(compressed_packet(document_of(message))));
    ASSERT_TRUE(connection->send(
        compressed_packet(document_of({.content = std::string(3000, 'V'), .contacts = "cut"}))));
    ASSERT_TRUE(client.terminal().wait_for_text("VVVV"));
    ASSERT_TRUE(wait_for_notice(client, *connection, "shown"));
    EXPECT_TRUE(client.terminal().row(23).starts_with("^D Disconnect"));
    EXPECT_EQ(client.server_row(1).substr(0, 6), "*alpha");
    for (int row = 3; row <= 18; ++row)
        EXPECT_EQ(client.server_row(row), std::string(25, ' ')) << row;
    for (int row = 2; row <= 16; ++row)
        EXPECT_EQ(client.terminal().cell(row, 26).text, "│") << row;
    EXPECT_EQ(client.terminal().cell(17, 26).text, "├");
    EXPECT_EQ(client.terminal().cell(17, 79).text, "┤");
}

TEST_F(hostile_server, only_the_last_four_of_thousands_of_lines_remain)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    std::string text;
    for (int number = 1; number <= 2040; ++number)
        text += "\n\n"; // halved, and still more than a thousand
    text.resize(4080);
    ASSERT_TRUE(connection->send(64, text + "last"));
    ASSERT_TRUE(wait_for_last_status(client, "last"));
    ASSERT_TRUE(wait_for_notice(client, *connection, "and on"));
}

TEST_F(hostile_server, noise_is_survived)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    client.clock().set_alarm_pace(5);
    std::mt19937 random(20240517);
    std::string noise;
    while (noise.size() < 100'000)
        noise += static_cast<char>(random());
    ASSERT_TRUE(connection->send_bytes(noise));
    ASSERT_TRUE(client.wait_for_polls(100));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.terminal().wait_for_text("Connection to alpha:"));
    client.terminal().send_control('l');
    std::optional<server_connection> again = servers[0].accept();
    ASSERT_TRUE(again);
    ASSERT_TRUE(wait_for_notice(client, *again, "well after all"));
}

TEST_F(hostile_server, noise_of_every_kind_in_whole_packets_is_survived)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    client.clock().set_alarm_pace(5);
    std::mt19937 random(7);
    // Without the kinds that close the connection, ask for passwords or open dialogs.
    for (const std::uint32_t kind : {5U, 25U, 26U, 27U, 35U, 40U, 64U, 71U, 82U, 86U, 90U, 103U,
                                     108U, 149U, 153U, 204U, 199U, 250U})
        for (const std::size_t length : {1U, 2U, 100U, 4096U}) {
            server_packet packet{.kind = kind, .extra = static_cast<std::uint16_t>(random())};
            while (packet.payload.size() < length)
                packet.payload += static_cast<char>(random());
            ASSERT_TRUE(connection->send(packet));
        }
    ASSERT_TRUE(wait_for_notice(client, *connection, "well after all"));
    EXPECT_TRUE(client.terminal().row(23).starts_with("^D Disconnect"));
}

} // namespace
