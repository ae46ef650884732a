// daemon_options.hpp - what a configuration means for the services.
#pragma once

#include "server/services/service_options.hpp"
#include "server/tovrikd/configuration.hpp"
#include "server/tovrikd/passwords.hpp"

#include <string>
#include <vector>

namespace tovrik
{

/// The options of the services. `passwords` are those that the configuration's file holds.
service_options make_service_options(const configuration& chosen,
                                     const std::vector<password>& passwords);

/// What cannot change while the server runs, and does between two configurations; one line each.
std::vector<std::string> fixed_key_changes(const configuration& before, const configuration& after);

} // namespace tovrik
