// web_service.hpp - tells askers over HTTP about the server: status page, directory, figures,
// health.
//
// Has a thread of its own, in which every signal is blocked, so that neither the server's loop nor
// an asker ever waits for another. That thread waits for all sockets together: an asker that is
// silent or slow costs a place among max_web_connections and nothing else. When all places are
// taken, the oldest connection makes room; so whoever asks at once is answered at once. A
// connection is for one request.
#pragma once

#include "server/web/server_report.hpp"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace tovrik
{

struct web_options {
    std::string bind = "127.0.0.1"; ///< an IPv4 address
    std::uint16_t port = 0;         ///< 0: any free one
    std::string public_name = {};   ///< in the directory; empty: the address that the asker came to
    std::chrono::milliseconds max_report_age = {}; ///< 0: max_report_age_ms
};

/// All functions are for the thread that made the service.
class web_service
{
public:
    web_service();
    ~web_service(); ///< Stops it.
    web_service(const web_service&) = delete;
    web_service& operator=(const web_service&) = delete;

    /// Starts answering; a service that runs is stopped first. Returns an error text, empty on
    /// success.
    std::string start(const web_options& options);

    /// The port that was taken; 0 when the service does not run.
    std::uint16_t port() const;

    /// Makes `report` what askers are told from now on. Never waits for them.
    void publish(std::shared_ptr<const server_report> report);

    /// Ends the service within a moment, whatever its askers do: their connections are cut.
    void stop();

private:
    struct running_service;
    std::unique_ptr<running_service> running;
};

} // namespace tovrik
