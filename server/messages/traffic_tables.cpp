// traffic_tables.cpp - see traffic_tables.hpp.
#include "server/messages/traffic_tables.hpp"

namespace tovrik
{
namespace
{

constexpr airline airline_table[] = {
    {"LH", "Lufthansa", "FRA", "D-AI??", false},
    {"LH", "Lufthansa", "FRA", "D-AB??", true},
    {"BA", "British Airways", "LHR", "G-EU??", false},
    {"BA", "British Airways", "LHR", "G-VII?", true},
    {"AF", "Air France", "CDG", "F-GK??", false},
    {"KL", "KLM Royal Dutch Airlines", "AMS", "PH-BX?", false},
    {"LX", "Swiss International Air Lines", "ZRH", "HB-IJ?", false},
    {"OS", "Austrian Airlines", "VIE", "OE-LB?", false},
    {"SK", "Scandinavian Airlines", "CPH", "LN-RR?", false},
    {"IB", "Iberia", "MAD", "EC-J??", false},
    {"AY", "Finnair", "HEL", "OH-LX?", false},
    {"EI", "Aer Lingus", "DUB", "EI-DE?", false},
    {"LO", "LOT Polish Airlines", "WAW", "SP-LW?", false},
    {"TK", "Turkish Airlines", "IST", "TC-J??", true},
    {"EK", "Emirates", "DXB", "A6-E??", true},
    {"SQ", "Singapore Airlines", "SIN", "9V-SK?", true},
    {"UA", "United Airlines", "EWR", "N###UA", true},
    {"DL", "Delta Air Lines", "ATL", "N###DN", true},
    {"AC", "Air Canada", "YYZ", "C-FI??", true},
    {"5X", "UPS Airlines", "SDF", "N###UP", true},
};

constexpr const char* european_airports[] = {"ARN", "ATH", "BCN", "BRU", "BUD", "CGN", "DUS",
                                             "EDI", "FCO", "GVA", "HAM", "LIS", "MAN", "MUC",
                                             "NCE", "OSL", "OTP", "PRG", "SOF", "TXL"};
constexpr const char* distant_airports[] = {"BKK", "BOS", "CPT", "DEL", "EZE", "GRU", "HKG", "HND",
                                            "ICN", "JFK", "JNB", "LAX", "MEX", "NBO", "ORD", "SFO"};

constexpr const char* single_aisles[] = {"Airbus A319-114", "Airbus A320-211",   "Airbus A320-214",
                                         "Airbus A321-131", "Boeing 737-500",    "Boeing 737-800",
                                         "Embraer ERJ-190", "Bombardier CRJ-900"};
constexpr const char* wide_bodies[] = {"Airbus A330-343",  "Airbus A340-642",  "Airbus A380-841",
                                       "Boeing 747-400",   "Boeing 767-300ER", "Boeing 777-200ER",
                                       "Boeing 777-300ER", "Boeing MD-11F"};

} // namespace

std::span<const airline> airlines()
{
    return airline_table;
}

std::span<const char* const> airports(bool long_haul)
{
    if (long_haul)
        return distant_airports;
    return european_airports;
}

std::span<const char* const> aircraft_types(bool long_haul)
{
    if (long_haul)
        return wide_bodies;
    return single_aisles;
}

} // namespace tovrik
