// daemon_options.cpp - see daemon_options.hpp.
#include "server/tovrikd/daemon_options.hpp"

#include "server/base/limits.hpp"

namespace tovrik
{
namespace
{

constexpr int tick_interval_ms = 60000;
constexpr int late_after_ms = 60000;
constexpr int ms_per_second = 1000;

const char* capability_of(bool is_offered)
{
    return is_offered ? "1" : "0";
}

capability_texts make_capabilities(const services_configuration& services)
{
    // Clients offer mailings only where updates are offered, too.
    const char* const updates = capability_of(services.updates || services.mailing);
    return {.version = SERVER_VERSION,
            .mailing = capability_of(services.mailing),
            .db_modify = updates,
            .modify_flags = updates,
            .reports = capability_of(services.reports),
            .pager = capability_of(services.pagers)};
}

} // namespace

service_options make_service_options(const configuration& chosen,
                                     const std::vector<password>& passwords)
{
    service_options options{
        .max_clients = chosen.max_clients,
        .name = chosen.name,
        .capabilities = make_capabilities(chosen.services),
        .tries_per_minute = chosen.access.tries_per_minute,
        .access_within_ms = static_cast<int>(chosen.access.idle_seconds) * ms_per_second,
        .max_clients_of_address = chosen.access.clients_per_address,
        .ask_identification = chosen.access.identify,
        .send_uptime = true,
        .tell_left_out = true,
        .tick_every_ms = tick_interval_ms,
        .refuses_updates = !chosen.services.updates,
        .pager_hits_as_errors = chosen.pager_hits_as_errors,
    };
    // As many as a client can be sent before the first of them is late.
    options.queue_limit = static_cast<std::size_t>(late_after_ms / options.pace_ms);
    options.late_after_ms = late_after_ms;
    if (!chosen.access.passwords_file.empty())
        options.label_of_digest = [passwords](std::string_view digest) {
            return password_label_of(passwords, digest);
        };
    return options;
}

std::vector<std::string> fixed_key_changes(const configuration& before, const configuration& after)
{
    std::vector<std::string> changes;
    if (before.state_directory != after.state_directory)
        changes.emplace_back("state_directory only changes with a restart");
    if (before.bind != after.bind)
        changes.emplace_back("bind only changes with a restart");
    return changes;
}

} // namespace tovrik
