// config_text.hpp - configuration files for the program under test, written from records.
#pragma once

#include <string>
#include <vector>

/// One server block; empty texts become empty elements.
struct server_settings {
    std::string name = "127.0.0.1";
    std::string port = "2202"; // a text, so that tests can write what is no number
    std::string alias{};
    std::string location{};
    std::string info{};
    std::string password{};
    std::string subcode{};
    std::string email{};
};

/// A whole configuration file.
struct client_settings {
    bool acars_log = false;
    bool contact_info = false;
    bool save_passwords = false;
    bool flight_stats = false;
    bool save_to_one = false;
    bool no_uplinks = false;
    bool fetch_on_start = false;
    bool save_on_exit = false;
    std::string log_folder = "./";
    std::string report_folder = "./";
    std::vector<server_settings> servers{};
};

/// The file's text, byte for byte as the program writes it.
std::string config_text(const client_settings& settings);
