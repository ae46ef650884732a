// packet_fault_test.cpp - receiving and sending packets while system calls are interrupted, do less
// than they were asked, or fail.
#include "net/packet_input.hpp"
#include "net/packet_output.hpp"
#include "net/readiness.hpp"
#include "unit/own_faults.hpp"
#include "unit/socket_pair.hpp"

#include <atomic>
#include <cerrno>
#include <string>

namespace
{

class packet_faults : public testing::Test
{
protected:
    packet_faults() = default;
    ~packet_faults() override
    {
        packet_take(server);
    }
    packet_faults(const packet_faults&) = delete;
    packet_faults& operator=(const packet_faults&) = delete;

    /// Receives what the server has sent, in as many calls as that takes.
    std::string received(int max_calls)
    {
        int state = packet_pending;
        for (int calls = 0; state == packet_pending && calls < max_calls; ++calls)
            state = receive_packet(sockets.client(), server);
        if (state != packet_complete)
            return "no packet: " + std::to_string(state);
        return reinterpret_cast<const char*>(packet_take(server)->payload);
    }

    socket_pair sockets;
    server_entry server = {};
};

const std::string notice = wire_packet(103, 6, 0, "notice");

TEST_F(packet_faults, lose_nothing_of_a_packet_that_they_interrupt)
{
    for (const faulty_call call : {faulty_call::poll, faulty_call::read}) {
        for (int skipped = 0; skipped < 2; ++skipped) {
            ASSERT_TRUE(sockets.feed(notice));
            const own_fault interrupted({call, EINTR, "", skipped, 3});
            EXPECT_EQ(received(1), "notice") << static_cast<int>(call) << ' ' << skipped;
            EXPECT_EQ(own_fault::hits(), 3);
        }
    }
}

TEST_F(packet_faults, keep_a_header_together_that_they_interrupt)
{
    ASSERT_TRUE(sockets.feed(notice));
    // The second wait is the one for the rest of the header.
    fault_layout_in_use()->piece = 0;
    const own_fault pieces({faulty_call::read, short_count, "", 0, every_call});
    EXPECT_EQ(received(6), "notice");
    EXPECT_EQ(own_fault::hits(), 12 + 6);
}

TEST_F(packet_faults, drop_the_current_packet_on_errors)
{
    ASSERT_TRUE(sockets.feed(notice));
    const own_fault broken({faulty_call::read, ECONNRESET});
    EXPECT_EQ(received(1), "no packet: " + std::to_string(packet_failed));
    EXPECT_EQ(server.rx_packet, nullptr);
    EXPECT_EQ(received(1), "notice");
}

TEST_F(packet_faults, do_not_hold_a_packet_back_when_they_interrupt_sending)
{
    for (const faulty_call call : {faulty_call::poll, faulty_call::send}) {
        const own_fault interrupted({call, EINTR, "", 0, 3});
        EXPECT_EQ(send_packet(sockets.client(), 2, 0, 0, "Good Bye"), 20);
        EXPECT_EQ(own_fault::hits(), 3);
        EXPECT_EQ(sockets.sent_by_client(), wire_packet(2, 8, 0, "Good Bye"));
    }
}

TEST_F(packet_faults, drop_the_packet_to_be_sent_on_errors)
{
    for (const int error : {EPIPE, ECONNRESET, EIO, ENOBUFS}) {
        const own_fault broken({faulty_call::send, error});
        EXPECT_EQ(send_packet(sockets.client(), 2, 0, 0, "Good Bye"), -1);
        EXPECT_EQ(sockets.sent_by_client(), "");
    }
    const own_fault broken({faulty_call::poll, ENOMEM});
    EXPECT_EQ(send_packet(sockets.client(), 2, 0, 0, "Good Bye"), 0);
}

TEST_F(packet_faults, do_not_complete_a_packet_sent_in_part)
{
    const own_fault part({faulty_call::send, short_count});
    EXPECT_EQ(send_packet(sockets.client(), 2, 0, 0, "Good Bye"), 1);
    EXPECT_EQ(sockets.sent_by_client().size(), 1U);
}

class packet_waits : public packet_faults
{
};

TEST_F(packet_waits, last_200_microseconds_beside_the_seconds_asked_for)
{
    const std::atomic<std::int64_t>& limit_us = fault_layout_in_use()->limit_us;
    for (const int seconds : {30, 1, 0}) {
        EXPECT_EQ(wait_ready(sockets.client(), for_writing, seconds), 1);
        EXPECT_EQ(limit_us, seconds * 1'000'000 + 200);
    }
    const auto expect_short_wait = [&] {
        EXPECT_EQ(limit_us, 200);
        fault_layout_in_use()->limit_us = 0;
    };
    send_packet(sockets.client(), 2, 0, 0, "Good Bye");
    expect_short_wait();
    // Before a header, after it, and once the payload is there.
    for (const std::string& more : {std::string{}, notice.substr(0, 12), notice.substr(12)}) {
        ASSERT_TRUE(sockets.feed(more));
        receive_packet(sockets.client(), server);
        expect_short_wait();
    }
    EXPECT_NE(server.rx_packet, nullptr);
}

} // namespace
