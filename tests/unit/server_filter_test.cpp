// server_filter_test.cpp - which messages a channel passes on.
#include "server/messages/message_filter.hpp"

#include <gtest/gtest.h>

namespace
{

using tovrik::message_filter;
using tovrik::message_link;

tovrik::transmission sample_heard()
{
    return {.registration = "D-AIQA",
            .label = "H1",
            .flight_number = "LH0400",
            .content = "text",
            .heard = {.link = message_link::vdl2, .station = "roof"}};
}

TEST(server_filter, passes_on_what_it_asks_for)
{
    const struct {
        const char* what;
        message_filter filter;
        bool passes;
    } rows[] = {
        {"nothing", {}, true},
        {"its link", {.links = {message_link::vhf, message_link::vdl2}}, true},
        {"another link", {.links = {message_link::hfdl}}, false},
        {"its station, whatever the case", {.stations = {"ROOF"}}, true},
        {"another station", {.stations = {"cellar"}}, false},
        {"its label", {.labels = {"H?"}}, true},
        {"another label", {.labels = {"Q0", "SA"}}, false},
        {"its airline", {.airlines = {"lh"}}, true},
        {"the beginning of an airline", {.airlines = {"L"}}, false},
        {"another airline", {.airlines = {"BA"}}, false},
        {"its registration", {.registrations = {"D-A*"}}, true},
        {"another registration", {.registrations = {"G-*"}}, false},
        {"texts", {.no_empty = true}, true},
        {"its label of another airline", {.labels = {"H1"}, .airlines = {"BA"}}, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(filter_matches(row.filter, sample_heard()), row.passes) << row.what;
}

TEST(server_filter, leaves_out_messages_without_a_text_on_request)
{
    auto message = sample_heard();
    message.content.clear();
    EXPECT_TRUE(filter_matches({}, message));
    EXPECT_FALSE(filter_matches({.no_empty = true}, message));
}

} // namespace
