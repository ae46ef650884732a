// sim_sample_message.hpp - a message with every text that the practice server can carry.
#pragma once

#include "server/messages/transmission.hpp"

#include <ctime>
#include <string>

/// 10 July 2025, 11:47 UTC.
constexpr std::time_t sample_time = 1752148020;

/// A message of that moment. Contacts and flights of the day are not known.
inline tovrik::transmission sample_message(const std::string& registration = "D-AIQA")
{
    return {.mode = "2",
            .registration = registration,
            .label = "H1",
            .block_id = "7",
            .message_number = "M07A",
            .flight_number = "LH0400",
            .content = "LINE ONE\nLINE TWO",
            .from = "FRA",
            .to = "JFK",
            .aircraft = "Airbus A320-211",
            .operator_name = "Lufthansa",
            .time = sample_time};
}
