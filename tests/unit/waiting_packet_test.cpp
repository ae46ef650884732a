// waiting_packet_test.cpp - packets that wait until an open box has been closed.
#include "unit/net_fixture.hpp"

#include "net/connection_end.hpp"
#include "net/packet_input.hpp"
#include "ui/modal_box.hpp"

#include <ctime>

namespace
{

/// Two servers whose packets come while a box of the user's is open.
class waiting_packet : public net_test
{
protected:
    /// Polls once while a box is open.
    static void poll_under_a_box()
    {
        const modal_wait box;
        poll_all();
    }

    /// What kind of packet waits; -1 for none.
    static int kind_that_waits(const server_entry& server)
    {
        return server.rx_waits == 1
                   ? static_cast<int>(packet_header_read(server.rx_packet->header).kind)
                   : -1;
    }

    server_entry& entry = add_server("one.example", "one");
    server_entry& other_entry = add_server("another.example");
    const server_end server = connect(entry);
    const server_end other = connect(other_entry);
};

std::string make_capabilities(const char* elements)
{
    return std::string{"<?xml version=\"1.0\"?><tovrik>"} + elements + "</tovrik>";
}

TEST_F(waiting_packet, is_the_servers_next_one_and_delays_nobody_else)
{
    server.send({89, "A\tB\tC"});
    server.send({103, "behind it"});
    other.send({103, "first"});
    other.send({103, "second"});
    poll_under_a_box();
    EXPECT_EQ(kind_that_waits(entry), 89);
    poll_under_a_box();
    EXPECT_EQ(kind_that_waits(entry), 89);
    EXPECT_EQ(said(), (status_lines{{"first", 2}, {"second", 2}}));
    type_ahead("\033");
    poll_all();
    EXPECT_EQ(kind_that_waits(entry), -1);
    EXPECT_EQ(entry.rx_packet, nullptr);
    EXPECT_EQ(wgetch(app_state.server_pane), ERR) << "a list was open and took the key";
    poll_all();
    EXPECT_EQ(said().back(), (status_line{"behind it", 2}));
}

TEST_F(waiting_packet, is_a_demand_for_a_password_that_has_to_be_typed)
{
    server.send({41, make_capabilities("<NeedAuth>0</NeedAuth>")});
    poll_under_a_box();
    EXPECT_EQ(kind_that_waits(entry), -1);
    app_state.setting_flags = SavePasswords;
    entry.Password = owned_text("saved");
    server.send({41, make_capabilities("<NeedAuth>1</NeedAuth>")});
    poll_under_a_box();
    EXPECT_EQ(kind_that_waits(entry), -1);
    EXPECT_EQ(server.take_packets(), (wire_packets{{81, "saved"}}));
    app_state.setting_flags = 0;
    server.send({41, make_capabilities("<NeedAuth>1</NeedAuth><Pager>1</Pager>")});
    poll_under_a_box();
    EXPECT_EQ(kind_that_waits(entry), 41);
    EXPECT_EQ(entry.can_page, 0);
    type_ahead("abc\n");
    poll_all();
    EXPECT_EQ(entry.can_page, 1);
    EXPECT_EQ(server.take_packets(), (wire_packets{{81, "900150983cd24fb0d6963f7d28e17f72"}}));
}

TEST_F(waiting_packet, is_the_last_piece_of_a_report)
{
    server.send({74, "6\t100"});
    server.send({205, "123"});
    server.send({205, "456"});
    poll_under_a_box();
    poll_under_a_box();
    EXPECT_EQ(kind_that_waits(entry), -1);
    EXPECT_EQ(entry.report_received, 3U);
    poll_under_a_box();
    EXPECT_EQ(kind_that_waits(entry), 205);
    EXPECT_EQ(entry.report_received, 3U);
    poll_all(); // these bytes are no report
    EXPECT_EQ(entry.report_buffer, nullptr);
}

TEST_F(waiting_packet, counts_as_data_for_the_idle_rule)
{
    server.send({89, "A\tB\tC"});
    poll_under_a_box();
    entry.last_data_time = 0;
    poll_under_a_box();
    EXPECT_GE(entry.last_data_time, std::time(nullptr) - 5);
    EXPECT_EQ(server.take_bytes(), "") << "no heartbeat";
}

TEST_F(waiting_packet, goes_with_its_connection)
{
    server.send({89, "A\tB\tC"});
    poll_under_a_box();
    EXPECT_EQ(kind_that_waits(entry), 89);
    close_by_server(entry);
    EXPECT_EQ(entry.rx_waits, 0);
    const server_end again = connect(entry);
    poll_all();
    again.send({103, "a new connection"});
    poll_all();
    EXPECT_EQ(said().back(), (status_line{"a new connection", 2}));
}

} // namespace
