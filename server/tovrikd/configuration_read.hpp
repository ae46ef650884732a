// configuration_read.hpp - the configuration of tovrikd out of its file.
//
// The keys are those of tovrikd.toml(5), the defaults those of the record.
#pragma once

#include "server/tovrikd/configuration.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

/// A configuration, or everything that is wrong with it.
struct configuration_result {
    configuration made;
    std::vector<std::string> mistakes; ///< "FILE:LINE: what", in the order of the lines; none: good
};

/// Reads the configuration at `path`. It is a mistake if the file cannot be read, is no ordinary
/// file or has more than max_configuration_bytes. The files that it names are not opened; names
/// that are relative are made to count from the folder of `path`. Throws nothing.
configuration_result configuration_read(const std::string& path);

/// The same for a text that the file at `path` is said to hold.
configuration_result configuration_read_text(std::string_view text, const std::string& path);

} // namespace tovrik
