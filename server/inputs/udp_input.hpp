// udp_input.hpp - datagrams of JSON lines.
//
// A turn takes all datagrams that the system has, up to a bound, before any is read as JSON: so a
// burst finds room in the system's buffer.
#pragma once

#include "server/inputs/input_source.hpp"

#include <memory>

namespace tovrik
{

struct datagram_buffers;

class udp_input : public input_source
{
public:
    udp_input(input_options chosen, input_host& home);
    ~udp_input() override;

    std::string open(time_point now) override;
    void on_event(int fd, time_point now) override;
    void on_time(time_point now) override;
    time_point next_time() const override;

private:
    void drain();
    bool receive_some();

    watched_fd socket;
    std::unique_ptr<datagram_buffers> buffers;
    block_queue waiting;
    json_lines lines;
    std::uint32_t dropped_before = 0; ///< by the system, as it said last
};

} // namespace tovrik
