// config_state.hpp - the program's own settings and servers as a model.
#pragma once

#include "app/app_state.hpp"
#include "models/config_model.hpp"

/// A text that may be missing.
inline std::optional<std::string> config_text_copy(const char* text)
{
    return text != nullptr ? std::optional<std::string>{text} : std::nullopt;
}

/// What the program knows now.
inline config_model config_state_copy()
{
    config_model copy{.flags = app_state.setting_flags,
                      .log_folder = config_text_copy(app_state.setting_texts[LogFilePath]),
                      .report_folder = config_text_copy(app_state.setting_texts[ReportPath])};
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        const server_entry& server = *server_at(app_state.servers, index);
        copy.servers.push_back({.name = server.ServerName,
                                .port = server.ServerPort,
                                .alias = config_text_copy(server.ServerAlias),
                                .location = config_text_copy(server.Location),
                                .info = config_text_copy(server.Info),
                                .password = config_text_copy(server.Password),
                                .subcode = config_text_copy(server.SubCode),
                                .email = config_text_copy(server.UseEMail)});
    }
    return copy;
}
