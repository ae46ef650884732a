// config_model.hpp - what the configuration file holds: a model written from the rules for reading
// and writing it.
#pragma once

#include "support/config_text.hpp"

#include <optional>
#include <string>
#include <vector>

/// A server as it is known; a text that is not there is not the same as an empty one.
struct server_model {
    std::string name{};
    long port = 0;
    std::optional<std::string> alias{};
    std::optional<std::string> location{};
    std::optional<std::string> info{};
    std::optional<std::string> password{};
    std::optional<std::string> subcode{};
    std::optional<std::string> email{};

    bool operator==(const server_model&) const = default;
};

struct config_model {
    unsigned flags = 0;
    std::optional<std::string> log_folder{};
    std::optional<std::string> report_folder{};
    std::vector<server_model> servers{}; // in the order of the list

    bool operator==(const config_model&) const = default;
};

/// Adds a server at its place in the list, unless one with its name and port is there.
void config_model_add(config_model& config, const server_model& server);

/// Adds what a file says to what is known.
void config_model_load(config_model& config, const std::string& file);

/// What is written, for config_text().
client_settings config_model_saved(const config_model& config);

/// What is known after saving, forgetting and loading, however it lies in the file meanwhile: every
/// text is still its own, with blanks for "<" and ">", and cut where the reader cuts.
config_model config_model_reloaded(const config_model& config);
