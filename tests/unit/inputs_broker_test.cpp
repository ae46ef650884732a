// inputs_broker_test.cpp - messages by way of a real broker, which comes and goes.
#include "inputs_fixture.hpp"
#include "own_broker.hpp"

#include "server/inputs/input_limits.hpp"

#include <cstdlib>

namespace
{

using tovrik::input_options;
using tovrik::input_type;

class inputs_mqtt : public inputs_loop
{
protected:
    /// The options of an input that listens to a broker.
    static input_options options_for(std::uint16_t port)
    {
        return {.type = input_type::mqtt,
                .name = "sky",
                .host = "localhost",
                .port = port,
                .topic = "acars/#"};
    }

    bool turn_until_connected()
    {
        return turn_until([this] { return counters().is_connected; });
    }

    temp_home home;
};

TEST_F(inputs_mqtt, hears_what_is_published_below_its_topic)
{
    const own_broker broker{home, free_port(), own_broker::anyone};
    own_publisher publisher{broker};
    publisher.publish("acars/old", line_of("retained"), true);
    ASSERT_TRUE(open({options_for(broker.port)}).empty());
    ASSERT_TRUE(turn_until_connected());
    publisher.publish("elsewhere", line_of("no"));
    publisher.publish("acars/roof", R"({"text":"a"})");
    publisher.publish("acars/roof/deep", line_of("b") + "broken\n" + line_of("c"));
    publisher.publish("acars", "");
    publisher.publish("acars", line_of("d"), true);
    ASSERT_TRUE(turn_until([&] {
        publisher.pump();
        return received.size() >= 4;
    }));
    EXPECT_EQ(texts(), "a b c d ");
    EXPECT_EQ(counters().broken, 1U);
    EXPECT_EQ(counters().messages, 4U);
    EXPECT_EQ(counters().reconnections, 0U);
}

TEST_F(inputs_mqtt, comes_back_with_the_broker)
{
    const std::uint16_t port = free_port();
    ASSERT_TRUE(open({options_for(port)}).empty()) << "nobody is there yet";
    ASSERT_TRUE(turn_until([this] { return !lines.empty(); }));
    EXPECT_EQ(lines[0], "input 'sky': Connection refused; trying again");
    for (std::uint64_t round = 0; round < 3; ++round) {
        const std::size_t before = received.size();
        const own_broker broker{home, port, own_broker::anyone};
        own_publisher publisher{broker};
        ASSERT_TRUE(turn_until_connected());
        publisher.publish("acars/x", line_of("x"));
        ASSERT_TRUE(turn_until([&] {
            publisher.pump();
            return received.size() > before;
        }));
        EXPECT_EQ(counters().reconnections, round);
        EXPECT_EQ(lines.back(), "input 'sky': connected");
    }
    ASSERT_TRUE(turn_until([this] { return !counters().is_connected; }));
}

TEST_F(inputs_mqtt, names_itself_with_the_password_of_a_file)
{
    home.write_file("accounts", "me:secret\n");
    ASSERT_EQ(std::system(("mosquitto_passwd -U '" + home.path_of("accounts") + "'").c_str()), 0);
    ASSERT_EQ(std::system(("chmod 644 '" + home.path_of("accounts") + "'").c_str()), 0);
    const own_broker broker{home, free_port(),
                            "allow_anonymous false\nuser root\npassword_file " +
                                home.path_of("accounts") + "\n"};
    own_publisher publisher{broker, "me", "secret"};
    home.write_file("right", "secret\nand a remark\n");
    home.write_file("wrong", "guess\n");
    auto options = options_for(broker.port);
    options.user = "me";
    options.password_file = home.path_of("wrong");
    ASSERT_TRUE(open({options}).empty());
    ASSERT_TRUE(turn_until([this] { return !lines.empty(); }));
    EXPECT_EQ(lines[0].find("input 'sky': Connection Refused: not authori"), 0U) << lines[0];
    EXPECT_FALSE(counters().is_connected);
    options.password_file = home.path_of("right");
    ASSERT_TRUE(input_set_change(set, {options}, tovrik::steady_clock::now()).empty());
    ASSERT_TRUE(turn_until_connected());
    publisher.publish("acars", line_of("x"));
    ASSERT_TRUE(turn_until([&] {
        publisher.pump();
        return !received.empty();
    }));
    options.password_file = home.path_of("missing");
    const auto errors = input_set_change(set, {options}, tovrik::steady_clock::now());
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0], "input 'sky': " + home.path_of("missing") + ": No such file or directory");
}

TEST_F(inputs_mqtt, says_what_is_no_filter_of_topics)
{
    auto options = options_for(1);
    options.topic = "acars/#/roof";
    EXPECT_EQ(open({options}),
              std::vector<std::string>{"input 'sky': acars/#/roof: not a filter of topics"});
}

TEST_F(inputs_mqtt, keeps_the_loop_free_while_nobody_takes_messages)
{
    const own_broker broker{home, free_port(), own_broker::anyone};
    own_publisher publisher{broker};
    ASSERT_TRUE(open({options_for(broker.port)}).empty());
    ASSERT_TRUE(turn_until_connected());
    constexpr std::size_t count = 3000;
    for (std::size_t i = 0; i < count; ++i)
        publisher.publish("acars", line_of(std::to_string(i)));
    ASSERT_TRUE(turn_until([&] {
        publisher.pump();
        return received.size() + counters().lost >= count;
    }));
    EXPECT_EQ(received.size(), count);
    publisher.publish("acars", std::string(tovrik::max_block_bytes + 1, ' '));
    ASSERT_TRUE(turn_until([&] {
        publisher.pump();
        return counters().lost == 1;
    }));
}

} // namespace
