// connect_input.hpp - a connection to a receiver that serves JSON lines by TCP.
//
// A connection that fails or ends is made again after a growing pause. The pauses begin anew when
// bytes have come.
#pragma once

#include "server/inputs/input_source.hpp"
#include "server/inputs/name_lookup.hpp"
#include "server/inputs/retry_pause.hpp"

#include <memory>

namespace tovrik
{

class connect_input : public input_source
{
public:
    connect_input(input_options chosen, input_host& home);

    std::string open(time_point now) override;
    void on_event(int fd, time_point now) override;
    void on_time(time_point now) override;
    time_point next_time() const override;

private:
    enum class stage { resting, looking_up, connecting, connected };

    void begin(time_point now);
    void begin_connecting(time_point now);
    void finish_connecting(time_point now);
    void receive(time_point now);
    void fail(const std::string& reason, time_point now);

    stage at = stage::resting;
    time_point act_at = never; ///< resting: try again; connecting: give up
    retry_pause pause;
    std::shared_ptr<const name_question> question;
    watched_fd waiting; ///< for the name's address, or the connection
    json_lines lines;
    bool was_connected = false;
    bool is_told = false; ///< that there is no connection
};

} // namespace tovrik
