// listen_input.hpp - senders that connect to the server and send JSON lines.
#pragma once

#include "server/base/sockets.hpp"
#include "server/inputs/input_source.hpp"

#include <map>

namespace tovrik
{

class listen_input : public input_source
{
public:
    using input_source::input_source;
    ~listen_input() override;

    std::string open(time_point now) override;
    void on_event(int fd, time_point now) override;
    void on_time(time_point now) override;
    time_point next_time() const override;

private:
    struct sender {
        watched_fd socket;
        json_lines lines;
    };

    void accept_senders();
    void receive(int fd, time_point now);

    tcp_listener listener;
    std::map<int, sender> senders; ///< by their descriptors
};

} // namespace tovrik
