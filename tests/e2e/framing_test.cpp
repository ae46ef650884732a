// framing_test.cpp - packets in pieces, merged, cut off, or with false lengths.
//
// Some of the results are odd and stay so: servers rely on them.
#include "e2e/network_session.hpp"

#include <gtest/gtest.h>

namespace
{

/// A client connected to one server.
class framing : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(client.start(knowing(server)));
        connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
    }

    /// Sends bytes and waits until the client must have looked at them.
    testing::AssertionResult send_piece(std::string_view bytes)
    {
        if (!connection->send_bytes(bytes))
            return testing::AssertionFailure() << "the client takes no bytes";
        return client.wait_for_polls(3);
    }

    scripted_server server;
    client_session client;
    std::optional<server_connection> connection;
};

/// `length` bytes of numbered lines of ten characters; the last line may be cut.
std::string make_numbered_lines(std::size_t length)
{
    std::string text;
    for (int number = 1001; text.size() < length; ++number)
        text += "line " + std::to_string(number) + "\n";
    text.resize(length);
    return text;
}

TEST_F(framing, a_partial_header_counts_as_a_whole_one)
{
    const std::string header = header_bytes({.kind = 103}, 5);
    ASSERT_TRUE(send_piece(header.substr(0, 6)));
    ASSERT_TRUE(send_piece("hello")); // the other half of the header is not awaited
    ASSERT_TRUE(wait_for_last_status(client, "hello"));
    EXPECT_TRUE(wait_for_notice(client, *connection, "and on as usual"));
}

TEST_F(framing, a_partial_header_without_its_length_is_dropped)
{
    ASSERT_TRUE(send_piece(header_bytes({.kind = 103}, 5).substr(0, 4)));
    ASSERT_TRUE(wait_for_notice(client, *connection, "a whole packet"));
}

TEST_F(framing, a_payload_may_come_after_its_header)
{
    ASSERT_TRUE(send_piece(header_bytes({.kind = 103}, 5)));
    ASSERT_TRUE(send_piece("hello"));
    ASSERT_TRUE(wait_for_last_status(client, "hello"));
}

TEST_F(framing, a_payload_may_come_in_many_parts)
{
    ASSERT_TRUE(send_piece(header_bytes({.kind = 103}, 11)));
    for (const char* part : {"hel", "lo ", "w", "or"})
        ASSERT_TRUE(send_piece(part));
    EXPECT_FALSE(client.terminal().shows("hello"));
    ASSERT_TRUE(send_piece("ld"));
    ASSERT_TRUE(wait_for_last_status(client, "hello world"));
    EXPECT_TRUE(wait_for_notice(client, *connection, "next"));
}

TEST_F(framing, the_rest_of_a_payload_swallows_as_much_as_the_whole_is_long)
{
    ASSERT_TRUE(send_piece(header_bytes({.kind = 103}, 5) + "he"));
    // Five bytes are read although only three are missing: two of the next packet are lost.
    ASSERT_TRUE(connection->send_bytes("llo##" + packet_bytes({.kind = 103, .payload = "next"})));
    ASSERT_TRUE(wait_for_last_status(client, "next"));
    EXPECT_EQ(client.status_lines()[2], "hello");
}

TEST_F(framing, packets_without_payload_are_dropped_unread)
{
    for (const std::uint32_t kind : {3U, 5U, 36U, 85U, 102U, 149U})
        ASSERT_TRUE(connection->send({.kind = kind}));
    ASSERT_TRUE(wait_for_notice(client, *connection, "still here"));
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.marker(1).text, "*");
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST_F(framing, a_length_of_0_beside_a_size_hint_takes_nothing_from_the_next_packet)
{
    ASSERT_TRUE(connection->send({.kind = 204, .extra = 7}));
    ASSERT_TRUE(wait_for_notice(client, *connection, "next"));
    EXPECT_FALSE(client.terminal().shows("Unable"));
}

TEST_F(framing, the_longest_text_fits_and_one_more_byte_is_cut)
{
    ASSERT_TRUE(connection->send(64, make_numbered_lines(4095 - 4) + "TAIL"));
    ASSERT_TRUE(client.terminal().wait_for_text("TAIL"));
    ASSERT_TRUE(connection->send(64, make_numbered_lines(4096 - 4) + "\nEND"));
    ASSERT_TRUE(wait_for_last_status(client, "EN"));
}

TEST_F(framing, keeps_the_first_4096_bytes_of_a_longer_payload)
{
    for (const std::size_t length : {std::size_t{6000}, std::size_t{65535}}) {
        ASSERT_TRUE(connection->send(64, make_numbered_lines(length)));
        ASSERT_TRUE(wait_for_last_status(client, "line")); // and a blank: bytes 4091 to 4095
        EXPECT_EQ(client.status_lines()[2], make_numbered_lines(4089).substr(4080));
        ASSERT_TRUE(wait_for_notice(client, *connection, "the next packet is whole"));
    }
}

TEST_F(framing, broken_compressed_data_is_reported_and_dropped)
{
    const std::string data_error = "Unable to decompress binary paket. Err: -3";
    ASSERT_TRUE(connection->send({.kind = 204, .payload = "this is no zlib", .extra = 100}));
    ASSERT_TRUE(client.wait_for_status(data_error, pairs::error));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.terminal().bells() == 1; },
                                             "the beep after the line"));

    server_packet cut = compressed_packet(document_of({}));
    cut.payload.resize(cut.payload.size() / 2);
    ASSERT_TRUE(connection->send(cut));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.status_lines()[2] == data_error && client.terminal().bells() == 2; },
        "data that end too early"));

    server_packet changed = compressed_packet(document_of({}));
    changed.payload.back() = static_cast<char>(changed.payload.back() ^ 1); // of the checksum
    ASSERT_TRUE(connection->send(changed));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.status_lines()[1] == data_error && client.terminal().bells() == 3; },
        "a wrong checksum"));
    for (const std::string& line : client.message_lines())
        EXPECT_EQ(line, "");
    EXPECT_EQ(client.marker(1).text, "*");
}

TEST_F(framing, a_size_hint_that_is_too_small_or_0_is_reported_as_a_buffer_error)
{
    const std::string room_error = "Unable to decompress binary paket. Err: -5";
    const std::string document = document_of({});
    ASSERT_TRUE(
        connection->send(compressed_packet(document, static_cast<int>(document.size() / 4) - 1)));
    ASSERT_TRUE(client.wait_for_status(room_error, pairs::error));
    ASSERT_TRUE(connection->send(compressed_packet(document, 0)));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.status_lines()[2] == room_error && client.terminal().bells() == 2; },
        "no room at all"));
    ASSERT_TRUE(connection->send(compressed_packet(document)));
    ASSERT_TRUE(client.terminal().wait_for_text("ACARS mode: 2"));
}

TEST_F(framing, the_largest_size_hint_allocates_no_more_than_it_needs)
{
    ASSERT_TRUE(connection->send(compressed_packet(document_of({}), 65535)));
    ASSERT_TRUE(client.terminal().wait_for_text("ACARS mode: 2"));
    ASSERT_TRUE(connection->send({.kind = 204, .payload = "\x01", .extra = 65535}));
    ASSERT_TRUE(client.terminal().wait_for_text("Unable to decompress binary paket. Err: -"));
}

/// A way in which a server may vanish without a word, and what it sent last.
struct sudden_end {
    const char* name;
    std::string last_bytes;
    void (server_connection::*end)();
};

TEST(framing_at_the_end, a_server_that_vanishes_harms_neither_the_client_nor_the_others)
{
    const std::string header = header_bytes({.kind = 103}, 50);
    const sudden_end ends[] = {
        {"end of file between packets", "", &server_connection::close},
        {"end of file in a header", header.substr(0, 5), &server_connection::close},
        {"end of file after a header", header, &server_connection::close},
        {"end of file in a payload", header + "only this", &server_connection::close},
        {"end of file that is not a close", header + "only this", &server_connection::half_close},
        {"a reset between packets", "", &server_connection::reset},
        {"a reset in a payload", header + "only this", &server_connection::reset},
    };
    listed_servers servers(2);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings()));
    std::vector<server_connection> connections = connect_all(client, servers);
    ASSERT_EQ(connections.size(), 2U);
    ASSERT_TRUE(select_row(client, 1));
    for (const sudden_end& way : ends) {
        SCOPED_TRACE(way.name);
        ASSERT_TRUE(connections[0].send_bytes(way.last_bytes));
        ASSERT_TRUE(client.wait_for_polls());
        (connections[0].*way.end)();
        ASSERT_TRUE(client.wait_for_polls(4));
        ASSERT_TRUE(wait_for_notice(client, connections[1], way.name));
        EXPECT_EQ(client.marker(1).text, "*") << "nobody has told the user";
        client.terminal().send_control('d');
        ASSERT_TRUE(client.terminal().wait_for_text("Connection to alpha:"));
        client.terminal().send_control('l');
        std::optional<server_connection> again = servers[0].accept();
        ASSERT_TRUE(again);
        connections[0] = std::move(*again);
        ASSERT_TRUE(wait_for_notice(client, connections[0], "back again"));
        for (int line = 0; line < 4; ++line) // so that the next round sees lines of its own
            ASSERT_TRUE(wait_for_notice(client, connections[1], "filler " + std::to_string(line)));
    }
}

} // namespace
