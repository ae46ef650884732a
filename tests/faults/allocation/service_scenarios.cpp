// service_scenarios.cpp - every command and service of the key loop, while allocations fail.
#include "faults/allocation/scenarios.hpp"

bool act_keys(client_rig&, const scenario& which)
{
    rig_type(which.keys);
    return true;
}

std::span<const scenario> service_scenarios()
{
    static const scenario table[] = {
        {.name = "update_airline",
         .act = act_keys,
         .keys = "\x01"
                 "1LH\nLufthansa\n"},
        {.name = "update_flight",
         .act = act_keys,
         .keys = "\x01"
                 "2LH0123\nFRA-LHR\nnone\nX----XX\n"},
        {.name = "update_aircraft",
         .act = act_keys,
         .keys = "\x01"
                 "3D-AIPA\nAirbus\nA320\nA320-211\n69\nLH\nDLH\nAIPA\nold\n"},
        {.name = "update_airport",
         .act = act_keys,
         .keys = "\x01"
                 "4FRA\nFrankfurt, Germany\n"},
        {.name = "update_mode",
         .act = act_keys,
         .keys = "\x01"
                 "5H1\nposition\n"},
        {.name = "mailing_subscribe", .act = act_keys, .keys = "\n1.net\n"},
        {.name = "mailing_activate", .act = act_keys, .keys = "\n2.net\n5\n"},
        {.name = "mailing_pause", .act = act_keys, .keys = "\n3.net\n5\n"},
        {.name = "mailing_unsubscribe", .act = act_keys, .keys = "\n4.net\n5\n"},
        {.name = "mailing_style", .act = act_keys, .keys = "\n5.net\n5\n2\n"},
        {.name = "pager_add",
         .act = act_keys,
         .keys = "\x10"
                 "1.net\n\nD-AIPA\nLH0123\nLHR\n"},
        {.name = "pager_remove",
         .act = act_keys,
         .keys = "\x10"
                 "2.net\n\nD-AIPA\nLH0123\nLHR\n"},
        {.name = "pager_request",
         .act = act_keys,
         .keys = "\x10"
                 "3.net\n\n"},
        {.name = "pager_nothing_given",
         .act = act_keys,
         .keys = "\x10"
                 "1.net\n\n\n\n\n"},
        {.name = "report_request",
         .act = act_keys,
         .keys = "\x0F"
                 "20/11/2026\n"},
        {.name = "report_request_misspelt",
         .act = act_keys,
         .keys = "\x0F"
                 "today\n"},
        {.name = "server_info", .act = act_keys, .keys = "\t\t"},
        {.name = "settings_page",
         .act = act_keys,
         .keys = "\x05\xE1\xE9\xE8\xE6\xF4\xE4\xE5\xF3\x05"},
        {.name = "settings_folders",
         .act = act_keys,
         .keys = "\x05\xEC"
                 "logs\n\xF2"
                 "logs/\n\x05"},
        {.name = "settings_missing_folder",
         .act = act_keys,
         .keys = "\xEC"
                 "nowhere\n"},
        {.name = "help", .act = act_keys, .keys = "\x08\x08", .allocates = false},
    };
    return table;
}
