// inputs_publisher_test.cpp - messages of a ZeroMQ publisher, which comes and goes.
#include "inputs_fixture.hpp"

#include "server/inputs/hand_over.hpp"
#include "server/inputs/input_limits.hpp"

#include <optional>
#include <zmq.hpp>

namespace
{

using tovrik::input_options;
using tovrik::input_type;

/// A publisher on a port of this machine; 0 stands for a free one.
class own_zmq_publisher
{
public:
    explicit own_zmq_publisher(std::uint16_t port = 0)
    {
        socket.set(zmq::sockopt::linger, 0);
        socket.bind("tcp://127.0.0.1:" + (port == 0 ? "*" : std::to_string(port)));
        endpoint = socket.get(zmq::sockopt::last_endpoint);
    }

    void send(const std::string& bytes)
    {
        socket.send(zmq::buffer(bytes), zmq::send_flags::none);
    }
    void send(const std::string& topic, const std::string& bytes)
    {
        socket.send(zmq::buffer(topic), zmq::send_flags::sndmore);
        send(bytes);
    }

    std::uint16_t port() const
    {
        return static_cast<std::uint16_t>(std::stoi(endpoint.substr(endpoint.rfind(':') + 1)));
    }

    std::string endpoint;

private:
    zmq::context_t context{1};
    zmq::socket_t socket{context, zmq::socket_type::pub};
};

class inputs_zmq : public inputs_loop
{
protected:
    static input_options options_for(const own_zmq_publisher& publisher, const std::string& topic)
    {
        return {
            .type = input_type::zmq, .name = "pub", .topic = topic, .endpoint = publisher.endpoint};
    }

    /// Publishes until it is heard: a publisher learns of a subscription some time after the
    /// connection was made.
    bool publish_until_heard(own_zmq_publisher& publisher, const std::string& topic)
    {
        const std::size_t before = received.size();
        return turn_until([&] {
            publisher.send(topic + line_of("warm"));
            turn();
            return received.size() > before;
        });
    }

    bool turn_until_last(const std::string& text)
    {
        return turn_until(
            [this, &text] { return !received.empty() && received.back().content == text; });
    }
};

TEST_F(inputs_zmq, hears_all_that_is_published)
{
    own_zmq_publisher publisher;
    ASSERT_TRUE(open({options_for(publisher, "")}).empty());
    ASSERT_TRUE(publish_until_heard(publisher, ""));
    EXPECT_TRUE(counters().is_connected);
    publisher.send(line_of("a") + R"({"text":"b"})");
    publisher.send("topic", R"({"text":"c"})");
    publisher.send("broken");
    publisher.send("");
    publisher.send(R"({"text":"end"})");
    ASSERT_TRUE(turn_until_last("end"));
    EXPECT_TRUE(texts().ends_with("a b c end ")) << texts();
    EXPECT_EQ(counters().broken, 1U);
}

TEST_F(inputs_zmq, hears_only_its_topic)
{
    own_zmq_publisher publisher;
    ASSERT_TRUE(open({options_for(publisher, "acars")}).empty());
    ASSERT_TRUE(publish_until_heard(publisher, "acars "));
    publisher.send(line_of("no"));
    publisher.send("other", line_of("no"));
    publisher.send("acars/roof", line_of("a"));
    publisher.send("acars", line_of("end"));
    ASSERT_TRUE(turn_until_last("end"));
    EXPECT_TRUE(texts().ends_with("warm a end ")) << texts();
    EXPECT_EQ(counters().broken, 0U);
}

TEST_F(inputs_zmq, comes_back_with_the_publisher)
{
    std::optional<own_zmq_publisher> publisher{std::in_place};
    const std::uint16_t place = publisher->port();
    ASSERT_TRUE(open({options_for(*publisher, "")}).empty());
    for (std::uint64_t round = 0; round < 2; ++round) {
        ASSERT_TRUE(publish_until_heard(*publisher, ""));
        ASSERT_TRUE(turn_until([this] { return counters().is_connected; }));
        EXPECT_EQ(counters().reconnections, round);
        publisher.reset();
        ASSERT_TRUE(turn_until([this] { return !counters().is_connected; }));
        publisher.emplace(place);
    }
    EXPECT_EQ(lines.front(), "input 'pub': the connection was closed; trying again");
}

TEST_F(inputs_zmq, says_what_is_no_endpoint)
{
    for (const char* endpoint : {"", "tcp://", "nonsense", "smoke://hill"}) {
        const auto errors = open({{.type = input_type::zmq, .name = "pub", .endpoint = endpoint}});
        ASSERT_EQ(errors.size(), 1U) << endpoint;
        EXPECT_TRUE(errors[0].starts_with("input 'pub': " + std::string{endpoint} + ": "))
            << errors[0];
    }
}

class inputs_hand_over : public inputs_loop
{
};

TEST_F(inputs_hand_over, counts_what_finds_no_room)
{
    const auto shared = tovrik::hand_over_make();
    ASSERT_TRUE(shared);
    for (std::size_t i = 0; i < tovrik::max_waiting_blocks + 7; ++i)
        hand_over_block(*shared, "x");
    hand_over_block(*shared, std::string(tovrik::max_block_bytes + 1, 'y'));
    EXPECT_EQ(shared->lost, 8U);
    for (int i = 0; i < 100; ++i)
        hand_over_line(*shared, "line");
    tovrik::block_queue blocks;
    std::vector<std::string> told;
    hand_over_take(*shared, blocks, told);
    EXPECT_EQ(blocks.blocks.size(), tovrik::max_waiting_blocks);
    EXPECT_EQ(told.size(), tovrik::max_waiting_lines);
}

TEST_F(inputs_hand_over, tells_what_a_thread_throws_and_that_it_has_ended)
{
    const auto shared = tovrik::hand_over_make();
    ASSERT_TRUE(hand_over_start(shared, [] { throw std::runtime_error{"out of luck"}; }));
    hand_over_wait(*shared, tovrik::steady_clock::now() + default_patience);
    EXPECT_TRUE(shared->has_ended);
    EXPECT_EQ(shared->lines, std::vector<std::string>{"out of luck"});
}

TEST_F(inputs_hand_over, does_not_wait_for_a_thread_for_ever)
{
    const auto shared = tovrik::hand_over_make();
    const auto thread = shared;
    ASSERT_TRUE(
        hand_over_start(shared, [thread] { hand_over_rest(*thread, default_patience * 10); }));
    hand_over_wait(*shared, tovrik::steady_clock::now());
    EXPECT_FALSE(shared->has_ended);
    hand_over_stop(*shared);
    hand_over_wait(*shared, tovrik::steady_clock::now() + default_patience);
    EXPECT_TRUE(shared->has_ended) << "a rest ends with the stop";
}

} // namespace
