// settings_table.hpp - the switches and folders that a user can set, as tables.
//
// The configuration file and the settings page both walk these rows, so that labels, configuration
// keys, bits and hot keys stay in one place. Where a row stands on the page is kept in app_state.
#pragma once

#include <cstddef>
#include <cstdint>

/// The switches, as bits of setting_flags. Their values are fixed; other code tests them by value.
enum setting_flag : std::uint32_t {
    ACARSLog = 0x01,
    ContactInfo = 0x02,
    SaveOnExit = 0x04,
    SavePasswords = 0x08,
    FlightStats = 0x10,
    SaveToOne = 0x20,
    NoUplinks = 0x40,
    FetchOnStart = 0x80,
};

/// The folders, as indexes of setting_texts.
enum setting_text : std::uint8_t {
    LogFilePath = 0,
    ReportPath = 1,
};
constexpr std::size_t setting_text_count = 2;

/// What an unset folder stands for.
constexpr const char* unset_folder = "./";

/// Bit word of the row that ends checkbox_setting_table.
constexpr std::uint32_t checkbox_table_end = 0xFFFFFF01;

/// One line of the settings page's upper block.
struct checkbox_setting {
    const char* kind;  // "1": a switch with a box, "0": an explanatory line
    const char* label; // "~" stands before the letter of the hot key and is not shown
    const char* key;   // configuration element; "*": never read or written
    std::uint32_t bit; // the setting_flag; 0 on explanatory lines
    int hot_key;       // the letter's code with bit 7 set; 0: none
};

constexpr std::size_t checkbox_setting_count = 10;
constexpr checkbox_setting checkbox_setting_table[checkbox_setting_count + 1] = {
    {"1", "Save ~ACARS data to tovrik-style logfile", "ACARSLog", ACARSLog, 0xE1},
    {"0", "The Logfilename is created from the servername+.log", "*", 0, 0},
    {"1", "Show ~Informations about Contacts", "ContactInfo", ContactInfo, 0xE9},
    {"1", "Save ~Hostpasswords to configuration file", "SavePasswords", SavePasswords, 0xE8},
    {"1", "Show ~FlightStats on every server", "FlightStats", FlightStats, 0xE6},
    {"1", "Save all ~Transmissions to one logfile", "SaveToOne", SaveToOne, 0xF4},
    {"0", "Logfilename is ACARS.log and will be created within the current folder", "*", 0, 0},
    {"1", "~Dont show uplink messages", "NoUplinks", NoUplinks, 0xE4},
    {"1", "F~etch new Serverlist during Startup", "FetchOnStart", FetchOnStart, 0xE5},
    {"1", "~Save configuration on exit", "SaveOnExit", SaveOnExit, 0xF3},
    {nullptr, nullptr, nullptr, checkbox_table_end, 0},
};

/// One folder line of the settings page.
struct text_setting {
    const char* kind;  // "1": a folder; null ends the table
    const char* label; // as in checkbox_setting
    const char* key;   // configuration element
    setting_text index;
    int hot_key;
};

constexpr text_setting text_setting_table[setting_text_count + 1] = {
    {"1", "Folder for ~Logfiles", "LogFilePath", LogFilePath, 0xEC},
    {"1", "Folder for ~Reports", "ReportPath", ReportPath, 0xF2},
    {nullptr, nullptr, nullptr, LogFilePath, 0},
};
