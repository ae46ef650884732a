// command_line.hpp - the options of tovrikd.
#pragma once

#include <optional>
#include <string>

namespace tovrik
{

struct tovrikd_options {
    std::string configuration_path = "/etc/tovrikd/tovrikd.toml";
};

/// Reads the options. Returns nothing when the server is to run with what is in `options`.
/// Otherwise what was asked for is done - help, version, --check, --add-password - or an error
/// has been printed, and the exit status is returned: 0, status_failed or status_bad_usage.
std::optional<int> read_tovrikd_options(int argc, const char* const* argv,
                                        tovrikd_options& options);

/// What --check does: prints everything that is wrong with the configuration, with its file of
/// passwords and its reference files, on standard error, or that it is good on standard output.
/// Returns 0 or status_bad_usage.
int check_configuration(const std::string& path);

} // namespace tovrik
