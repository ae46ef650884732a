// settings_table.hpp - the switches and folders that a user can set, as tables.
//
// The configuration file and the settings page both walk these rows, so that labels, configuration
// keys, bits and hot keys stand in one place. app_state knows where a row stands on the page.
#pragma once

#include <cstddef>
#include <cstdint>

/// The switches, as bits of setting_flags. Their values are fixed.
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

/// The bits of the row that ends checkbox_setting_table.
constexpr std::uint32_t checkbox_table_end = 0xFFFFFF01;

/// The key that ALT and a letter make: the letter with bit 7 set.
constexpr int alt(char letter)
{
    return letter | 0x80;
}

/// One line of the settings page's upper block.
struct checkbox_setting {
    const char* kind;  // "1": a switch with a box, "0": an explanatory line
    const char* label; // "~" stands before the hot key's letter and is not shown
    const char* key;   // configuration element; "*": never read or written
    std::uint32_t bit; // the setting_flag; 0 on explanatory lines
    int hot_key;       // 0: none
};

// Kept on purpose: the words of the labels, slips included, and bits that are not in the order of
// the rows. Test: checkbox_setting_table.holds_its_rows_in_the_order_of_page_and_file.
constexpr std::size_t checkbox_setting_count = 10;
constexpr checkbox_setting checkbox_setting_table[checkbox_setting_count + 1] = {
    {"1", "Save ~ACARS data to tovrik-style logfile", "ACARSLog", ACARSLog, alt('a')},
    {"0", "The Logfilename is created from the servername+.log", "*", 0, 0},
    {"1", "Show ~Informations about Contacts", "ContactInfo", ContactInfo, alt('i')},
    {"1", "Save ~Hostpasswords to configuration file", "SavePasswords", SavePasswords, alt('h')},
    {"1", "Show ~FlightStats on every server", "FlightStats", FlightStats, alt('f')},
    {"1", "Save all ~Transmissions to one logfile", "SaveToOne", SaveToOne, alt('t')},
    {"0", "Logfilename is ACARS.log and will be created within the current folder", "*", 0, 0},
    {"1", "~Dont show uplink messages", "NoUplinks", NoUplinks, alt('d')},
    {"1", "F~etch new Serverlist during Startup", "FetchOnStart", FetchOnStart, alt('e')},
    {"1", "~Save configuration on exit", "SaveOnExit", SaveOnExit, alt('s')},
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
    {"1", "Folder for ~Logfiles", "LogFilePath", LogFilePath, alt('l')},
    {"1", "Folder for ~Reports", "ReportPath", ReportPath, alt('r')},
    {nullptr, nullptr, nullptr, LogFilePath, 0},
};
